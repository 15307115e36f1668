// "Find and Connect" with its progress windows, and the connection sequence that follows.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "DialogTest.h"
#include "ProgressRecorder.h"
#include "dialogs/OpenDialog.h"
#include "oko/CDevApiInterface.h"
#include "oko/Result.h"
#include "ui/resources/ResourceIds.h"
#include "unit/ResultTexts.h"
#include "windows/EmulatorProcess.h"
#include "windows/InstalledEmulator.h"
#include "windows/LoadedLibrary.h"
#include "windows/Processes.h"
#include "windows/ScratchFolder.h"

namespace {

/// Eleven products: 1 at first, then the part of them that is done.
const std::vector<int> kSearchPercents{1, 9, 18, 27, 36, 45, 55, 64, 73, 82, 91};

void FindAndConnect(const OpenDialog& dialog) { dialog.Click(IDC_FIND_AND_CONNECT); }

/// The commands of a record that the emulator wrote.
std::vector<std::string> RecordedCommands(const std::wstring& file) {
    std::vector<std::string> commands;
    std::ifstream stream{std::filesystem::path(file)};
    std::string line;
    while (std::getline(stream, line)) {
        const std::size_t begin = line.find('\t') + 1;
        commands.push_back(line.substr(begin, line.find('\t', begin) - begin));
    }
    return commands;
}

/// A find for every product, each with its polls: more than one for those that take their time.
void ExpectCommands(std::vector<std::string> commands) {
    std::vector<std::string> expected{"listprod"};
    for (int product = 7; product <= 17; ++product) {
        expected.push_back("mode " + std::to_string(product) + " 0");
    }
    for (int product = 7; product <= 17; ++product) {
        const std::string find = "find " + std::to_string(product);
        expected.insert(expected.end(), {find, "findstat"});
        const auto found = std::ranges::find(commands, find);
        ASSERT_NE(found, commands.end()) << product;
        const auto polls = std::find_if(found + 1, commands.end(), [](const auto& c) { return c != "findstat"; });
        ASSERT_GE(polls - found - 1, product == 9 || product == 12 ? 2 : 1) << product;
        commands.erase(found + 2, polls);  // the further polls
    }
    expected.insert(expected.end(),
                    {"listconprod", "comport 9 0", "listdev 9", "bl-param-list 9", "listdev 12", "bl-param-list 12"});
    EXPECT_EQ(commands, expected);
}

/// Closes a device before its server goes, whatever happens: nobody would answer it.
class CloseAtEnd {
 public:
    explicit CloseAtEnd(CDevApiInterface& device) : m_device(device) {}
    ~CloseAtEnd() { m_device.Close(); }
    CloseAtEnd(const CloseAtEnd&) = delete;
    CloseAtEnd& operator=(const CloseAtEnd&) = delete;

 private:
    CDevApiInterface& m_device;
};

/// Against the emulator.
class FindAndConnectTests : public DialogTest {
 protected:
    // The emulator that holds them open is a local of the test, and gone by now.
    ~FindAndConnectTests() override {
        std::filesystem::remove(scenario);
        std::filesystem::remove(record);
    }

