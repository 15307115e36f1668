#pragma once

#include "oko/WindowHandle.h"

/// Posts the change notice of oko/ChangeNotice.h to `window`. With a null window it goes to the calling thread's
/// message queue. Does not wait; the result is ignored.
void PostValuesChanged(oko::WindowHandle window) noexcept;

/// The progress window's own message, WM_USER + 32: its first parameter is the percentage.
inline constexpr unsigned kProgressMessage = 0x400 + 32;

/// Sends the progress message and waits until the window has taken it.
void SendProgress(oko::WindowHandle window, int percent) noexcept;

/// Destroys a window of the calling thread. A dead handle is ignored.
void DestroyWindowHandle(oko::WindowHandle window) noexcept;

/// Shows a message box with the error icon and without an owner, and waits until the user has closed it.
void ShowErrorBox(const wchar_t* text, const wchar_t* caption) noexcept;
