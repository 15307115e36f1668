// Replies that come after the timeout: known by their echo, however late, and never another command's.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "core/CommandText.h"
#include "core/UnansweredCommands.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/Exchange.h"

namespace {

class LateReplyTests : public DeviceTest {
 protected:
    /// A device with a timeout that has waited in vain for the reply to "readcurval 7", `times` times.
    CDevApiInterface_Impl& DeviceThatTimedOut(int times = 1) {
        CDevApiInterface_Impl& device = RealDevice();
        device.SetReplyTimeout(200);
        platform.server.StaySilent("readcurval 7");
        for (int i = 0; i < times; ++i) {
            EXPECT_EQ(Ask(device, CommandText("readcurval 7")).m_nLength, -1);
        }
        platform.server.Speak("readcurval 7");
        platform.server.ClearCommands();
        return device;
    }

    /// The late reply comes while the next `commands` wait for theirs, in front of each.
    void ComesBeforeTheNext(int commands = 1) {
        platform.server.SetDefault([this, commands](std::string_view command) mutable -> ServerReply {
            if (commands-- > 0) {
                platform.server.Deliver("0_readcurval 7_late\r");
            }
            return ScriptedServer::BuiltInReply(command);
        });
    }

    static std::string AskText(CDevApiInterface_Impl& device, std::string_view command) {
        return std::string(Ask(device, CommandText(command)).bytes());
    }
};

TEST_F(LateReplyTests, ToAnotherCommand_IsDroppedEvenIfNothingElseComes) {
    CDevApiInterface_Impl& device = DeviceThatTimedOut();
    platform.server.SetDefault([](std::string_view) -> ServerReply { return "0_readcurval 7_late\r"; });
    EXPECT_EQ(Ask(device, CommandText("status")).m_nLength, -1);
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send status", "wait 200", "receive 64",
                                                                 "wait 200"}));  // no 250: not held back
}

TEST_F(LateReplyTests, ToAnotherCommand_IsDroppedAndTheOwnOneReceived) {
    CDevApiInterface_Impl& device = DeviceThatTimedOut();
    ComesBeforeTheNext();
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
}

TEST_F(LateReplyTests, ToAnotherCommand_IsKnownAfterAnyNumberOfCommands) {
    CDevApiInterface_Impl& device = DeviceThatTimedOut();
    for (int i = 0; i < 100; ++i) {
        AskText(device, "find " + std::to_string(i));
    }
    platform.server.SetDefault([](std::string_view) -> ServerReply { return "0_readcurval 7_late\r"; });
    EXPECT_EQ(Ask(device, CommandText("status")).m_nLength, -1);
}

TEST_F(LateReplyTests, ToEachOfSeveralSends_IsDropped) {
    CDevApiInterface_Impl& device = DeviceThatTimedOut(3);
    ComesBeforeTheNext(3);
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
    EXPECT_EQ(AskText(device, "listprod"), "0_listprod_1\r");
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
    // All have come: from here on it is an echo like any other.
    platform.server.SetDefault([](std::string_view) -> ServerReply { return "0_readcurval 7_loose\r"; });
    EXPECT_EQ(AskText(device, "start 1"), "0_readcurval 7_loose\r");
}

TEST_F(LateReplyTests, ToTheSecondOfTwoSends_IsDroppedEvenIfNothingElseComes) {
    CDevApiInterface_Impl& device = DeviceThatTimedOut(2);
    ComesBeforeTheNext();
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
    platform.server.SetDefault([](std::string_view) -> ServerReply { return "0_readcurval 7_late\r"; });
    EXPECT_EQ(Ask(device, CommandText("listprod")).m_nLength, -1);
}

TEST_F(LateReplyTests, ToACommandThatAFloodHid_IsDropped) {
    constexpr int kFlood = 64;
    CDevApiInterface_Impl& device = DeviceThatTimedOut(kFlood);
    platform.server.StaySilent("status");
    platform.server.onCall = [this](const std::string& call) {
        for (int i = 0; call == "send status" && i < kFlood; ++i) {
            platform.server.Deliver("0_readcurval 7_late\r");
        }
    };
    EXPECT_EQ(Ask(device, CommandText("status")).m_nLength, -1);
    platform.server.onCall = {};
    platform.server.SetDefault([](std::string_view) -> ServerReply { return "0_status_late\r"; });
    EXPECT_EQ(Ask(device, CommandText("start 1")).m_nLength, -1);
}

