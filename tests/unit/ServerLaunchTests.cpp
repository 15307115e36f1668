#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Fixture.h"
#include "ResultTexts.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/LinkOperation.h"
#include "oko/Result.h"

namespace {

using State = CDevApiInterface_Impl::ServerState;

const std::wstring kProgramKey = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\OKO";
constexpr const wchar_t* kFolder = L"C:\\Okolab\\";

constexpr const wchar_t* kStarting = L"Starting server first.";
constexpr const wchar_t* kNotStarted = L"Server not started.";

class ServerLaunchTests : public DeviceTest {
 protected:
    void InstallServer() {
        platform.registry.Set(kProgramKey, L"DisplayName", RegistryValue::Text(L"OKO-Control Server"));
        platform.registry.Set(kProgramKey, L"InstallLocation", RegistryValue::Text(kFolder));
        platform.files.Answer(std::wstring(kFolder) + L"*", {{L"OKO-Control.exe"}});
    }

    static State EnsureRunning(CDevApiInterface_Impl& device, std::uint32_t pollDelayMs) {
        return device.EnsureServerRunning(device, pollDelayMs);
    }

    /// The server answers the probe with this number and every later one; `silence` is what comes before.
    void AnswerFromProbe(std::size_t number, const ServerReply& silence) {
        std::vector<ServerReply> replies(number - 1, silence);
        replies.emplace_back("0_listprod_7 8\r");
        platform.server.AnswerInTurn("listprod", std::move(replies));
    }
};

TEST_F(ServerLaunchTests, RunningServer_IsLeftAlone) {
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(EnsureRunning(device, 500), State::Running);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"listprod"});
    EXPECT_TRUE(HostLog::Lines().empty());
    EXPECT_TRUE(platform.shell.Launches().empty());
}

TEST_F(ServerLaunchTests, NotInstalled_IsLoggedAndTold) {
    platform.server.Answer("listprod", kReceiveFails);
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(EnsureRunning(device, 500), State::Silent);
    EXPECT_EQ(HostLog::Lines(), (std::vector<std::wstring>{kStarting, L"System cannot find OKO-Control."}));
    EXPECT_EQ(platform.windows.ErrorBoxes(),
              (std::vector<RecordedWindows::ErrorBox>{{L"No Answer from server.", L"OKO-Control server error."}}));
    EXPECT_EQ(platform.server.Commands().size(), 1U);
}

TEST_F(ServerLaunchTests, NoProgramInTheFolder_IsLoggedAndTold) {
    InstallServer();
    platform.files.Answer(std::wstring(kFolder) + L"*", {{L"readme.txt"}});
    platform.server.Answer("listprod", kReceiveFails);
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(EnsureRunning(device, 500), State::Silent);
    EXPECT_EQ(HostLog::Lines(), (std::vector<std::wstring>{kStarting, L"System cannot find OKO-Control application."}));
    EXPECT_TRUE(platform.shell.Launches().empty());
    EXPECT_EQ(platform.windows.ErrorBoxes().size(), 1U);
}

TEST_F(ServerLaunchTests, InstalledServer_IsOpenedByItsBareNameInItsFolder) {
    InstallServer();
    AnswerFromProbe(2, kReceiveFails);
    EXPECT_EQ(EnsureRunning(RealDevice(), 500), State::Running);
    EXPECT_EQ(
        platform.shell.Launches(),
        (std::vector<RecordedShell::Launch>{{L"OKO-Control.exe", L"server address=localhost port=60000", kFolder}}));
}

TEST_F(ServerLaunchTests, AnswerAtOnceAfterTheStart_TakesNoLoopAndNoSleep) {
    InstallServer();
    AnswerFromProbe(2, kReceiveFails);
    EXPECT_EQ(EnsureRunning(RealDevice(), 500), State::Running);
    EXPECT_EQ(HostLog::Lines(),
              (std::vector<std::wstring>{kStarting, L"Server started on 0 loops (0.000000 seconds)"}));
    EXPECT_TRUE(platform.clock.Sleeps().empty());
}

TEST_F(ServerLaunchTests, AnswerOnTheFifthPoll_IsLoggedAlikeForBothDelays) {
    for (const std::uint32_t delayMs : {500U, 1000U}) {
        SCOPED_TRACE(delayMs);
        HostLog::Reset();
        InstallServer();
        AnswerFromProbe(7, kReceiveFails);  // the first probe, the one after the start, five polls
        const std::size_t sleepsBefore = platform.clock.Sleeps().size();
        EXPECT_EQ(EnsureRunning(RealDevice(), delayMs), State::Running);
        EXPECT_EQ(HostLog::Lines().back(), L"Server started on 5 loops (2.500000 seconds)");
        const std::vector<std::uint32_t> sleeps = platform.clock.Sleeps();
        EXPECT_EQ(std::vector<std::uint32_t>(sleeps.begin() + static_cast<std::ptrdiff_t>(sleepsBefore), sleeps.end()),
                  std::vector<std::uint32_t>(5, delayMs));
        m_pDevice.reset();
    }
}

