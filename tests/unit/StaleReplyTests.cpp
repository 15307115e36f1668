// Replies that come twice or late: they must never be taken for the answer to another command.

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "core/CommandText.h"
#include "core/RecentCommands.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/Exchange.h"
#include "link/Reply.h"

namespace {

class StaleReplyTests : public DeviceTest {
 protected:
    CDevApiInterface_Impl& Device() {
        CDevApiInterface_Impl& device = RealDevice();
        device.m_bLogCommunication = true;
        return device;
    }

    static std::string AskText(CDevApiInterface_Impl& device, std::string_view command, int capacity = kReplySize) {
        return std::string(Ask(device, CommandText(command), capacity).bytes());
    }
};

TEST_F(StaleReplyTests, ReplyThatWaits_IsDroppedBeforeTheCommand) {
    CDevApiInterface_Impl& device = Device();
    platform.server.Deliver("0_nobody asked_5\r");
    platform.server.Deliver("garbage");
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
    EXPECT_EQ(AskText(device, "listprod"), "0_listprod_1\r");
}

TEST_F(StaleReplyTests, ReplyThatWaits_IsDroppedWhateverItsLength) {
    CDevApiInterface_Impl& device = Device();
    platform.server.Deliver(std::string(2000, 'x'));
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
}

TEST_F(StaleReplyTests, ReplyOfACutSend_IsTakenByItsRepeat) {
    CDevApiInterface_Impl& device = Device();
    platform.server.SendResults({3});
    int sends = 0;
    // One more than is received waits when the repeat is sent, and is not dropped then.
    platform.server.SetDefault([&](std::string_view) -> ServerReply {
        if (++sends == 1) {
            platform.server.Deliver("0_status_first\r");
            platform.server.Deliver("0_status_again\r");
            return "0_status_third\r";
        }
        return "0_status_fourth\r";
    });
    EXPECT_EQ(AskText(device, "status"), "0_status_again\r");
}

TEST_F(StaleReplyTests, ReplyToAnEarlierCommand_IsDroppedAndTheOwnOneReceived) {
    CDevApiInterface_Impl& device = RealDevice();  // without the log, which would end the reply itself
    AskText(device, "readcurval 9");
    platform.server.SetDefault([this](std::string_view command) -> ServerReply {
        platform.server.Deliver("0_readcurval 9_99.9 and a tail that is longer than the other\r");
        return ScriptedServer::BuiltInReply(command);
    });
    const Reply reply = Ask(device, CommandText("readcurval 9(1)"));
    EXPECT_EQ(reply.bytes(), "0_readcurval 9(1)_1\r");
    EXPECT_STREQ(reply.c_str(), "0_readcurval 9(1)_1\r");  // zeros behind it, none of the dropped one
}

TEST_F(StaleReplyTests, LongListReplyToAnEarlierCommand_IsDroppedByAShortExchange) {
    CDevApiInterface_Impl& device = Device();
    AskText(device, "bl-param-list 12", kListReplySize);
    platform.server.SetDefault([this](std::string_view command) -> ServerReply {
        platform.server.Deliver("0_bl-param-list 12_" + std::string(300, '1') + "\r");
        return ScriptedServer::BuiltInReply(command);
    });
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
}

TEST_F(StaleReplyTests, RepliesThatMerelyDoNotMatch_AreTaken) {
    for (const char* const reply : {"0_readcurval_36.5\r", "0_36.5\r", "", "36.5\r", "0_readcurval 99_36.5\r", "_\r",
                                    "0_READCURVAL 9_1\r", "0__1\r", "0_readcurval 9"}) {
        SCOPED_TRACE(reply);
        CDevApiInterface_Impl& device = Device();
        AskText(device, "readcurval 9");
        platform.server.Answer("readcurval 9(1)", reply);
        EXPECT_EQ(AskText(device, "readcurval 9(1)"), reply);
        m_pDevice.reset();
    }
}

TEST_F(StaleReplyTests, SameCommandAgain_TakesItsOwnEcho) {
    CDevApiInterface_Impl& device = Device();
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
    EXPECT_EQ(AskText(device, "listprod"), "0_listprod_1\r");
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
}

TEST_F(StaleReplyTests, Flood_EndsWithoutAnAnswer) {
    CDevApiInterface_Impl& device = Device();
    AskText(device, "readcurval 9");
    platform.server.SetDefault([this](std::string_view command) -> ServerReply {
        for (int i = 0; i < 1000; ++i) {
            platform.server.Deliver("0_readcurval 9_99.9\r");
        }
        return ScriptedServer::BuiltInReply(command);
    });
    EXPECT_EQ(Ask(device, CommandText("status")).m_nLength, -1);
    EXPECT_EQ(Ask(device, CommandText("status")).m_nLength, -1);
}

TEST_F(StaleReplyTests, Log_TellsWhatWasDroppedBeforeTheCommandsOwnLine) {
    CDevApiInterface_Impl& device = Device();
    platform.server.Deliver("0_first_1\r");
    platform.server.Deliver("0_second_36.5 \r");
    AskText(device, "status");
    EXPECT_EQ(HostLog::Lines(),
              (std::vector<std::wstring>{
                  L"OKO-Lab bold line CommandSend: late replies dropped: 2, the last one: 0_second_36.5 ",
                  L"OKO-Lab bold line CommandSend: status -> 0_status_1\r"}));
    HostLog::Reset();
    AskText(device, "status");
    EXPECT_EQ(HostLog::Lines().size(), 1U);

    device.m_bLogCommunication = false;
    HostLog::Reset();
    platform.server.Deliver("0_first_1\r");
    AskText(device, "status");
    EXPECT_TRUE(HostLog::Lines().empty());
}

TEST_F(StaleReplyTests, ThousandsOfReads_AfterDuplicates_AreAllRight) {
    CDevApiInterface_Impl& device = RealDevice();
    auto& base = *device.m_pTemperature[0];
    auto& lid = *device.m_pTemperature[1];
    Assign(base, 7, 0);
    Assign(lid, 7, 1);
    int commands = 0;
    std::string last;
    platform.server.SetDefault([&](std::string_view command) -> ServerReply {
        if (++commands % 7 == 0) {
            platform.server.Deliver(last);
        }
        return last = "0_" + std::string(command) + (command == "readcurval 7" ? "_37\r" : "_38\r");
    });
    for (int i = 0; i < 2500; ++i) {
        double value = 0.0;
        ASSERT_EQ(base.GetCurrentTemperature(&value), 0) << i;
        ASSERT_EQ(value, 37.0) << i;
        ASSERT_EQ(lid.GetCurrentTemperature(&value), 0) << i;
        ASSERT_EQ(value, 38.0) << i;
    }
}

TEST_F(StaleReplyTests, RefusedSetPoint_AfterADuplicate_IsToldAsRefused) {
    CDevApiInterface_Impl& device = RealDevice();
    auto& channel = *device.m_pTemperature[0];
    Assign(channel, 9, 0);
    AskText(device, "readcurval 9");
    platform.server.SetDefault([this](std::string_view command) -> ServerReply {
        platform.server.Deliver("0_readcurval 9_36.5\r");
        return "3_" + std::string(command) + "_\r";
    });
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(channel.SetTargetTemperature(30.0 + i), -1) << i;
    }
}

