// Init's steps in order, and what goes wrong on the way. Which channels come of it: ChannelAssignmentTests.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Fixture.h"
#include "RegistryNames.h"
#include "ResultTexts.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/Result.h"
#include "platform/Registry.h"

namespace {

/// The commands of every Init before the products are known, with the COM port in them.
std::vector<std::string> OpeningCommands(int port) {
    std::vector<std::string> commands{"listprod"};
    for (int product = 7; product <= 17; ++product) {
        commands.push_back("mode " + std::to_string(product) + " 0");
    }
    for (int product = 7; product <= 17; ++product) {
        commands.push_back("comport " + std::to_string(product) + " 0 " + std::to_string(port));
    }
    commands.push_back("comport 12 1 " + std::to_string(port));
    commands.push_back("comport 13 1 " + std::to_string(port));
    for (int product = 7; product <= 17; ++product) {
        commands.push_back("checkcon " + std::to_string(product));
    }
    commands.emplace_back("listconprod");
    return commands;
}

class InitialisationTests : public DeviceTest {
 protected:
    /// Lets the registry's switch of the communication log be `value`.
    bool LogsWith(const RegistryValue& value) {
        platform.registry.Set(kMiscKey, kLogValue, value);
        CDevApiInterface_Impl& device = RealDevice();
        device.Init(HostLog::Callback, nullptr);
        return device.m_bLogCommunication;
    }
};

TEST_F(InitialisationTests, EmptyCatalogue_SendsEveryOpeningCommandInOrder) {
    platform.server.AnswerPayload("listconprod", "");
    CDevApiInterface_Impl& device = RealDevice();
    device.m_iComPort = 4;
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    std::vector<std::string> expected = OpeningCommands(4);
    expected.insert(expected.end(), {"start 1", "status"});
    EXPECT_EQ(platform.server.Commands(), expected);
    EXPECT_EQ(device.GetTemperatureCount(), 0);
    EXPECT_EQ(device.GetGasConcentrationCount(), 0);
    EXPECT_EQ(device.GetHumidifierCount(), 0);
    EXPECT_FALSE(device.m_bBusy);
}

TEST_F(InitialisationTests, ReportsItsProgressInOrder) {
    platform.server.AnswerPayload("listconprod", "");
    CDevApiInterface_Impl& device = RealDevice();
    int window = 0;
    device.m_hProgressWnd = &window;
    device.Init(HostLog::Callback, nullptr);
    EXPECT_EQ(platform.windows.Percents(&window), (std::vector<int>{15, 17, 25, 30, 40, 52, 70}));
    EXPECT_EQ(device.m_iProgress, 70);
}

TEST_F(InitialisationTests, WithoutAProgressWindow_KeepsTheLastPercentage) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_iProgress = 5;
    device.Init(HostLog::Callback, nullptr);
    EXPECT_EQ(device.m_iProgress, 5);
}

TEST_F(InitialisationTests, FirstLine_SaysThatItBegan) {
    CDevApiInterface_Impl& device = RealDevice();
    device.HostCallback = nullptr;
    int hostData = 0;
    device.Init(HostLog::Callback, &hostData);
    ASSERT_FALSE(HostLog::Lines().empty());
    EXPECT_EQ(HostLog::Lines().front(), L"OKO-Lab bold line Init()");
    EXPECT_EQ(device.m_pHostData, &hostData);
}

TEST_F(InitialisationTests, NullCallback_Works) {
    EXPECT_EQ(RealDevice().Init(nullptr, nullptr), oko::kSuccess);
    EXPECT_TRUE(HostLog::Lines().empty());
}

TEST_F(InitialisationTests, LogSwitch_OnlyTheNumber1SwitchesTheLogOn) {
    EXPECT_FALSE(LogsWith(RegistryValue::Dword(0)));
    EXPECT_TRUE(LogsWith(RegistryValue::Dword(1)));
    EXPECT_FALSE(LogsWith(RegistryValue::Dword(2)));
    EXPECT_FALSE(LogsWith(RegistryValue::Text(L"1")));
    EXPECT_FALSE(LogsWith({kRegistryDword, std::string("\x01", 1)}));                // too short
    EXPECT_FALSE(LogsWith({kRegistryDword, std::string("\x01\0\0\0\0\0\0\0", 8)}));  // too long
    EXPECT_FALSE(LogsWith({11, std::string("\x01\0\0\0", 4)}));                      // of another type
    EXPECT_EQ(platform.registry.OpenKeys(), 0U);
}

