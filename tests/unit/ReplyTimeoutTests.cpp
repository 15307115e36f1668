// The registry's ReplyTimeout: a way out of the wait for a silent server, off unless asked for.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Fixture.h"
#include "RegistryNames.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/CommandText.h"
#include "fakes/Dialogs.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/Exchange.h"
#include "oko/LibQuery.h"
#include "oko/Settings.h"
#include "platform/Registry.h"
#include "ui/DialogEnd.h"

namespace {

class ReplyTimeoutTests : public DeviceTest {
 protected:
    /// An initialised device whose registry says this of the time-out.
    CDevApiInterface_Impl& Initialised(const std::optional<RegistryValue>& timeout) {
        platform.registry.AddKey(kMiscKey);
        if (timeout) {
            platform.registry.Set(kMiscKey, kTimeoutValue, *timeout);
        }
        CDevApiInterface_Impl& device = RealDevice();
        platform.server.AnswerPayload("listconprod", "");
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
        return device;
    }

    /// How long the library waits for the reply to one command, as the socket is asked: "wait 200".
    std::vector<std::string> WaitsOfOneExchange() {
        platform.server.ClearCommands();
        Length(*m_pDevice, "status");
        std::vector<std::string> calls = platform.server.Calls();
        std::erase_if(calls, [](const std::string& call) { return !call.starts_with("wait"); });
        return calls;
    }

    static int Length(CDevApiInterface_Impl& device, std::string_view command) {
        return Ask(device, CommandText(command)).m_nLength;
    }
};

TEST_F(ReplyTimeoutTests, MissingZeroOrOddValues_WaitForEver) {
    const std::vector<std::optional<RegistryValue>> values{
        std::nullopt,
        RegistryValue::Dword(0),
        RegistryValue::Text(L"200"),
        RegistryValue{kRegistryDword, "\xC8"},
        RegistryValue{kRegistryDword, std::string("\xC8\0\0\0\0\0\0\0", 8)},
        RegistryValue{3, std::string("\xC8\0\0\0", 4)}};
    for (const auto& value : values) {
        SCOPED_TRACE(testing::PrintToString(value ? value->bytes : "none"));
        Initialised(value).ConnectSocket();
        EXPECT_EQ(WaitsOfOneExchange(), std::vector<std::string>{});
        m_pDevice.reset();
    }
}

TEST_F(ReplyTimeoutTests, Value_IsReadWheneverTheLinkIsOpened) {
    platform.registry.AddKey(kMiscKey);
    platform.registry.Set(kMiscKey, kTimeoutValue, RegistryValue::Dword(200));
    RealDevice();  // no Init yet
    EXPECT_EQ(WaitsOfOneExchange(), std::vector<std::string>{"wait 200"});
    platform.registry.Set(kMiscKey, kTimeoutValue, RegistryValue::Dword(300));
    m_pDevice->ApplyConnection(L"");
    EXPECT_EQ(WaitsOfOneExchange(), std::vector<std::string>{"wait 300"});
}

TEST_F(ReplyTimeoutTests, Value_IsReadAtEachInit) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    EXPECT_EQ(WaitsOfOneExchange(), std::vector<std::string>{"wait 200"});
    platform.registry.Set(kMiscKey, kTimeoutValue, RegistryValue::Dword(0xFFFFFFFF));
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    EXPECT_EQ(WaitsOfOneExchange(), std::vector<std::string>{"wait 4294967295"});
    platform.registry.Set(kMiscKey, kTimeoutValue, RegistryValue::Dword(0));
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    EXPECT_EQ(WaitsOfOneExchange(), std::vector<std::string>{});
}

TEST_F(ReplyTimeoutTests, Search_BeforeTheFirstInit_HasTheTimeout) {
    platform.registry.AddKey(kMiscKey);
    platform.registry.Set(kMiscKey, kTimeoutValue, RegistryValue::Dword(200));
    CDevApiInterface_Impl& device = MakeDevice(oko::kRealDevice);
    ScriptedDialogs::Current().onConnection = [](CDevApiInterface_Impl&) { return DialogEnd::FindAndConnect; };
    platform.server.StaySilent("listprod");
    std::wstring text(oko::kConnectionTextLength, L'\0');
    EXPECT_EQ(device.ShowConnection(text.data(), 0, nullptr), 0);
    EXPECT_EQ(platform.server.Calls(),
              (std::vector<std::string>{"startup", "open", "connect 60000", "send listprod", "wait 200", "close"}));
}

TEST_F(ReplyTimeoutTests, Value_IsReadFromTheKeyThatIsOpenForTheLogSwitch) {
    Initialised(RegistryValue::Dword(200));
    const std::wstring key = kMiscKey;
    auto calls = platform.registry.Calls();
    calls.erase(calls.begin(), calls.begin() + 5);  // those of opening the link, the same
    EXPECT_EQ(calls, (std::vector<std::wstring>{L"open " + key, L"query " + key + L"\\LogCommunication",
                                                L"query " + key + L"\\ReplyTimeout", L"read " + key + L"\\ReplyTimeout",
                                                L"close " + key}));
}

