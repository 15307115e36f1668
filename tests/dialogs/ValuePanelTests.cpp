// The value panel that a host puts into a window of its own.

#include <gtest/gtest.h>

#include "DialogTest.h"
#include "dialogs/OpenDialog.h"
#include "oko/LibQuery.h"
#include "oko/WindowHandle.h"
#include "ui/resources/ResourceIds.h"

namespace {

class ValuePanelTests : public DialogTest {};

TEST_F(ValuePanelTests, Panel_IsAHiddenChildOfItsParent) {
    const HWND panel = static_cast<HWND>(Device().CreateValuePanel(parent.Get(), nullptr));
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(GetParent(panel), parent.Get());
    EXPECT_FALSE(IsWindowVisible(panel));
    EXPECT_EQ(GetWindowLongPtrW(panel, GWL_STYLE) & (WS_CHILD | WS_CAPTION | WS_VISIBLE), WS_CHILD);
    RECT expected{0, 0, 159, 71};
    MapDialogRect(panel, &expected);
    RECT client{};
    GetClientRect(panel, &client);
    EXPECT_EQ(client.right, expected.right);
    EXPECT_EQ(client.bottom, expected.bottom);
    DestroyWindow(panel);
}

TEST_F(ValuePanelTests, Procedure_IsHandedOutAndHandlesNothing) {
    oko::DialogProcedure procedure = nullptr;
    const HWND panel = static_cast<HWND>(Device().CreateValuePanel(parent.Get(), &procedure));
    EXPECT_EQ(reinterpret_cast<LONG_PTR>(procedure), GetWindowLongPtrW(panel, DWLP_DLGPROC));
    const auto handle = reinterpret_cast<DLGPROC>(procedure);
    for (const UINT message : {WM_INITDIALOG, WM_COMMAND, WM_CLOSE, WM_DESTROY, WM_USER + 32}) {
        EXPECT_EQ(handle(panel, message, 1, 0), FALSE) << message;
    }
    DestroyWindow(panel);
}

TEST_F(ValuePanelTests, Buttons_HaveNoEffect) {
    const HWND panel = static_cast<HWND>(Device().CreateValuePanel(parent.Get(), nullptr));
    ShowWindow(panel, SW_SHOW);
    const OpenDialog dialog(panel);
    dialog.Type(IDC_GAS_VALUE, L"5.5");
    for (const int id : {IDC_SET_VALUE, IDC_GET_VALUE}) {
        dialog.Click(id);
        EXPECT_TRUE(dialog.IsOpen()) << id;
        EXPECT_EQ(dialog.Text(IDC_GAS_VALUE), L"5.5") << id;
    }
    DestroyWindow(panel);
}

TEST_F(ValuePanelTests, SeveralPanels_StandSideBySide) {
    const HWND first = static_cast<HWND>(Device().CreateValuePanel(parent.Get(), nullptr));
    const HWND second =
        static_cast<HWND>(m_library.Device(oko::kSimulatorDevice).CreateValuePanel(parent.Get(), nullptr));
    EXPECT_NE(first, second);
    DestroyWindow(first);
    EXPECT_TRUE(IsWindow(second));
    DestroyWindow(second);
}

}  // namespace