TEST_F(InitialisationTests, LogSwitch_GoneSinceTheLastInit_SwitchesTheLogOff) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bLogCommunication = true;
    device.Init(HostLog::Callback, nullptr);
    EXPECT_FALSE(device.m_bLogCommunication);
}

TEST_F(InitialisationTests, RealDevice_DoesNotTouchTheSimulatorsRegistry) {
    RealDevice().Init(HostLog::Callback, nullptr);
    for (const std::wstring& call : platform.registry.Calls()) {
        EXPECT_EQ(call.find(L"Simulators"), std::wstring::npos) << call;
    }
}

TEST_F(InitialisationTests, RealDevice_StartsNoThread) {
    RealDevice().Init(HostLog::Callback, nullptr);
    EXPECT_EQ(platform.threads.Started(), 0U);
}

TEST_F(InitialisationTests, ListProdCodes_1And2AreLoggedAndItGoesOn) {
    for (const int code : {1, 2}) {
        SCOPED_TRACE(code);
        HostLog::Reset();
        platform.server.Answer("listprod", std::to_string(code) + "_listprod_7\r");
        EXPECT_EQ(RealDevice().Init(HostLog::Callback, nullptr), oko::kSuccess);
        EXPECT_EQ(HostLog::Lines(), (std::vector<std::wstring>{L"OKO-Lab bold line Init()",
                                                               ResultLine(L"CDevApiInterface_Impl::Init", code)}));
    }
}

TEST_F(InitialisationTests, ListProdCodes_0And4To9AndLettersGoOnSilently) {
    for (const char code : std::string("0456789x ")) {
        SCOPED_TRACE(code);
        HostLog::Reset();
        platform.server.Answer("listprod", std::string(1, code) + "_listprod_7\r");
        EXPECT_EQ(RealDevice().Init(HostLog::Callback, nullptr), oko::kSuccess);
        EXPECT_EQ(HostLog::Lines(), (std::vector<std::wstring>{L"OKO-Lab bold line Init()"}));
    }
}

TEST_F(InitialisationTests, ListProdCode3_StopsBeforeModeWithABox) {
    platform.server.Answer("listprod", "3_listprod_\r");
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"listprod"});
    EXPECT_EQ(platform.windows.ErrorBoxes(),
              (std::vector<RecordedWindows::ErrorBox>{{kNotExecutedText, L"OC Status error."}}));
    EXPECT_TRUE(device.m_bBusy);
    EXPECT_FALSE(device.m_bServerErrorShown);
}

TEST_F(InitialisationTests, SilentServer_FailsWithOneBoxUntilClose) {
    platform.server.Answer("listprod", kReceiveFails);
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(platform.windows.ErrorBoxes(),
              (std::vector<RecordedWindows::ErrorBox>{{L"No Answer from server.", L"OKO-Control server error."}}));
    EXPECT_TRUE(device.m_bBusy);
    EXPECT_EQ(device.GetTemperatureCount(), 0);

    device.Close();
    EXPECT_TRUE(device.m_bBusy);
    device.ConnectSocket();
    device.Init(HostLog::Callback, nullptr);
    EXPECT_EQ(platform.windows.ErrorBoxes().size(), 2U);
}

TEST_F(InitialisationTests, AnswerInBetween_DoesNotBringTheBoxBack) {
    platform.server.AnswerInTurn("listprod", {kReceiveFails, "0_listprod_7\r", kReceiveFails});
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(platform.windows.ErrorBoxes().size(), 1U);
}

TEST_F(InitialisationTests, AFailure_KeepsTheCallbackAndTheHostData) {
    platform.server.Answer("listprod", kReceiveFails);
    CDevApiInterface_Impl& device = RealDevice();
    int hostData = 0;
    EXPECT_EQ(device.Init(HostLog::Callback, &hostData), oko::kFailure);
    EXPECT_EQ(device.m_pHostData, &hostData);
    HostLog::Reset();
    device.Log(L"still there");
    EXPECT_EQ(HostLog::Lines(), std::vector<std::wstring>{L"still there"});
}