    const std::wstring scenario = ScratchFolder() + L"slow search.json";
    const std::wstring record = ScratchFolder() + L"slow search.txt";
};

TEST_F(FindAndConnectTests, SlowSearch_IsPolledShownAndLedOnToTheRunningDevice) {
    // Products 9 and 12 take their time; the others are not there, which is known sooner.
    std::ofstream(std::filesystem::path(scenario)) << R"({"name": "slow", "comPort": 5, "products": [
        {"number": 9, "findMs": 3000, "devices": [{"number": 0}], "parameters": [{"number": 107, "follows": 0}]},
        {"number": 12, "findMs": 2500, "devices": [{"number": 0}, {"number": 1}]}]})";
    const EmulatorProcess emulator(L"--scenario \"" + scenario + L"\" --record \"" + record + L"\"");
    const CloseAtEnd close(Device());
    const ProgressRecorder progress;
    SetText(L"m_iComPort 3");
    EXPECT_EQ(ShowConnection(FindAndConnect), oko::kSuccess);
    EXPECT_STREQ(text.data(), L"m_iComPort 5");  // the server knows the port better
    EXPECT_NE(GetCursor(), LoadCursorW(nullptr, IDC_WAIT));

    EXPECT_EQ(progress.Percents(L"Find Connection"), kSearchPercents);
    EXPECT_EQ(progress.Percents(L"Connecting"), std::vector<int>{1});
    EXPECT_EQ(progress.Windows(), 2U);
    EXPECT_EQ(progress.OpenWindows(), 1U);
    for (const ProgressShown& shown : progress.Shown()) {
        SCOPED_TRACE(shown.percent);
        EXPECT_EQ(shown.text, std::to_wstring(shown.percent) + L" %");
        EXPECT_EQ(shown.position, shown.percent);
        EXPECT_TRUE(shown.waitCursor);
        EXPECT_TRUE(shown.drawn);
    }

    ExpectCommands(RecordedCommands(record));

    // The host goes on as always; the window stays until the settings are applied.
    Device().ApplyConnection(text.data());
    EXPECT_EQ(Device().Init(HostRecord::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(progress.OpenWindows(), 1U);
    EXPECT_EQ(Device().ApplyConfiguration(L""), oko::kSuccess);
    EXPECT_EQ(progress.Percents(L"Connecting"), (std::vector<int>{1, 5, 15, 17, 25, 30, 40, 52, 70, 75, 83, 89}));
    EXPECT_EQ(progress.OpenWindows(), 0U);
    EXPECT_EQ(Device().GetTemperatureCount(), 2);
    EXPECT_EQ(Device().GetGasConcentrationCount(), 2);
}

TEST_F(FindAndConnectTests, InstalledServer_IsStartedForTheSearch) {
    const InstalledEmulator installed(L"--scenario product-9");
    const EmulatorProcess placeholder(L"--placeholder");
    const CloseAtEnd close(Device());
    const ProgressRecorder progress;
    Device().ApplyConnection(L"m_iComPort 3");
    SetText(L"m_iComPort 3");
    EXPECT_EQ(ShowConnection(FindAndConnect), oko::kSuccess);
    EXPECT_EQ(progress.Percents(L"Find Connection"), kSearchPercents);
    EXPECT_EQ(progress.Percents(L"Connecting"), std::vector<int>{1});
    Device().Close();
    EXPECT_EQ(EndProcesses(InstalledEmulator::kProgram), 1);
}

/// Against a server of the test's own.
class FindAndConnectServerTests : public IncubatorDialogTest {
 protected:
    /// The icon of a message box; null when it has none.
    static HICON IconOf(const OpenDialog& box) {
        for (HWND control = GetWindow(box.Window(), GW_CHILD); control != nullptr;
             control = GetWindow(control, GW_HWNDNEXT)) {
            if ((GetWindowLongPtrW(control, GWL_STYLE) & SS_TYPEMASK) == SS_ICON) {
                return reinterpret_cast<HICON>(SendMessageW(control, STM_GETICON, 0, 0));
            }
        }
        return nullptr;
    }

    /// Presses Find and Connect and answers the box that comes of it; gives its text.
    std::wstring BoxOf(const wchar_t* caption) {
        std::wstring shown;
        EXPECT_EQ(ShowConnection([&](const OpenDialog& dialog) {
                      const DWORD threadId = dialog.ThreadId();
                      PostMessageW(dialog.Window(), WM_COMMAND, IDC_FIND_AND_CONNECT, 0);
                      const auto box = AwaitDialog(threadId, caption);
                      ASSERT_TRUE(box);
                      constexpr int kBoxText = 0xFFFF;
                      shown = box->Text(kBoxText);
                      EXPECT_EQ(GetWindow(box->Window(), GW_OWNER), nullptr);
                      EXPECT_EQ(IconOf(*box), LoadIconW(nullptr, IDI_ERROR));
                      box->Click(IDOK);
                  }),
                  oko::kSuccess);
        return shown;
    }
};

TEST_F(FindAndConnectServerTests, DeviceThatRunsAlready_IsNotConnectedAgain) {
    server.Answer("findstat", "-1");
    Start({9});
    const ProgressRecorder progress;
    SetText(L"m_iComPort 3");
    EXPECT_EQ(ShowConnection(FindAndConnect), oko::kSuccess);
    EXPECT_EQ(progress.Percents(L"Find Connection"), kSearchPercents);
    EXPECT_EQ(progress.Windows(), 1U);
    EXPECT_EQ(progress.OpenWindows(), 0U);
}

TEST_F(FindAndConnectServerTests, ProgressWindow_GoesFrom0To100AndCannotBeClosed) {
    server.Answer("findstat", "-1");
    server.Connect({9}, "107");
    const ProgressRecorder progress;
    EXPECT_EQ(ShowConnection(FindAndConnect), oko::kSuccess);
    const HWND window = progress.LastWindow();
    ASSERT_TRUE(IsWindow(window));
    EXPECT_EQ(GetWindow(window, GW_OWNER), parent.Get());
    constexpr UINT kGetRange = WM_USER + 7;  // PBM_GETRANGE
    EXPECT_EQ(SendDlgItemMessageW(window, IDC_PROGRESS_BAR, kGetRange, TRUE, 0), 0);
    EXPECT_EQ(SendDlgItemMessageW(window, IDC_PROGRESS_BAR, kGetRange, FALSE, 0), 100);

    PostMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0);
    PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        DispatchMessageW(&message);
    }
    EXPECT_TRUE(IsWindow(window));
    EXPECT_TRUE(IsWindowVisible(window));

    // A device that the host brings down meanwhile leaves the window; applying the settings is what closes it.
    Device().Close();
    EXPECT_TRUE(IsWindow(window));
    EXPECT_EQ(Device().ApplyConfiguration(L""), oko::kSuccess);
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(FindAndConnectServerTests, ProgressWindow_ShowsNoTextBeforeItsFirstPercentage) {
    server.Answer("findstat", "-1");
    server.Connect({9}, "107");
    const ProgressRecorder progress;
    EXPECT_EQ(ShowConnection(FindAndConnect), oko::kSuccess);
    std::set<std::wstring> expected{L""};  // not the template's text
    for (const int percent : kSearchPercents) {
        expected.insert(std::to_wstring(percent) + L" %");
    }
    EXPECT_EQ(progress.SeenTexts(), expected);
    EXPECT_EQ(progress.Windows(), 2U);
    EXPECT_EQ(Device().ApplyConfiguration(L""), oko::kSuccess);
}

