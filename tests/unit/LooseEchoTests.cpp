// Servers that do not echo a command to the letter: the guard against late replies must never cost a reply.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "core/CommandText.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/Exchange.h"

namespace {

constexpr const wchar_t* kLooseLine =
    L"OKO-Lab bold line CommandSend: the server does not echo commands to the letter; late replies are not recognised "
    L"any more.";

class LooseEchoTests : public DeviceTest {
 protected:
    /// A device that has sent "readcurval 7", and whose server takes the same echo for "readcurval 7(1)".
    CDevApiInterface_Impl& Device() {
        CDevApiInterface_Impl& device = RealDevice();
        device.m_bLogCommunication = true;
        platform.server.Answer("readcurval 7(1)", "0_readcurval 7_38.5\r");
        AskText(device, "readcurval 7");
        platform.server.ClearCommands();
        HostLog::Reset();
        return device;
    }

    static std::string AskText(CDevApiInterface_Impl& device, std::string_view command, int capacity = kReplySize) {
        return std::string(Ask(device, CommandText(command), capacity).bytes());
    }

    static std::size_t LooseLines() {
        const auto lines = HostLog::Lines();
        return static_cast<std::size_t>(std::ranges::count(lines, kLooseLine));
    }
};

TEST_F(LooseEchoTests, OneExchange_IsOneSendOneQuestionAndOneReceive) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.ClearCommands();
    platform.server.waitingChecks = 0;
    AskText(device, "status");
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send status", "receive 64"}));
    EXPECT_EQ(platform.server.waitingChecks, 1);
}

TEST_F(LooseEchoTests, EchoOfAnEarlierCommand_IsTakenWhenNothingBetterComes) {
    CDevApiInterface_Impl& device = Device();
    EXPECT_EQ(AskText(device, "readcurval 7(1)"), "0_readcurval 7_38.5\r");
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send readcurval 7(1)", "receive 64", "wait 250"}));
}

TEST_F(LooseEchoTests, PortCommands_AreSuchAPairToo) {
    CDevApiInterface_Impl& device = RealDevice();
    AskText(device, "comport 9 0");
    platform.server.Answer("comport 9 0 3", "0_comport 9 0_\r");
    EXPECT_EQ(AskText(device, "comport 9 0 3"), "0_comport 9 0_\r");
}

TEST_F(LooseEchoTests, ServerThatEchoesLoosely_IsWaitedForOnce) {
    CDevApiInterface_Impl& device = Device();
    AskText(device, "readcurval 7(1)");
    EXPECT_EQ(LooseLines(), 1U);
    platform.server.ClearCommands();
    EXPECT_EQ(AskText(device, "readcurval 7(1)"), "0_readcurval 7_38.5\r");
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send readcurval 7(1)", "receive 64"}));
    EXPECT_EQ(LooseLines(), 1U);
}

TEST_F(LooseEchoTests, LinkThatIsOpenedAgain_HoldsBackAgain) {
    CDevApiInterface_Impl& device = Device();
    AskText(device, "readcurval 7(1)");
    device.ConnectSocket();
    AskText(device, "readcurval 7");
    platform.server.ClearCommands();
    AskText(device, "readcurval 7(1)");
    EXPECT_EQ(platform.server.Calls().back(), "wait 250");
}

TEST_F(LooseEchoTests, LinkThatIsOpenedAgain_KnowsNoCommandsOfTheOneBefore) {
    CDevApiInterface_Impl& device = Device();
    device.ConnectSocket();
    platform.server.ClearCommands();
    EXPECT_EQ(AskText(device, "readcurval 7(1)"), "0_readcurval 7_38.5\r");
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send readcurval 7(1)", "receive 64"}));
}

TEST_F(LooseEchoTests, LinkThatIsOpenedAgain_KnowsNoKindsOfTheOneBefore) {
    CDevApiInterface_Impl& device = RealDevice();
    AskText(device, "status");
    device.ConnectSocket();
    device.SetReplyTimeout(150);
    AskText(device, "readcurval 7");
    platform.server.Answer("status", "0_readcurval 7_38.5\r");
    EXPECT_EQ(AskText(device, "status"), "0_readcurval 7_38.5\r");  // no duplicate: it may echo "status" loosely
}

