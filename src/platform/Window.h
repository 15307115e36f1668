#pragma once

#include "oko/WindowHandle.h"

/// Posts the change notice of oko/ChangeNotice.h to `window`. With a null window it goes to the calling thread's
/// message queue. Does not wait; the result is ignored.
void PostValuesChanged(oko::WindowHandle window) noexcept;

/// The progress window's own message, WM_USER + 32: its first parameter is the percentage.
inline constexpr unsigned kProgressMessage = 0x400 + 32;

/// Sends the progress message and waits until the window has taken it.
void SendProgress(oko::WindowHandle window, int percent) noexcept;

/// Looks at the calling thread's messages without taking one: Windows replaces the windows of a thread that does not
/// for five seconds with ghosts that say "not responding". None is removed or dispatched, so that no click or key
/// reaches the host in the middle of a call; only what other threads send, and wait for, gets through.
void KeepWindowsResponding() noexcept;

/// Destroys a window of the calling thread. A dead handle is ignored.
void DestroyWindowHandle(oko::WindowHandle window) noexcept;

/// Shows a message box with the error icon and without an owner, and waits until the user has closed it.
void ShowErrorBox(const wchar_t* text, const wchar_t* caption) noexcept;
