// The connection dialog: its list of ports, and how it is left.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "DialogTest.h"
#include "dialogs/OpenDialog.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "ui/resources/ResourceIds.h"

namespace {

/// What the list ought to show on this machine, asked of the system here too.
std::vector<std::wstring> ExpectedPorts() {
    std::vector<std::wstring> ports;
    for (int number = 1; number <= 64; ++number) {
        std::wstring name = L"COM" + std::to_wstring(number);
        COMMCONFIG configuration{};
        DWORD size = sizeof configuration;
        if (!GetDefaultCommConfigW(name.c_str(), &configuration, &size)) {
            continue;
        }
        const HANDLE port =
            CreateFileW((number < 10 ? name : L"\\\\.\\" + name).c_str(), 0, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (port != INVALID_HANDLE_VALUE) {
            CloseHandle(port);
        } else {
            name += L" (busy)";
        }
        ports.push_back(name);
    }
    return ports;
}

std::vector<std::wstring> ListedPorts(const OpenDialog& dialog) {
    const HWND list = dialog.Control(IDC_PORT_LIST);
    std::vector<std::wstring> ports;
    const auto count = static_cast<WPARAM>(SendMessageW(list, CB_GETCOUNT, 0, 0));
    for (WPARAM i = 0; i < count; ++i) {
        std::array<wchar_t, 64> text{};
        SendMessageW(list, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text.data()));
        ports.emplace_back(text.data());
    }
    return ports;
}

/// "12" of "COM12 (busy)".
std::wstring PortNumber(const std::wstring& listed) { return listed.substr(3, listed.find(L' ') - 3); }

int Selected(const OpenDialog& dialog) {
    return static_cast<int>(SendMessageW(dialog.Control(IDC_PORT_LIST), CB_GETCURSEL, 0, 0));
}

void Select(const OpenDialog& dialog, int index) {
    SendMessageW(dialog.Control(IDC_PORT_LIST), CB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

class ConnectionDialogTests : public IncubatorDialogTest {
 protected:
    void SetUp() override {
        ASSERT_GE(ExpectedPorts().size(), 7U);  // Wine has a configuration for COM1 to COM9
    }
};

TEST_F(ConnectionDialogTests, Simulator_HasNone) {
    SetText(L"m_iComPort 5");
    EXPECT_EQ(m_library.Device(oko::kSimulatorDevice).ShowConnection(text.data(), 12, parent.Get()), oko::kSuccess);
    EXPECT_STREQ(text.data(), L"m_iComPort 5");
}

TEST_F(ConnectionDialogTests, Ports_AreListedByNumberAndMarkedWhenBusy) {
    const std::vector<std::wstring> expected = ExpectedPorts();
    EXPECT_EQ(ShowConnection([&](const OpenDialog& dialog) {
                  EXPECT_EQ(ListedPorts(dialog), expected);
                  dialog.PressCloseBox();
              }),
              oko::kFailure);
}

TEST_F(ConnectionDialogTests, PortOfTheSettings_IsSelectedAndElseTheFirst) {
    struct Case {
        std::wstring settings;
        int selected;
    };
    const int last = static_cast<int>(ExpectedPorts().size()) - 1;
    const std::wstring lastNumber = PortNumber(ExpectedPorts().back());
    // Text that cannot be read leaves the port as it was.
    for (const Case& row :
         {Case{L"m_iComPort " + lastNumber, last}, Case{L"port 1", last}, Case{L"", last}, Case{L"m_iComPort 99", 0},
          Case{L"m_iComPort  " + lastNumber + L" ", last}, Case{L"m_iComPort 1", 0}}) {
        SetText(row.settings);
        ShowConnection([&](const OpenDialog& dialog) {
            EXPECT_EQ(Selected(dialog), row.selected) << row.settings;
            dialog.PressCloseBox();
        });
    }
}

TEST_F(ConnectionDialogTests, DialogOpenedOften_ListsThePortsAnew) {
    // More often than the table of ports has room for, should the lists pile up.
    const std::vector<std::wstring> expected = ExpectedPorts();
    const std::size_t enough = 64 / expected.size() + 2;
    SetText(L"m_iComPort 3");
    for (std::size_t i = 0; i < enough; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(ShowConnection([&](const OpenDialog& dialog) {
                      EXPECT_EQ(ListedPorts(dialog), expected) << i;
                      Select(dialog, static_cast<int>(i % expected.size()));
                      dialog.Click(IDOK);
                  }),
                  oko::kSuccess);
        EXPECT_EQ(text.data(), L"m_iComPort " + PortNumber(expected[i % expected.size()]));
    }
}

TEST_F(ConnectionDialogTests, Ok_WritesTheChosenPort) {
    SetText(L"m_iComPort 3");
    EXPECT_EQ(ShowConnection([](const OpenDialog& dialog) {
                  Select(dialog, 6);
                  dialog.Click(IDOK);
              }),
              oko::kSuccess);
    EXPECT_EQ(text.data(), L"m_iComPort " + PortNumber(ExpectedPorts()[6]));
    EXPECT_TRUE(server.Commands().empty());
}

TEST_F(ConnectionDialogTests, EnterKey_IsOk) {
    SetText(L"m_iComPort 3");
    EXPECT_EQ(ShowConnection([](const OpenDialog& dialog) { dialog.Press(VK_RETURN); }), oko::kSuccess);
    EXPECT_STREQ(text.data(), L"m_iComPort 3");
}

TEST_F(ConnectionDialogTests, ArrowKey_ChoosesTheNextPort) {
    SetText(L"m_iComPort 3");
    EXPECT_EQ(ShowConnection([](const OpenDialog& dialog) {
                  while (dialog.Focus() != dialog.Control(IDC_PORT_LIST)) {
                      dialog.Press(VK_TAB);
                  }
                  dialog.Press(VK_DOWN);
                  dialog.Click(IDOK);
              }),
              oko::kSuccess);
    EXPECT_STREQ(text.data(), L"m_iComPort 4");
}

TEST_F(ConnectionDialogTests, CloseBoxAndId8_FailAndLeaveTheText) {
    struct Way {
        const char* name;
        void (*leave)(const OpenDialog&);
    };
    for (const Way& way : {Way{"close box", [](const OpenDialog& dialog) { dialog.PressCloseBox(); }},
                           Way{"id 8", [](const OpenDialog& dialog) { dialog.Command(8, 0); }},
                           Way{"id 8 with code 5", [](const OpenDialog& dialog) { dialog.Command(8, 5); }}}) {
        SCOPED_TRACE(way.name);
        SetText(L"m_iComPort 3");
        EXPECT_EQ(ShowConnection([&](const OpenDialog& dialog) {
                      Select(dialog, 6);
                      way.leave(dialog);
                  }),
                  oko::kFailure);
        EXPECT_STREQ(text.data(), L"m_iComPort 3");
    }
    EXPECT_TRUE(server.Commands().empty());
}

TEST_F(ConnectionDialogTests, EscapeKey_DoesNothing) {
    SetText(L"m_iComPort 3");
    EXPECT_EQ(ShowConnection([](const OpenDialog& dialog) {
                  dialog.Press(VK_ESCAPE);
                  EXPECT_TRUE(dialog.IsOpen());
                  dialog.Click(IDOK);
              }),
              oko::kSuccess);
}

TEST_F(ConnectionDialogTests, OkWithAnyNotificationCode_IsTaken) {
    SetText(L"m_iComPort 3");
    EXPECT_EQ(ShowConnection([](const OpenDialog& dialog) { dialog.Command(IDOK, 6); }), oko::kSuccess);
    EXPECT_STREQ(text.data(), L"m_iComPort 3");
}

TEST_F(ConnectionDialogTests, DialogWithoutADevice_EndsAsCancelled) {
    DLGPROC procedure = nullptr;
    ShowConnection([&](const OpenDialog& dialog) {
        procedure = reinterpret_cast<DLGPROC>(GetWindowLongPtrW(dialog.Window(), DWLP_DLGPROC));
        EXPECT_EQ(dialog.Control(IDCANCEL), nullptr);
        dialog.PressCloseBox();
    });
    ASSERT_NE(procedure, nullptr);
    EXPECT_EQ(
        DialogBoxParamW(GetModuleHandleW(L"OkoLabBoldLine.dll"), L"INCUBATOR_CONNECTION", parent.Get(), procedure, 0),
        2);
}

}  // namespace
