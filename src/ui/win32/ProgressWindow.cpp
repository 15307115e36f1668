#include "ui/ProgressWindow.h"

// clang-format off
#include "oko/WindowHandle.h"
#include "ui/win32/DialogWindow.h"
#include <commctrl.h>
// clang-format on

#include "base/Numbers.h"
#include "base/Text.h"
#include "platform/Window.h"
#include "ui/resources/ResourceIds.h"

namespace {

/// A host need not have loaded the class of the progress bar.
void LoadProgressBarClass() noexcept {
    const INITCOMMONCONTROLSEX classes{sizeof classes, ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&classes);
}

/// The thread that shows the window may take no messages for a long time: what it shows has to be drawn at once.
void DrawNow(HWND window) noexcept { RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN); }

/// "40 %"
void ShowPercent(HWND dialog, int percent) noexcept {
    BoundedText<wchar_t, 24> text;
    text.AppendBytes(FormatInteger(percent).view()).Append(L" %");
    SetDlgItemTextW(dialog, IDC_PROGRESS_TEXT, text.c_str());
    SendDlgItemMessageW(dialog, IDC_PROGRESS_BAR, PBM_SETPOS, static_cast<WPARAM>(percent), 0);
    DrawNow(dialog);
}

INT_PTR CALLBACK ProgressDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) noexcept {
    switch (message) {
        case WM_INITDIALOG:
            SendDlgItemMessageW(dialog, IDC_PROGRESS_BAR, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
            SendDlgItemMessageW(dialog, IDC_PROGRESS_BAR, PBM_SETPOS, 0, 0);
            SetDlgItemTextW(dialog, IDC_PROGRESS_TEXT, L"");  // nobody should read the template's placeholder
            return TRUE;
        case kProgressMessage:
            ShowPercent(dialog, static_cast<int>(wParam));
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace

oko::WindowHandle OpenProgressWindow(CDevApiInterface_Impl& device, oko::WindowHandle parent,
                                     const wchar_t* caption) noexcept {
    LoadProgressBarClass();
    const HWND window = CreateDialogParamW(DialogInstance(), L"IDD_PROGRESS", static_cast<HWND>(parent),
                                           ProgressDlgProc, reinterpret_cast<LPARAM>(&device));
    if (caption != nullptr) {
        SetWindowTextW(window, caption);
    }
    ShowWindow(window, SW_SHOW);
    DrawNow(window);
    return window;
}
