#pragma once

#include "core/CDevApiInterface_Impl.h"
#include "platform/Module.h"
#include "platform/win32/Windows.h"
#include "ui/DialogEnd.h"

/// The instance whose resources hold the dialogs; the language is the system's choice.
inline HINSTANCE DialogInstance() noexcept { return static_cast<HINSTANCE>(g_hInstance); }

/// The device that a dialog was opened for, kept in its user data.
inline CDevApiInterface_Impl* DeviceOf(HWND dialog) noexcept {
    return reinterpret_cast<CDevApiInterface_Impl*>(GetWindowLongPtrW(dialog, GWLP_USERDATA));
}

/// Keeps the creation parameter. False, and the dialog is ended as cancelled, when there is none.
inline bool KeepDevice(HWND dialog, LPARAM device) noexcept {
    SetWindowLongPtrW(dialog, GWLP_USERDATA, device);
    if (device == 0) {
        EndDialog(dialog, static_cast<INT_PTR>(DialogEnd::Cancelled));
    }
    return device != 0;
}

/// Runs a modal dialog with the device as its creation parameter.
inline DialogEnd RunDialog(const wchar_t* name, oko::WindowHandle parent, DLGPROC procedure,
                           CDevApiInterface_Impl& device) noexcept {
    const INT_PTR result = DialogBoxParamW(DialogInstance(), name, static_cast<HWND>(parent), procedure,
                                           reinterpret_cast<LPARAM>(&device));
    return static_cast<DialogEnd>(result);
}