TEST_F(ServerLaunchTests, AnswerOnTheLastPoll_StillCounts) {
    InstallServer();
    AnswerFromProbe(22, kReceiveFails);
    EXPECT_EQ(EnsureRunning(RealDevice(), 500), State::Running);
    EXPECT_EQ(HostLog::Lines().back(), L"Server started on 20 loops (10.000000 seconds)");
    EXPECT_EQ(platform.windows.looksAtMessages, 20);  // the host's windows respond meanwhile
}

TEST_F(ServerLaunchTests, SilentForTwentyPolls_IsNotStarted) {
    InstallServer();
    platform.server.Answer("listprod", kReceiveFails);
    EXPECT_EQ(EnsureRunning(RealDevice(), 500), State::Silent);
    EXPECT_EQ(platform.server.Commands().size(), 22U);
    EXPECT_EQ(platform.clock.Sleeps(), std::vector<std::uint32_t>(20, 500));
    EXPECT_EQ(HostLog::Lines(), (std::vector<std::wstring>{kStarting, kNotStarted}));
    EXPECT_EQ(platform.windows.ErrorBoxes().size(), 1U);
}

TEST_F(ServerLaunchTests, EmptyDatagramsForTwentyPolls_CountAsStartedAndThenAsNoAnswer) {
    InstallServer();
    platform.server.Answer("listprod", "");
    EXPECT_EQ(EnsureRunning(RealDevice(), 500), State::Silent);
    EXPECT_EQ(HostLog::Lines().back(), L"Server started on 20 loops (10.000000 seconds)");
    EXPECT_EQ(platform.windows.ErrorBoxes().size(), 1U);
}

TEST_F(ServerLaunchTests, SilentServer_IsToldOnceUntilClose) {
    platform.server.Answer("listprod", kReceiveFails);
    CDevApiInterface_Impl& device = RealDevice();
    EnsureRunning(device, 500);
    EnsureRunning(device, 1000);
    EXPECT_EQ(platform.windows.ErrorBoxes().size(), 1U);
    EXPECT_TRUE(device.m_bServerErrorShown);
    device.Close();
    device.ConnectSocket();
    EnsureRunning(device, 500);
    EXPECT_EQ(platform.windows.ErrorBoxes().size(), 2U);
}

TEST_F(ServerLaunchTests, MissingAnswer_CountsAsToldOnceTheBoxIsClosed) {
    platform.server.AnswerInTurn("listprod", {"3_listprod_\r", kReceiveFails});
    CDevApiInterface_Impl& device = RealDevice();
    std::vector<std::wstring> boxes;
    platform.windows.onErrorBox = [&](const RecordedWindows::ErrorBox& box) {
        EXPECT_FALSE(device.m_bServerErrorShown);
        boxes.push_back(box.caption);
    };
    EXPECT_EQ(EnsureRunning(device, 500), State::Refusing);
    EXPECT_FALSE(device.m_bServerErrorShown);
    EXPECT_EQ(EnsureRunning(device, 500), State::Silent);
    EXPECT_TRUE(device.m_bServerErrorShown);
    EXPECT_EQ(boxes, (std::vector<std::wstring>{L"OC Status error.", L"OKO-Control server error."}));
}

TEST_F(ServerLaunchTests, StartedServerThatRefuses_IsToldInABox) {
    InstallServer();
    platform.server.AnswerInTurn("listprod", {kReceiveFails, "3_listprod_\r"});
    EXPECT_EQ(EnsureRunning(RealDevice(), 500), State::Refusing);
    EXPECT_EQ(platform.windows.ErrorBoxes(),
              (std::vector<RecordedWindows::ErrorBox>{{kNotExecutedText, L"OC Status error."}}));
}

TEST_F(ServerLaunchTests, EveryRefusal_IsToldWhateverWasToldBefore) {
    platform.server.AnswerInTurn("listprod", {kReceiveFails, "3_listprod_\r"});
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(EnsureRunning(device, 500), State::Silent);
    EXPECT_EQ(EnsureRunning(device, 500), State::Refusing);
    EXPECT_EQ(EnsureRunning(device, 500), State::Refusing);
    std::vector<std::wstring> captions;
    for (const RecordedWindows::ErrorBox& box : platform.windows.ErrorBoxes()) {
        captions.push_back(box.caption);
    }
    EXPECT_EQ(captions,
              (std::vector<std::wstring>{L"OKO-Control server error.", L"OC Status error.", L"OC Status error."}));
}

TEST_F(ServerLaunchTests, WithoutACallback_NothingIsLoggedAndItStillWorks) {
    InstallServer();
    AnswerFromProbe(3, kReceiveFails);
    CDevApiInterface_Impl& device = RealDevice();
    device.HostCallback = nullptr;
    EXPECT_EQ(EnsureRunning(device, 500), State::Running);
    EXPECT_TRUE(HostLog::Lines().empty());
}

TEST_F(ServerLaunchTests, Init_StartsTheServerAndReportsProgressBeforeTheUserIsTold) {
    platform.server.Answer("listprod", kReceiveFails);
    CDevApiInterface_Impl& device = RealDevice();
    int window = 0;
    device.m_hProgressWnd = &window;
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(platform.windows.Percents(&window), (std::vector<int>{15, 17, 25, 30}));
    EXPECT_TRUE(device.m_bBusy);
}

}  // namespace
