// "m_bWatchOnly 1" and "m_nReplyTimeout N" in the connection text, for hosts that watch for days.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "RegistryNames.h"
#include "core/CommandText.h"
#include "fakes/Dialogs.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/Exchange.h"
#include "oko/Settings.h"
#include "ui/ConfigurationFields.h"
#include "ui/DialogEnd.h"

namespace {

class WatchOnlyTests : public DeviceTest {
 protected:
    /// A device that only watches, with its link open.
    CDevApiInterface_Impl& Watching() {
        CDevApiInterface_Impl& device = RealDevice();
        device.ApplyConnection(L"m_iComPort 3 m_bWatchOnly 1");
        platform.server.ClearCommands();
        return device;
    }

    /// The same on an incubator with a heater, an O2 controller and a humidifier, initialised.
    CDevApiInterface_Impl& Initialised() {
        platform.server.AnswerPayload("listconprod", "9 11 15");
        platform.server.AnswerPayload("bl-param-list 9", "107 115");
        platform.server.AnswerPayload("bl-param-list 11", "237 238");
        platform.server.AnswerPayload("bl-param-read 9 115", "0");
        platform.server.Answer("status", "0_status_ \r");
        CDevApiInterface_Impl& device = Watching();
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
        return device;
    }

    /// How long the library waits for a reply, as the socket is asked.
    std::vector<std::string> Waits(CDevApiInterface_Impl& device) {
        platform.server.ClearCommands();
        Ask(device, CommandText("status"));
        auto calls = platform.server.Calls();
        std::erase_if(calls, [](const std::string& call) { return !call.starts_with("wait"); });
        return calls;
    }
};

bool Changes(const std::string& command) {
    constexpr std::array<std::string_view, 10> kChanging{"mode",    "comport",       "checkcon", "start",
                                                         "connect", "find",          "findstat", "writesetpoint",
                                                         "alarm",   "bl-param-write"};
    return std::ranges::find(kChanging, std::string_view(command).substr(0, command.find(' '))) != kChanging.end();
}

TEST_F(WatchOnlyTests, Init_AsksAndChangesNothing) {
    CDevApiInterface_Impl& device = Initialised();
    EXPECT_EQ(platform.server.Commands(),
              (std::vector<std::string>{"listprod", "listconprod", "listdev 9", "bl-param-list 9", "listdev 11",
                                        "bl-param-list 11", "listdev 15", "bl-param-list 15", "status", "readmin 9 0",
                                        "readmax 9 0", "bl-param-read 9 107", "bl-param-read 9 115", "readmin 11 0",
                                        "readmax 11 0", "readmin 15 0", "readmax 15 0"}));
    EXPECT_EQ(device.GetTemperatureCount(), 2);
    EXPECT_EQ(device.GetGasConcentrationCount(), 1);
    EXPECT_EQ(device.GetHumidifierCount(), 1);
    EXPECT_EQ(device.m_iComPort, 3);
    EXPECT_FALSE(device.m_bBusy);
}

TEST_F(WatchOnlyTests, Reads_AreThoseOfEveryHost) {
    CDevApiInterface_Impl& device = Initialised();
    double value = 0.0;
    EXPECT_EQ(device.m_pTemperature[0]->GetCurrentTemperature(&value), 0);
    EXPECT_EQ(device.m_pTemperature[0]->GetTargetTemperature(&value), 0);
    EXPECT_EQ(device.m_pTemperature[1]->GetCurrentTemperature(&value), 0);
    EXPECT_EQ(device.m_pGasConcentration[0]->GetCurrentGasConcentration(&value), 0);
    EXPECT_EQ(device.m_pHumidifier[0]->GetTargetHumidity(&value), 0);
}

TEST_F(WatchOnlyTests, Targets_FailWithoutACommand) {
    CDevApiInterface_Impl& device = Initialised();
    device.m_bLogCommunication = true;
    platform.server.ClearCommands();
    HostLog::Reset();
    EXPECT_EQ(device.m_pTemperature[0]->SetTargetTemperature(30.0), -1);
    EXPECT_EQ(device.m_pGasConcentration[0]->SetTargetGasConcentration(5.0), -1);
    EXPECT_EQ(device.m_pHumidifier[0]->SetTargetHumidity(80.0), -1);
    EXPECT_TRUE(platform.server.Calls().empty());
    EXPECT_TRUE(HostLog::Lines().empty());
    EXPECT_EQ(device.m_pTemperature[0]->m_dTarget, 37.0);
    EXPECT_EQ(platform.windows.NoticeCount(), 0U);
}

TEST_F(WatchOnlyTests, Settings_AreKeptForTheStatesAndSendNothing) {
    CDevApiInterface_Impl& device = Initialised();
    device.m_bAirMode = 1;
    platform.server.ClearCommands();
    EXPECT_EQ(device.ApplyConfiguration(L"dIncubatorBelow 0.7 | dIncubatorAbove 0.8"), 0);
    EXPECT_TRUE(platform.server.Calls().empty());
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceBelow, 0.7);
    EXPECT_EQ(device.m_bAirMode, 1);
    EXPECT_TRUE(device.m_bSetupComplete);
}

TEST_F(WatchOnlyTests, AirMode_CannotBeSwitched) {
    CDevApiInterface_Impl& device = Initialised();
    platform.server.ClearCommands();
    EXPECT_FALSE(DescribeConfiguration(device).airModeEnabled);
    EXPECT_FALSE(TakeConfiguration(device, [](int) { return L"0.5"; }, true));
    EXPECT_EQ(device.m_bAirMode, 0);
    EXPECT_FALSE(device.m_bBusy);
    EXPECT_TRUE(TakeConfiguration(device, [](int) { return L"0.5"; }, false));
    EXPECT_TRUE(platform.server.Calls().empty());
}