TEST_F(StaleReplyTests, Init_WithEveryReplyTwice_KeepsAllChannels) {
    CDevApiInterface_Impl& device = RealDevice();
    const std::map<std::string, std::string, std::less<>> payloads{
        {"listconprod", "9 7"},       {"listdev 9", "0"},
        {"listdev 7", "0"},           {"bl-param-read 9 115", "0"},
        {"bl-param-read 9 116", "0"}, {"bl-param-read 9 117", "0"},
        {"bl-param-read 9 192", "0"}, {"bl-param-list 9", "107 108 109 110 119 132 189"}};
    std::string last;
    platform.server.SetDefault([&](std::string_view command) -> ServerReply {
        if (!last.empty()) {
            platform.server.Deliver(last);
        }
        const auto payload = payloads.find(command);
        return last = "0_" + std::string(command) + "_" + (payload != payloads.end() ? payload->second : "1") + "\r";
    });
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    EXPECT_EQ(device.GetTemperatureCount(), 13);
}

bool IsAnswerToEarlier(const RecentCommands& recent, std::string_view reply) {
    return recent.HasEarlier(EchoOf(reply).value_or(""));
}

TEST(RecentCommandsTests, EarlierCommands_AreKnownByTheirEcho) {
    RecentCommands recent;
    EXPECT_FALSE(IsAnswerToEarlier(recent, "0_status_1\r"));
    recent.Add("status");
    EXPECT_FALSE(IsAnswerToEarlier(recent, "0_status_1\r"));  // the command itself
    recent.Add("listprod");
    EXPECT_TRUE(IsAnswerToEarlier(recent, "0_status_1\r"));
    EXPECT_TRUE(IsAnswerToEarlier(recent, "3_status_"));
    EXPECT_FALSE(IsAnswerToEarlier(recent, "0_listprod_1\r"));
    EXPECT_FALSE(IsAnswerToEarlier(recent, "0_statu_1\r"));
    EXPECT_FALSE(IsAnswerToEarlier(recent, "0_status"));
    EXPECT_FALSE(IsAnswerToEarlier(recent, "0__1\r"));
    EXPECT_FALSE(IsAnswerToEarlier(recent, ""));
}

TEST(RecentCommandsTests, CommandsOfARoundAreKept_OlderOnesForgotten) {
    constexpr std::size_t kKept = 32;
    RecentCommands recent;
    recent.Add("status");
    for (std::size_t i = 1; i < kKept; ++i) {
        recent.Add("find " + std::to_string(i));
        EXPECT_TRUE(IsAnswerToEarlier(recent, "0_status_1\r")) << i;
    }
    recent.Add("start 1");
    EXPECT_FALSE(IsAnswerToEarlier(recent, "0_status_1\r"));
}

}  // namespace
