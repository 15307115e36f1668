#pragma once

/// Window handle (HWND).
using WindowHandle = void*;

/// Posts the change notice to `window`: WM_COMMAND with command 1003 (IDC_VALUES_CHANGED) and notification code 1. With
/// a null window it goes to the calling thread's message queue. Does not wait; the result is ignored.
void PostValuesChanged(WindowHandle window) noexcept;

/// The progress window's own message, WM_USER + 32: its first parameter is the percentage.
inline constexpr unsigned kProgressMessage = 0x400 + 32;

/// Sends the progress message and waits until the window has taken it.
void SendProgress(WindowHandle window, int percent) noexcept;

/// Destroys a window of the calling thread. A dead handle is ignored.
void DestroyWindowHandle(WindowHandle window) noexcept;

/// Shows a message box with the error icon and without an owner, and waits until the user has closed it.
void ShowErrorBox(const wchar_t* text, const wchar_t* caption) noexcept;