TEST_F(InitialisationTests, RefusalsOfLaterCommands_DoNotFailIt) {
    platform.server.SetDefault([](std::string_view command) -> ServerReply {
        return (command == "listprod" ? "0_" : "3_") + std::string(command) + "_9\r";
    });
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(device.GetTemperatureCount(), 1);
    EXPECT_TRUE(platform.windows.ErrorBoxes().empty());
}

TEST_F(InitialisationTests, AppliedAlarmSettings_AreStillAppliedAfterIt) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bSetupComplete = true;
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_TRUE(device.m_bSetupComplete);
}

TEST_F(InitialisationTests, SuccessAfterAFailure_FreesTheLink) {
    platform.server.AnswerInTurn("listprod", {kReceiveFails, "0_listprod_7\r"});
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_FALSE(device.m_bBusy);
}

TEST_F(InitialisationTests, FindRequest_IsForgotten) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bFindRequested = true;
    device.Init(HostLog::Callback, nullptr);
    EXPECT_FALSE(device.m_bFindRequested);
}

TEST_F(InitialisationTests, WhileItRuns_ChannelsAnswerFromMemory) {
    CDevApiInterface_Impl& device = RealDevice();
    double current = 0.0;
    std::int32_t result = oko::kFailure;
    HostLog::SetHook(
        [&](std::int32_t, const wchar_t*) { result = device.m_pTemperature[0]->GetCurrentTemperature(&current); });
    device.Init(HostLog::Callback, nullptr);
    EXPECT_EQ(result, oko::kSuccess);
    EXPECT_EQ(current, 20.0);
    EXPECT_EQ(platform.server.Commands().front(), "listprod");
}

TEST_F(InitialisationTests, ExceptionOutOfTheHostsCallback_DoesNotReachTheHostAgain) {
    HostLog::SetHook([](std::int32_t, const wchar_t*) { throw 1; });
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    HostLog::SetHook({});
}

TEST_F(InitialisationTests, StatusErrors_PruneTheCatalogueBeforeChannelsAreMade) {
    platform.server.AnswerPayload("listconprod", "8 11");
    platform.server.AnswerPayload("listdev 8", "0");
    platform.server.AnswerPayload("listdev 11", "0");
    platform.server.AnswerPayload("status", "8 0 4 ");
    CDevApiInterface_Impl& device = RealDevice();
    device.Init(HostLog::Callback, nullptr);
    EXPECT_EQ(device.GetTemperatureCount(), 0);
    EXPECT_EQ(device.GetGasConcentrationCount(), 1);
    EXPECT_EQ(HostLog::Lines().back(), L"OKO-Lab bold line status error: product 8, device 0, error: 4");
}

TEST_F(InitialisationTests, StatusOfMoreThan64Bytes_IsNoStatus) {
    platform.server.AnswerPayload("listconprod", "11");
    platform.server.AnswerPayload("listdev 11", "0");
    const std::string status = "0_status_" + std::string("11 0 4 ") + std::string(47, ' ') + "\r";
    ASSERT_EQ(status.size(), 64U);
    for (const bool longer : {false, true}) {
        SCOPED_TRACE(longer ? "longer" : "as long as there is room");
        HostLog::Reset();
        platform.server.Answer("status", longer ? status + " " : status);
        CDevApiInterface_Impl& device = RealDevice();
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
        EXPECT_EQ(device.GetGasConcentrationCount(), longer ? 1 : 0);
    }
}

TEST_F(InitialisationTests, Simulator_StartsItsValueThreadAndCloseStopsIt) {
    CDevApiInterface_Impl& device = Simulator();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(3));
    EXPECT_TRUE(platform.threads.WaitForRunning(1));
    device.Close();
    EXPECT_EQ(platform.threads.OpenHandles(), 0U);
    EXPECT_TRUE(platform.server.Commands().empty());
}

TEST_F(InitialisationTests, Simulator_InitTwiceWithoutClose_LeavesOneThread) {
    CDevApiInterface_Impl& device = Simulator();
    device.Init(HostLog::Callback, nullptr);
    device.Init(HostLog::Callback, nullptr);
    EXPECT_EQ(platform.threads.Started(), 2U);
    EXPECT_EQ(platform.threads.OpenHandles(), 1U);
    EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(3));
    EXPECT_TRUE(platform.threads.WaitForRunning(1));
}

}  // namespace