TEST_F(WatchOnlyTests, FindAndConnect_IsRefused) {
    CDevApiInterface_Impl& device = Initialised();
    platform.server.ClearCommands();
    ScriptedDialogs::Current().onConnection = [](CDevApiInterface_Impl&) { return DialogEnd::FindAndConnect; };
    platform.clock.onSleep = [&device](std::uint32_t) { device.Close(); };  // a search would never end by itself
    std::wstring text(oko::kConnectionTextLength, L'#');
    EXPECT_EQ(device.ShowConnection(text.data(), 0, nullptr), -1);
    EXPECT_TRUE(platform.server.Calls().empty());
    EXPECT_EQ(text[0], L'#');
    platform.clock.onSleep = {};
}

TEST_F(WatchOnlyTests, Close_ClosesTheLinkAndSendsNothing) {
    CDevApiInterface_Impl& device = Initialised();
    platform.server.ClearCommands();
    device.Close();
    EXPECT_EQ(platform.server.Calls(), std::vector<std::string>{"close"});
}

TEST_F(WatchOnlyTests, Init_WithoutAServer_StartsNoneAndShowsNoBox) {
    const std::wstring program = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\OKO";
    platform.registry.Set(program, L"DisplayName", RegistryValue::Text(L"OKO-Control Server"));
    platform.registry.Set(program, L"InstallLocation", RegistryValue::Text(L"C:\\OKO\\"));
    platform.files.Answer(L"C:\\OKO\\*", {{L"OKO-Control.exe"}});
    platform.server.Answer("listprod", kReceiveFails);
    EXPECT_EQ(Watching().Init(HostLog::Callback, nullptr), -1);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"listprod"});
    EXPECT_TRUE(platform.shell.Launches().empty());
    EXPECT_TRUE(platform.windows.ErrorBoxes().empty());
    EXPECT_EQ(HostLog::Lines().back(),
              L"CDevApiInterface_Impl::Init No answer from the server, and a device that only watches starts none.");
}

TEST_F(WatchOnlyTests, Init_ThatTheServerRefuses_FailsWithALineInsteadOfABox) {
    platform.server.Answer("listprod", "3_listprod_\r");
    EXPECT_EQ(Watching().Init(HostLog::Callback, nullptr), -1);
    EXPECT_TRUE(platform.windows.ErrorBoxes().empty());
    EXPECT_EQ(HostLog::Lines().back(),
              L"CDevApiInterface_Impl::Init There is a problem with the Product the current command refers to. The "
              L"command will not be executed.");
}

TEST_F(WatchOnlyTests, LaterTextWithoutTheKeys_WorksAsBefore) {
    for (const wchar_t* const text : {L"m_iComPort 3", L"", static_cast<const wchar_t*>(nullptr), L"m_bWatchOnly 1"}) {
        CDevApiInterface_Impl& device = Watching();
        device.ApplyConnection(L"m_iComPort 3 m_nReplyTimeout 700 m_bWatchOnly 1");
        device.ApplyConnection(text);
        platform.server.ClearCommands();
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
        const auto commands = platform.server.Commands();
        EXPECT_TRUE(std::ranges::any_of(commands, Changes));
        EXPECT_EQ(Waits(device), std::vector<std::string>{});
        m_pDevice.reset();
    }
}

TEST_F(WatchOnlyTests, TextWhoseLinkCannotBeOpened_CountsForTheOneThatIs) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.failStartUp = true;
    device.ApplyConnection(L"m_iComPort 3 m_nReplyTimeout 700 m_bWatchOnly 1");
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    EXPECT_FALSE(std::ranges::any_of(platform.server.Commands(), Changes));
    EXPECT_EQ(Waits(device), std::vector<std::string>{"wait 700"});
}

TEST_F(WatchOnlyTests, Zero_IsEveryHost) {
    CDevApiInterface_Impl& device = RealDevice();
    device.ApplyConnection(L"m_iComPort 3 m_bWatchOnly 0");
    EXPECT_FALSE(device.m_bWatchOnly);
}

TEST_F(WatchOnlyTests, Simulator_TakesTheKeysAndBehavesAsWithout) {
    CDevApiInterface_Impl& device = Simulator();
    device.ApplyConnection(L"m_iComPort 3 m_bWatchOnly 1 m_nReplyTimeout 50");
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    EXPECT_EQ(device.m_pTemperature[0]->SetTargetTemperature(30.0), 0);
    EXPECT_EQ(device.m_pTemperature[0]->m_dTarget, 30.0);
    EXPECT_TRUE(DescribeConfiguration(device).airModeEnabled);
    device.Close();
}

TEST_F(WatchOnlyTests, Timeout_OfTheText_IsUsedInsteadOfTheRegistrys) {
    platform.registry.AddKey(kMiscKey);
    platform.registry.Set(kMiscKey, kTimeoutValue, RegistryValue::Dword(200));
    CDevApiInterface_Impl& device = RealDevice();
    device.ApplyConnection(L"m_iComPort 3 m_nReplyTimeout 5000");
    EXPECT_EQ(Waits(device), std::vector<std::string>{"wait 5000"});
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);  // reads the registry, and keeps the text's
    EXPECT_EQ(Waits(device), std::vector<std::string>{"wait 5000"});
    device.ApplyConnection(L"m_iComPort 3 m_nReplyTimeout 0");
    EXPECT_EQ(Waits(device), std::vector<std::string>{});
    device.ApplyConnection(L"m_iComPort 3 m_nReplyTimeout -1");
    EXPECT_EQ(Waits(device), std::vector<std::string>{"wait 200"});
    device.ApplyConnection(L"m_iComPort 3");
    EXPECT_EQ(Waits(device), std::vector<std::string>{"wait 200"});
}

}  // namespace