TEST_F(LooseEchoTests, ShorterTimeout_LimitsTheWait) {
    CDevApiInterface_Impl& device = Device();
    device.SetReplyTimeout(150);
    AskText(device, "readcurval 7(1)");
    EXPECT_EQ(platform.server.Calls().back(), "wait 150");
    EXPECT_EQ(LooseLines(), 1U);
}

TEST_F(LooseEchoTests, LongerTimeout_DoesNotLengthenTheWait) {
    CDevApiInterface_Impl& device = Device();
    device.SetReplyTimeout(5000);
    AskText(device, "readcurval 7(1)");
    EXPECT_EQ(platform.server.Calls().back(), "wait 250");
}

TEST_F(LooseEchoTests, DuplicateBeforeASilence_IsNotTakenWhereTheServerEchoesSuchCommandsToTheLetter) {
    CDevApiInterface_Impl& device = RealDevice();
    device.SetReplyTimeout(150);
    AskText(device, "readcurval 9");
    AskText(device, "writesetpoint 9 0 37.0");
    platform.server.SetDefault([](std::string_view) -> ServerReply { return "0_readcurval 9_36.5\r"; });
    platform.server.ClearCommands();
    EXPECT_EQ(Ask(device, CommandText("writesetpoint 12 0 5.25")).m_nLength, -1);
    EXPECT_EQ(platform.server.Calls(),
              (std::vector<std::string>{"send writesetpoint 12 0 5.25", "wait 150", "receive 64", "wait 150"}));
    // Of another kind, which it may echo in another way.
    EXPECT_EQ(AskText(device, "readcurval 9(1)"), "0_readcurval 9_36.5\r");
}

TEST_F(LooseEchoTests, DuplicateBeforeASilenceWithoutATimeout_IsTakenRatherThanToWaitForEver) {
    CDevApiInterface_Impl& device = RealDevice();
    AskText(device, "readcurval 9");
    AskText(device, "status");
    platform.server.SetDefault([](std::string_view) -> ServerReply { return "0_readcurval 9_36.5\r"; });
    EXPECT_EQ(AskText(device, "status"), "0_readcurval 9_36.5\r");
    // The server is known to echo "status" to the letter: it is not found to be a loose one.
    EXPECT_FALSE(device.m_bLooseEchoes);
}

TEST_F(LooseEchoTests, WithoutTheLog_NothingIsTold) {
    CDevApiInterface_Impl& device = Device();
    device.m_bLogCommunication = false;
    AskText(device, "readcurval 7(1)");
    EXPECT_TRUE(HostLog::Lines().empty());
}

TEST_F(LooseEchoTests, OwnReplyBehindAnEcho_IsTheReply) {
    CDevApiInterface_Impl& device = Device();
    device.m_bLogCommunication = false;  // the log would end the reply itself
    platform.server.SetDefault([this](std::string_view command) -> ServerReply {
        platform.server.Deliver("0_readcurval 7_99.9 and a tail that is longer than the other\r");
        return ScriptedServer::BuiltInReply(command);
    });
    const Reply reply = Ask(device, CommandText("status"));
    EXPECT_EQ(reply.bytes(), "0_status_1\r");
    EXPECT_STREQ(reply.c_str(), "0_status_1\r");  // zeros behind it, none of the other
    platform.server.ClearCommands();
    AskText(device, "readcurval 7(1)");
    EXPECT_EQ(platform.server.Calls().back(), "wait 250");  // it echoes to the letter: still held back
}

TEST_F(LooseEchoTests, EchoThatWasNotTaken_IsToldAsDropped) {
    CDevApiInterface_Impl& device = Device();
    platform.server.SetDefault([this](std::string_view command) -> ServerReply {
        platform.server.Deliver("0_readcurval 7_99.9\r");
        return ScriptedServer::BuiltInReply(command);
    });
    AskText(device, "status");
    EXPECT_EQ(HostLog::Lines(),
              (std::vector<std::wstring>{
                  L"OKO-Lab bold line CommandSend: late replies dropped: 1, the last one: 0_readcurval 7_99.9",
                  L"OKO-Lab bold line CommandSend: status -> 0_status_1\r"}));
}

