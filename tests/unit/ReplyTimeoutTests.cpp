// The registry's ReplyTimeout: a way out of the wait for a silent server, off unless asked for.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Fixture.h"
#include "RegistryNames.h"
#include "core/CommandText.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/Exchange.h"
#include "platform/Registry.h"

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

    std::vector<std::string> TimeoutCalls() const {
        std::vector<std::string> calls = platform.server.Calls();
        std::erase_if(calls, [](const std::string& call) { return !call.starts_with("timeout"); });
        return calls;
    }

    static int Length(CDevApiInterface_Impl& device, std::string_view command) {
        return Ask(device, CommandText(command)).m_nLength;
    }
};

TEST_F(ReplyTimeoutTests, MissingZeroOrOddValues_SetNoOption) {
    const std::vector<std::optional<RegistryValue>> values{
        std::nullopt,
        RegistryValue::Dword(0),
        RegistryValue::Text(L"200"),
        RegistryValue{kRegistryDword, "\xC8"},
        RegistryValue{kRegistryDword, std::string("\xC8\0\0\0\0\0\0\0", 8)},
        RegistryValue{3, std::string("\xC8\0\0\0", 4)}};
    for (const auto& value : values) {
        SCOPED_TRACE(testing::PrintToString(value ? value->bytes : "none"));
        CDevApiInterface_Impl& device = Initialised(value);
        device.ConnectSocket();
        EXPECT_EQ(TimeoutCalls(), std::vector<std::string>{});
        m_pDevice.reset();
    }
}

TEST_F(ReplyTimeoutTests, Value_IsAppliedToTheOpenLinkAndEachLaterOne) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    EXPECT_EQ(TimeoutCalls(), std::vector<std::string>{"timeout 200"});
    device.Close();
    platform.server.ClearCommands();
    device.ApplyConnection(L"");
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"startup", "open", "connect 60000", "timeout 200"}));
}

TEST_F(ReplyTimeoutTests, Value_IsReadAtEachInit) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    EXPECT_EQ(TimeoutCalls(), std::vector<std::string>{"timeout 200"});  // it has it already
    platform.registry.Set(kMiscKey, kTimeoutValue, RegistryValue::Dword(0xFFFFFFFF));
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    platform.registry.Set(kMiscKey, kTimeoutValue, RegistryValue::Dword(0));
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    EXPECT_EQ(TimeoutCalls(), (std::vector<std::string>{"timeout 200", "timeout 4294967295", "timeout 0"}));
    platform.server.ClearCommands();
    device.ConnectSocket();
    EXPECT_TRUE(TimeoutCalls().empty());
}

TEST_F(ReplyTimeoutTests, Value_IsReadFromTheKeyThatIsOpenForTheLogSwitch) {
    Initialised(RegistryValue::Dword(200));
    const std::wstring key = kMiscKey;
    const auto calls = platform.registry.Calls();
    EXPECT_EQ(calls, (std::vector<std::wstring>{L"open " + key, L"query " + key + L"\\LogCommunication",
                                                L"query " + key + L"\\ReplyTimeout", L"read " + key + L"\\ReplyTimeout",
                                                L"close " + key}));
}

TEST_F(ReplyTimeoutTests, SilentServer_IsNoAnswerAndTheLinkOpenedAfreshBeforeTheNextCommand) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    platform.server.StaySilent("status");
    platform.server.ClearCommands();
    EXPECT_EQ(Length(device, "status"), -1);
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send status", "receive 64"}));
    platform.server.Deliver("0_listprod_late\r");  // to the old link
    platform.server.ClearCommands();
    EXPECT_EQ(Ask(device, CommandText("listprod")).bytes(), "0_listprod_1\r");
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"close", "open", "connect 60000", "timeout 200",
                                                                 "send listprod", "receive 64"}));
    EXPECT_EQ(platform.server.OpenSockets(), 1U);
    platform.server.ClearCommands();
    Length(device, "listprod");
    EXPECT_EQ(platform.server.Calls().size(), 2U);  // afresh once
}

TEST_F(ReplyTimeoutTests, LinkThatCannotBeOpenedAfresh_IsTriedAgainWithEachCommand) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    platform.server.StaySilent("status");
    Length(device, "status");
    platform.server.failOpen = true;
    EXPECT_EQ(Length(device, "listprod"), -1);
    platform.server.failOpen = false;
    EXPECT_GT(Length(device, "listprod"), 0);
}

TEST_F(ReplyTimeoutTests, LinkThatWasClosedMeanwhile_StaysClosed) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    platform.server.StaySilent("start 0");
    device.Close();
    EXPECT_EQ(Length(device, "listprod"), -1);
    EXPECT_EQ(platform.server.OpenSockets(), 0U);
}

TEST_F(ReplyTimeoutTests, OtherFailures_KeepTheLink) {
    CDevApiInterface_Impl& device = Initialised(RegistryValue::Dword(200));
    platform.server.Answer("status", kReceiveFails);
    Length(device, "status");
    platform.server.ClearCommands();
    Length(device, "listprod");
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send listprod", "receive 64"}));
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

}  // namespace