TEST_F(ReplyTimeoutTests, SilentServer_IsNoAnswerAndTheSocketStaysOpen) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    platform.server.StaySilent("status");
    platform.server.ClearCommands();
    EXPECT_EQ(Length(device, "status"), -1);
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send status", "wait 200"}));
    platform.server.ClearCommands();
    EXPECT_EQ(Ask(device, CommandText("listprod")).bytes(), "0_listprod_1\r");
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send listprod", "wait 200", "receive 64"}));
    EXPECT_EQ(platform.server.OpenSockets(), 1U);
}

TEST_F(ReplyTimeoutTests, LinkThatWasClosedMeanwhile_StaysClosed) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    platform.server.StaySilent("start 0");
    device.Close();
    EXPECT_EQ(Length(device, "listprod"), -1);
    EXPECT_EQ(platform.server.OpenSockets(), 0U);
}

TEST_F(ReplyTimeoutTests, ReceivesOfOneExchange_ShareTheTime) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    platform.server.StaySilent("readcurval 9");
    Length(device, "readcurval 9");
    platform.server.StaySilent("status");
    platform.server.onCall = [&](const std::string& call) {
        if (call == "wait 200") {  // the late reply comes after 150 ms
            platform.clock.Advance(150);
            platform.server.Deliver("0_readcurval 9_36.5\r");
        }
    };
    platform.server.ClearCommands();
    EXPECT_EQ(Length(device, "status"), -1);
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send status", "wait 200", "receive 64", "wait 50"}));
    platform.server.onCall = {};
}

TEST_F(ReplyTimeoutTests, Silence_IsLoggedWhileTheLogIsOn) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    platform.server.StaySilent("status");
    HostLog::Reset();
    Length(device, "status");
    EXPECT_TRUE(HostLog::Lines().empty());
    device.m_bLogCommunication = true;
    Length(device, "status");
    EXPECT_EQ(HostLog::Lines(),
              (std::vector<std::wstring>{L"OKO-Lab bold line CommandSend: no answer within the time of ReplyTimeout.",
                                         L"OKO-Lab bold line CommandSend: status -> "}));
}

TEST_F(ReplyTimeoutTests, SilentServer_ReadsFailAndInitEnds) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    Assign(*device.m_pTemperature[0], 9, 0);
    platform.server.StaySilent("readcurval 9");
    double value = 1.5;
    EXPECT_EQ(device.m_pTemperature[0]->GetCurrentTemperature(&value), -1);
    EXPECT_EQ(value, 1.5);
    platform.server.StaySilent("listprod");
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), -1);
    EXPECT_EQ(platform.windows.ErrorBoxes().size(), 1U);
}

TEST_F(ReplyTimeoutTests, SilenceToAnyCommandOfInit_FailsItAndEndsIt) {
    platform.registry.AddKey(kMiscKey);
    platform.registry.Set(kMiscKey, kTimeoutValue, RegistryValue::Dword(200));
    platform.server.AnswerPayload("listconprod", "9");
    platform.server.AnswerPayload("bl-param-list 9", "107 115");
    for (const char* const command :
         {"mode 7 0", "comport 9 0 0", "comport 12 1 0", "checkcon 17", "listconprod", "comport 9 0", "listdev 9",
          "bl-param-list 9", "start 1", "status", "readmin 9 0", "readmax 9 0", "bl-param-read 9 107"}) {
        SCOPED_TRACE(command);
        CDevApiInterface_Impl& device = RealDevice();
        platform.server.StaySilent(command);
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), -1);
        EXPECT_EQ(HostLog::Lines().back(),
                  L"CDevApiInterface_Impl::Init No answer within the time of ReplyTimeout; Init failed.");
        EXPECT_EQ(platform.server.Commands().back(), command);
        EXPECT_EQ(device.GetTemperatureCount(), 0);
        EXPECT_TRUE(device.m_bBusy);
        platform.server.Speak(command);
        m_pDevice.reset();
    }
}

TEST_F(ReplyTimeoutTests, SilenceToAProbe_OfAServerThatAnswersTheNextOne_DoesNotFailInit) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    const std::wstring program = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\OKO";
    platform.registry.Set(program, L"DisplayName", RegistryValue::Text(L"OKO-Control Server"));
    platform.registry.Set(program, L"InstallLocation", RegistryValue::Text(L"C:\\OKO\\"));
    platform.files.Answer(L"C:\\OKO\\*", {{L"OKO-Control.exe"}});
    platform.server.StaySilent("listprod");
    platform.shell.onOpen = [this](const RecordedShell::Launch&) { platform.server.Speak("listprod"); };
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
}

TEST_F(ReplyTimeoutTests, InitThatFails_KeepsTheCatalogueOfTheOneBefore) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    platform.server.AnswerPayload("listconprod", "9 12");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    platform.server.StaySilent("listconprod");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), -1);
    platform.server.ClearCommands();
    device.Close();  // releases what the first one found
    EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"start 0", "connect 9 0", "connect 12 0"}));
}

TEST_F(ReplyTimeoutTests, InitThatFails_KeepsTheRangesOfTheOneBefore) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    platform.server.AnswerPayload("listconprod", "9");
    platform.server.AnswerPayload("readmin 9 0", "25.5");
    platform.server.AnswerPayload("readmax 9 0", "41.5");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    platform.server.StaySilent("readmax 9 0");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), -1);
    EXPECT_EQ(device.m_pTemperature[0]->m_dMin, 25.5);
    EXPECT_EQ(device.m_pTemperature[0]->m_dMax, 41.5);
}

}  // namespace
