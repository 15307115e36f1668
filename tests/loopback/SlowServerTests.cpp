// A server that answers after the timeout, on real sockets: its late replies are known, and none meets a closed port.

#include "SlowServer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "Fixture.h"
#include "LoopbackSocket.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/CommandText.h"
#include "link/Exchange.h"

namespace {

constexpr std::uint32_t kTooShortMs = 20;
constexpr std::uint32_t kLongEnoughMs = 600'000;  // only a failure waits so long

class SlowServerTests : public DeviceTest {
 protected:
    SlowServerTests() { RedirectLinks(server.Port()); }
    ~SlowServerTests() override { RedirectLinks(0); }

    static std::string AskText(CDevApiInterface_Impl& device, std::string_view command, std::uint32_t timeoutMs) {
        device.SetReplyTimeout(timeoutMs);
        return std::string(Ask(device, CommandText(command)).bytes());
    }

    SlowServer server{1};  // always one reply behind
};

TEST_F(SlowServerTests, SameReadAgainAndAgain_IsAnsweredByTheReplyBefore) {
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(AskText(device, "readcurval 9", kTooShortMs), "");
    for (int i = 1; i <= 20; ++i) {
        ASSERT_EQ(AskText(device, "readcurval 9", kLongEnoughMs), "0_readcurval 9_" + std::to_string(i) + "\r");
    }
    EXPECT_EQ(server.RefusedReplies(), 0);
}

TEST_F(SlowServerTests, LateReplyToAnotherCommand_IsNeverTaken) {
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(AskText(device, "readcurval 9", kTooShortMs), "");
    for (int i = 0; i < 40; ++i) {  // more than the commands that the guard remembers
        EXPECT_EQ(AskText(device, "readcurval 7(" + std::to_string(i) + ")", kTooShortMs), "") << i;
    }
    server.SetBehind(0);
    EXPECT_EQ(AskText(device, "status", kLongEnoughMs), "0_status_42\r");
    EXPECT_EQ(AskText(device, "listprod", kLongEnoughMs), "0_listprod_43\r");
    EXPECT_EQ(server.RefusedReplies(), 0);
}

TEST_F(SlowServerTests, RepliesThatAreFurtherBehind_AreAllKnown) {
    CDevApiInterface_Impl& device = RealDevice();
    server.SetBehind(50);
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(AskText(device, "readcurval 7(" + std::to_string(i) + ")", kTooShortMs), "") << i;
    }
    server.SetBehind(0);
    EXPECT_EQ(AskText(device, "status", kLongEnoughMs), "0_status_51\r");
    EXPECT_EQ(server.RefusedReplies(), 0);
}

// What the others rely on: a reply to a closed link is refused, and counted.
TEST_F(SlowServerTests, ReplyToALinkThatWasClosed_IsRefused) {
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(AskText(device, "readcurval 9", kTooShortMs), "");
    device.DisconnectSocket();
    server.SetBehind(0);
    EXPECT_EQ(server.RefusedReplies(), 1);
}

}  // namespace
