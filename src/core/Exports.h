#pragma once

/// What the library's entry point does when the library comes to a process and goes from it. Both on the loader's
/// thread.

/// Keeps the instance handle (HINSTANCE) in g_hInstance and clears the table of devices.
void AttachModule(void* instance) noexcept;

/// Destroys the device objects, index 0 first.
void DetachModule() noexcept;
