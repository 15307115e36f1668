// The dialog's window. What it shows and takes is in ConfigurationFields and StatusReport.

#include "ui/ConfigurationDialog.h"

#include <cstddef>
#include <string>

#include "oko/WindowHandle.h"
#include "ui/ConfigurationFields.h"
#include "ui/DialogEnd.h"
#include "ui/StatusReportView.h"
#include "ui/resources/ResourceIds.h"
#include "ui/win32/DialogWindow.h"

namespace {

std::wstring FieldText(HWND dialog, int id) {
    const int length = GetWindowTextLengthW(GetDlgItem(dialog, id));
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    text.resize(GetDlgItemTextW(dialog, id, text.data(), length + 1));
    return text;
}

void Enable(HWND dialog, int id, bool enabled) noexcept {
    EnableWindow(GetDlgItem(dialog, id), enabled ? TRUE : FALSE);
}

void FillConfigurationDialog(CDevApiInterface_Impl& device, HWND dialog) {
    const ConfigurationView view = DescribeConfiguration(device);
    for (const int id : {IDC_REPORT_FIRST, IDC_REPORT_SECOND, IDC_REPORT_THIRD}) {
        ShowWindow(GetDlgItem(dialog, id), SW_HIDE);
    }
    for (const FieldView& field : view.fields) {
        Enable(dialog, field.id, field.enabled);
        if (!field.text.empty()) {
            SetDlgItemTextW(dialog, field.id, field.text.c_str());
        }
    }
    Enable(dialog, IDC_AIR_MODE, view.airModeEnabled);
    if (view.airModeChecked) {
        CheckDlgButton(dialog, IDC_AIR_MODE, BST_CHECKED);
    }
    ShowWindow(GetDlgItem(dialog, IDC_STATUS_GROUP), SW_HIDE);
    if (!view.showStatusEnabled) {
        Enable(dialog, IDC_SHOW_STATUS, false);
    }
}

bool ReadConfigurationDialog(CDevApiInterface_Impl& device, HWND dialog) {
    const auto fieldText = [dialog](int id) { return FieldText(dialog, id); };
    return TakeConfiguration(device, fieldText, IsDlgButtonChecked(dialog, IDC_AIR_MODE) == BST_CHECKED);
}

/// A command of a button. True when it was one of ours.
bool OnButton(HWND dialog, int id) {
    CDevApiInterface_Impl* const device = DeviceOf(dialog);
    if (device == nullptr) {
        return false;
    }
    switch (id) {
        case IDOK:
            if (ReadConfigurationDialog(*device, dialog)) {
                EndDialog(dialog, static_cast<INT_PTR>(DialogEnd::Ok));
            }
            return true;
        case IDCANCEL:
            EndDialog(dialog, static_cast<INT_PTR>(DialogEnd::Cancelled));
            return true;
        case IDC_SHOW_STATUS:
            ShowStatusReport(*device, dialog);
            return true;
        default:
            return false;
    }
}

INT_PTR CALLBACK ConfigurationDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept try {
    if (message == WM_INITDIALOG) {
        if (KeepDevice(dialog, lParam)) {
            FillConfigurationDialog(*DeviceOf(dialog), dialog);
        }
        return FALSE;
    }
    if (message == WM_COMMAND && HIWORD(wParam) == 0) {
        return OnButton(dialog, LOWORD(wParam)) ? TRUE : FALSE;
    }
    return FALSE;
} catch (...) {
    return FALSE;  // out of memory: the dialog stays as it is
}

}  // namespace

DialogEnd RunConfigurationDialog(CDevApiInterface_Impl& device, oko::WindowHandle parent) noexcept {
    return RunDialog(L"INCUBATOR_CONFIGURATION", parent, ConfigurationDlgProc, device);
}