TEST_F(LooseEchoTests, ReplyThatMerelyDoesNotMatch_IsBetterThanAnEcho) {
    CDevApiInterface_Impl& device = Device();
    platform.server.SetDefault([this](std::string_view) -> ServerReply {
        platform.server.Deliver("0_readcurval 7_99.9\r");
        return "0_STATUS_1\r";
    });
    EXPECT_EQ(AskText(device, "status"), "0_STATUS_1\r");
}

TEST_F(LooseEchoTests, Failure_IsNoBetterThanAnEcho) {
    CDevApiInterface_Impl& device = Device();
    platform.server.SetDefault([this](std::string_view) -> ServerReply {
        platform.server.Deliver("0_readcurval 7_38.5\r");
        return kReceiveFails;
    });
    EXPECT_EQ(AskText(device, "status"), "0_readcurval 7_38.5\r");
}

TEST_F(LooseEchoTests, EmptyDatagramBehindAnEcho_IsTheReply) {
    CDevApiInterface_Impl& device = Device();
    platform.server.SetDefault([this](std::string_view) -> ServerReply {
        platform.server.Deliver("0_readcurval 7_38.5\r");
        return "";
    });
    EXPECT_EQ(Ask(device, CommandText("status")).m_nLength, 0);
    EXPECT_EQ(LooseLines(), 0U);
}

TEST_F(LooseEchoTests, LastOfSeveralEchoes_IsTaken) {
    CDevApiInterface_Impl& device = Device();
    platform.server.SetDefault([this](std::string_view) -> ServerReply {
        platform.server.Deliver("0_readcurval 7_a duplicate that came before\r");
        return "0_readcurval 7_38.5\r";
    });
    const Reply reply = Ask(device, CommandText("status"));
    EXPECT_EQ(reply.bytes(), "0_readcurval 7_38.5\r");
    EXPECT_EQ(platform.server.Calls(),
              (std::vector<std::string>{"send status", "receive 64", "wait 250", "receive 64", "wait 250"}));
}

TEST_F(LooseEchoTests, SeveralEchoes_ShareTheWait) {
    CDevApiInterface_Impl& device = Device();
    platform.server.Answer("status", "0_readcurval 7_first\r");
    platform.server.onCall = [this](const std::string& call) {
        if (call == "wait 250") {  // the second one comes after 100 ms
            platform.clock.Advance(100);
            platform.server.Deliver("0_readcurval 7_second\r");
        }
    };
    EXPECT_EQ(AskText(device, "status"), "0_readcurval 7_second\r");
    EXPECT_EQ(platform.server.Calls(),
              (std::vector<std::string>{"send status", "receive 64", "wait 250", "receive 64", "wait 150"}));
    platform.server.onCall = {};
}

TEST_F(LooseEchoTests, EchoThatDoesNotFit_IsNoReply) {
    CDevApiInterface_Impl& device = Device();
    platform.server.Answer("status", "0_readcurval 7_" + std::string(200, '1') + "\r");
    EXPECT_EQ(Ask(device, CommandText("status")).m_nLength, -1);
}

TEST_F(LooseEchoTests, LongestReply_IsHeldBackWhole) {
    CDevApiInterface_Impl& device = Device();
    std::string longest = "0_readcurval 7_";
    longest.resize(kListReplySize, '1');
    platform.server.Answer("listconprod", longest);
    EXPECT_EQ(AskText(device, "listconprod", kListReplySize), longest);
}

TEST_F(LooseEchoTests, ChannelOfSuchAServer_GetsItsValues) {
    CDevApiInterface_Impl& device = Device();
    auto& lid = *device.m_pTemperature[1];
    Assign(lid, 7, 1);
    double value = 0.0;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(lid.GetCurrentTemperature(&value), 0);
        EXPECT_EQ(value, 38.5);
    }
}

}  // namespace
