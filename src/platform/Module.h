#pragma once

/// The library's own instance handle (HINSTANCE), from which the dialogs' resources come. Set on the loader's thread
/// when a process loads the library; only read afterwards.
inline void* g_hInstance = nullptr;