TEST_F(LateReplyTests, ThatWaits_IsDroppedBeforeTheNextCommandAndCounts) {
    CDevApiInterface_Impl& device = DeviceThatTimedOut();
    platform.server.Deliver("0_readcurval 7_late\r");
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
    platform.server.SetDefault([](std::string_view) -> ServerReply { return "0_readcurval 7_loose\r"; });
    EXPECT_EQ(AskText(device, "listprod"), "0_readcurval 7_loose\r");
}

TEST_F(LateReplyTests, ToTheSameCommand_IsItsReply_AndTheOtherOneIsDroppedLater) {
    CDevApiInterface_Impl& device = DeviceThatTimedOut();
    platform.server.Answer("readcurval 7", "0_readcurval 7_first\r");
    EXPECT_EQ(AskText(device, "readcurval 7"), "0_readcurval 7_first\r");
    // One reply to it is still on its way, and must not become another command's.
    platform.server.SetDefault([](std::string_view) -> ServerReply { return "0_readcurval 7_second\r"; });
    EXPECT_EQ(Ask(device, CommandText("status")).m_nLength, -1);
}

TEST_F(LateReplyTests, ServerThatIsAlwaysOneReplyBehind_AnswersTheSameReadAgainAndAgain) {
    CDevApiInterface_Impl& device = DeviceThatTimedOut();
    auto& base = *device.m_pTemperature[0];
    Assign(base, 7, 0);
    platform.server.Answer("readcurval 7", "0_readcurval 7_37.5\r");
    double value = 0.0;
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(base.GetCurrentTemperature(&value), 0) << i;
    }
    EXPECT_EQ(value, 37.5);
}

TEST_F(LateReplyTests, OfALinkThatWasClosed_IsNotWaitedFor) {
    CDevApiInterface_Impl& device = DeviceThatTimedOut();
    device.ConnectSocket();
    device.SetReplyTimeout(200);
    platform.server.SetDefault([](std::string_view) -> ServerReply { return "0_readcurval 7_loose\r"; });
    EXPECT_EQ(AskText(device, "status"), "0_readcurval 7_loose\r");
}

TEST_F(LateReplyTests, OnALinkWithLooseEchoes_IsDroppedAllTheSame) {
    CDevApiInterface_Impl& device = RealDevice();
    AskText(device, "readcurval 8");
    platform.server.Answer("readcurval 8(1)", "0_readcurval 8_1\r");
    AskText(device, "readcurval 8(1)");
    device.SetReplyTimeout(200);
    platform.server.StaySilent("readcurval 7");
    AskText(device, "readcurval 7");
    ComesBeforeTheNext();
    EXPECT_EQ(AskText(device, "status"), "0_status_1\r");
}

TEST_F(LateReplyTests, Log_TellsOfIt) {
    CDevApiInterface_Impl& device = DeviceThatTimedOut();
    device.m_bLogCommunication = true;
    HostLog::Reset();
    ComesBeforeTheNext();
    AskText(device, "status");
    EXPECT_EQ(HostLog::Lines(),
              (std::vector<std::wstring>{
                  L"OKO-Lab bold line CommandSend: late replies dropped: 1, the last one: 0_readcurval 7_late",
                  L"OKO-Lab bold line CommandSend: status -> 0_status_1\r"}));
}

TEST(UnansweredCommandsTests, EachMissingReply_IsTakenOnce) {
    UnansweredCommands commands;
    EXPECT_FALSE(commands.Take("status"));
    commands.Add("status");
    commands.Add("find 9");
    commands.Add("status");
    EXPECT_FALSE(commands.Take("find"));
    EXPECT_FALSE(commands.Take(""));
    EXPECT_TRUE(commands.Take("status"));
    EXPECT_TRUE(commands.Take("status"));
    EXPECT_FALSE(commands.Take("status"));
    commands.Clear();
    EXPECT_FALSE(commands.Take("find 9"));
}

TEST(UnansweredCommandsTests, MoreRepliesThanCanBeOnTheirWay_AreNotAwaited) {
    UnansweredCommands commands;
    for (std::uint32_t i = 0; i < 10 * UnansweredCommands::kMostReplies; ++i) {
        commands.Add("status");
    }
    for (std::uint32_t i = 0; i < UnansweredCommands::kMostReplies; ++i) {
        ASSERT_TRUE(commands.Take("status")) << i;
    }
    EXPECT_FALSE(commands.Take("status"));
}

}  // namespace
