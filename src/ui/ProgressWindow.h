#pragma once

#include "oko/WindowHandle.h"

class CDevApiInterface_Impl;

/// Opens and shows the modeless window "IDD_PROGRESS" over `parent`, with its template's caption when `caption` is
/// null. It takes the progress message until it is destroyed. Null when it cannot be opened. On the user-interface
/// thread.
oko::WindowHandle OpenProgressWindow(CDevApiInterface_Impl& device, oko::WindowHandle parent,
                                     const wchar_t* caption) noexcept;

/// Destroys the device's progress window, if it is still up. Its handle stays in m_hProgressWnd. On the thread that
/// opened it.
void CloseProgressWindow(CDevApiInterface_Impl& device) noexcept;
