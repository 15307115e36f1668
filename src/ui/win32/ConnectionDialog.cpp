// The dialog's window. Its list of ports is in PortList.

#include "ui/ConnectionDialog.h"

#include <cstddef>
#include <cstdint>
#include <span>

#include "oko/WindowHandle.h"
#include "ui/DialogEnd.h"
#include "ui/PortList.h"
#include "ui/resources/ResourceIds.h"
#include "ui/win32/DialogWindow.h"

namespace {

std::span<const std::int32_t> PortsOf(const CDevApiInterface_Impl& device) noexcept {
    return {device.m_aiComPorts.data(), static_cast<std::size_t>(device.m_nComPorts)};
}

void FillComPortList(CDevApiInterface_Impl& device, HWND dialog) {
    device.m_nComPorts = 0;
    const HWND list = GetDlgItem(dialog, IDC_PORT_LIST);
    for (const PortEntry& entry : ListPorts()) {
        // At the end. kept: docs/oddities.md#sorted-list-in-order-of-ports
        SendMessageW(list, CB_INSERTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(entry.label.c_str()));
        device.m_aiComPorts[static_cast<std::size_t>(device.m_nComPorts)] = entry.number;
        ++device.m_nComPorts;
    }
    SendMessageW(list, CB_SETCURSEL, SelectedPort(PortsOf(device), device.m_iComPort), 0);
}

void End(HWND dialog, DialogEnd end) noexcept { EndDialog(dialog, static_cast<INT_PTR>(end)); }

// kept: docs/oddities.md#escape-does-nothing
bool OnCommand(HWND dialog, int id) noexcept {
    CDevApiInterface_Impl* const device = DeviceOf(dialog);
    if (device == nullptr) {
        return false;
    }
    switch (static_cast<DialogEnd>(id)) {
        case DialogEnd::Ok: {
            const LRESULT selection = SendDlgItemMessageW(dialog, IDC_PORT_LIST, CB_GETCURSEL, 0, 0);
            device->m_iComPort = ChosenPort(PortsOf(*device), static_cast<int>(selection), device->m_iComPort);
            device->m_bFindRequested = false;
            End(dialog, DialogEnd::Ok);
            return true;
        }
        case DialogEnd::FindAndConnect:
            device->m_bFindRequested = true;
            End(dialog, DialogEnd::FindAndConnect);
            return true;
        case DialogEnd::CloseBox:
            End(dialog, DialogEnd::CloseBox);
            return true;
        default:
            return false;
    }
}

INT_PTR CALLBACK ConnectionDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept try {
    switch (message) {
        case WM_INITDIALOG:
            if (KeepDevice(dialog, lParam)) {
                FillComPortList(*DeviceOf(dialog), dialog);
            }
            return TRUE;
        case WM_CLOSE:
            End(dialog, DialogEnd::CloseBox);
            return TRUE;
        case WM_COMMAND:
            return OnCommand(dialog, LOWORD(wParam)) ? TRUE : FALSE;
        default:
            return FALSE;
    }
} catch (...) {
    return FALSE;  // out of memory: the list stays as long as it is
}

}  // namespace

DialogEnd RunConnectionDialog(CDevApiInterface_Impl& device, oko::WindowHandle parent) noexcept {
    return RunDialog(L"INCUBATOR_CONNECTION", parent, ConnectionDlgProc, device);
}
