#include "ui/ValuePanel.h"

#include "oko/WindowHandle.h"
#include "ui/win32/DialogWindow.h"

namespace {

/// The panel's buttons have no effect.
// kept: docs/oddities.md#panel-without-effect
INT_PTR CALLBACK ValuePanelDlgProc(HWND, UINT, WPARAM, LPARAM) noexcept { return FALSE; }

}  // namespace

oko::WindowHandle OpenValuePanel(CDevApiInterface_Impl& device, oko::WindowHandle parent) noexcept {
    return CreateDialogParamW(DialogInstance(), L"INCUBATOR_DIALOG1", static_cast<HWND>(parent), ValuePanelDlgProc,
                              reinterpret_cast<LPARAM>(&device));
}

void* ValuePanelProcedure() noexcept { return reinterpret_cast<void*>(&ValuePanelDlgProc); }
