// Opens every dialog in turn and has its picture taken: prints "picture NAME X Y WIDTH HEIGHT" and waits for a line on
// the standard input before it goes on.

#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "dialogs/DialogTest.h"
#include "dialogs/OpenDialog.h"
#include "dialogs/ProgressRecorder.h"
#include "oko/Result.h"
#include "ui/resources/ResourceIds.h"
#include "windows/EmulatorProcess.h"
#include "windows/LoadedLibrary.h"

namespace {

/// The window as it stands on the screen.
void TakePicture(const char* name, HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    std::cout << "picture " << name << " " << rect.left << " " << rect.top << " " << rect.right - rect.left << " "
              << rect.bottom - rect.top << std::endl;
    std::string line;
    std::getline(std::cin, line);
}

void TakePicture(const char* name, const OpenDialog& dialog) {
    dialog.Settle();
    TakePicture(name, dialog.Window());
}

class DialogPictures : public DialogTest {
 protected:
    /// Brings the device up against a full incubator.
    void Start() {
        Device().ApplyConnection(L"m_iComPort 3");
        ASSERT_EQ(Device().Init(HostRecord::Callback, nullptr), oko::kSuccess);
        ASSERT_EQ(Device().ApplyConfiguration(L""), oko::kSuccess);
    }
};

TEST_F(DialogPictures, ConfigurationAndStatus) {
    const EmulatorProcess emulator(L"--scenario full-incubator");
    Start();
    ShowConfiguration([](const OpenDialog& dialog) {
        TakePicture("configuration", dialog);
        dialog.Click(IDC_SHOW_STATUS);
        TakePicture("status", dialog);
        dialog.Click(IDCANCEL);
    });
    Device().Close();
}

TEST_F(DialogPictures, ConnectionAndProgress) {
    const EmulatorProcess emulator(L"--scenario full-incubator");
    const ProgressRecorder progress([](const ProgressShown& shown, HWND window) {
        if (shown.percent == 45 || shown.percent == 52) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, 0);  // lets what was drawn reach the screen
            TakePicture(shown.percent == 45 ? "finding" : "connecting", window);
        }
    });
    SetText(L"m_iComPort 3");
    ShowConnection([](const OpenDialog& dialog) {
        TakePicture("connection", dialog);
        dialog.Click(IDC_FIND_AND_CONNECT);
    });
    Start();
    Device().Close();
}

TEST_F(DialogPictures, Panel) {
    const HWND panel = static_cast<HWND>(Device().CreateValuePanel(parent.Get(), nullptr));
    ShowWindow(panel, SW_SHOW);
    UpdateWindow(panel);
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        DispatchMessageW(&message);
    }
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, 0);
    TakePicture("panel", panel);
    DestroyWindow(panel);
}

}  // namespace