TEST_F(FindAndConnectServerTests, ServerThatIsNowhere_IsSaidOnceAndThePortKept) {
    server.AnswerAll("");
    const ProgressRecorder progress;
    SetText(L"m_iComPort 4");
    EXPECT_EQ(BoxOf(L"OKO-Control server error."), L"No Answer from server.");
    EXPECT_STREQ(text.data(), L"m_iComPort 4");
    EXPECT_EQ(progress.Windows(), 0U);
    EXPECT_EQ(server.NewCommands(), std::vector<std::string>{"listprod"});

    EXPECT_EQ(ShowConnection(FindAndConnect), oko::kSuccess);  // no box
    EXPECT_STREQ(text.data(), L"m_iComPort 4");
    EXPECT_EQ(server.NewCommands(), std::vector<std::string>{"listprod"});

    Device().Close();
    EXPECT_EQ(BoxOf(L"OKO-Control server error."), L"No Answer from server.");
}

TEST_F(FindAndConnectServerTests, ServerThatRefuses_IsSaidAndThePortKept) {
    server.AnswerAll("3_listprod_\r");
    const ProgressRecorder progress;
    SetText(L"m_iComPort 4");
    EXPECT_EQ(BoxOf(L"OC Status error."), kNotExecutedText);
    EXPECT_STREQ(text.data(), L"m_iComPort 4");
    EXPECT_EQ(progress.Windows(), 0U);
}

}  // namespace
