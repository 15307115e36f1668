#include "transcript/ExchangeMatcher.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "transcript/Transcript.h"

namespace emulator {

namespace {

class ExchangeMatcherTests : public testing::Test {
 protected:
    /// The server's reply passes on at once. False where nobody asked for it.
    bool Reply(const std::string& client, const std::string& reply, double now) {
        const auto open = matcher.FindFor(client, reply);
        if (open == nullptr) {
            matcher.Unasked(client, reply, now);
            return false;
        }
        matcher.Answered(open, 1, now);
        matcher.Sent(open, reply, now);
        return true;
    }

    /// What was handed over since the last look: "client: command > reply, reply".
    std::vector<std::string> Heard() {
        std::vector<std::string> lines;
        lines.swap(heard);
        return lines;
    }

    std::vector<std::string> heard;
    ExchangeMatcher matcher{{1.0, 30.0}, [this](const std::string& client, const Exchange& exchange) {
                                std::string line = client + ": " + exchange.command.value_or("nobody") + " >";
                                for (const emulator::Reply& reply : exchange.replies) {
                                    line += " " + reply.datagram;
                                }
                                heard.push_back(line);
                            }};
};

using Lines = std::vector<std::string>;

TEST_F(ExchangeMatcherTests, ExchangeWithReply_EndsWithItsClientsNextCommand) {
    matcher.Command("a", "x", 0.0);
    Reply("a", "0_x_1", 0.1);
    matcher.Command("b", "y", 0.2);
    EXPECT_EQ(Heard(), Lines{});
    matcher.Command("a", "z", 0.3);
    EXPECT_EQ(Heard(), Lines{"a: x > 0_x_1"});
}

TEST_F(ExchangeMatcherTests, ExchangeWithReply_EndsAWhileAfterItsLastReply) {
    matcher.Command("a", "x", 0.0);
    Reply("a", "0_x_1", 5.0);
    Reply("a", "0_x_2", 5.9);
    matcher.Tick(6.8);
    EXPECT_EQ(Heard(), Lines{});
    matcher.Tick(6.9);
    EXPECT_EQ(Heard(), Lines{"a: x > 0_x_1 0_x_2"});
}

TEST_F(ExchangeMatcherTests, ExchangeWithoutReply_WaitsLongAndSurvivesTheNextCommand) {
    matcher.Command("a", "x", 0.0);
    matcher.Command("a", "y", 20.0);
    matcher.Tick(29.9);
    EXPECT_EQ(Heard(), Lines{});
    matcher.Tick(30.0);
    EXPECT_EQ(Heard(), Lines{"a: x >"});
}

TEST_F(ExchangeMatcherTests, Reply_GoesToTheYoungestThatItEchoes_ElseToTheYoungest) {
    for (const char* const command : {"x", "y", "x", "y 1"}) {
        matcher.Command("a", command, 0.0);
    }
    Reply("a", "0_x_to the second x", 0.1);
    Reply("a", "0_y_to y", 0.2);
    Reply("a", "0_y 1_to y 1", 0.3);
    Reply("a", "nonsense", 0.4);
    Reply("a", "0_other_to the youngest", 0.5);
    matcher.Finish();
    EXPECT_EQ(Heard(), (Lines{"a: x >", "a: y > 0_y_to y", "a: x > 0_x_to the second x",
                              "a: y 1 > 0_y 1_to y 1 nonsense 0_other_to the youngest"}));
}

TEST_F(ExchangeMatcherTests, Exchanges_AreHandedOverInTheOrderOfTheirCommands) {
    matcher.Command("a", "slow", 0.0);
    matcher.Command("b", "fast", 0.1);
    Reply("b", "0_fast_1", 0.2);
    matcher.Tick(2.0);
    EXPECT_EQ(Heard(), Lines{});
    Reply("a", "0_slow_1", 3.0);
    matcher.Tick(4.0);
    EXPECT_EQ(Heard(), (Lines{"a: slow > 0_slow_1", "b: fast > 0_fast_1"}));
}

TEST_F(ExchangeMatcherTests, WhatNobodyAskedFor_IsHandedOverInItsPlace) {
    EXPECT_FALSE(Reply("a", "hello", 0.0));
    EXPECT_EQ(Heard(), Lines{"a: nobody > hello"});
    matcher.Command("a", "x", 1.0);
    EXPECT_FALSE(Reply("b", "hello", 1.5));  // another client's command is no reason
    EXPECT_EQ(Heard(), Lines{});
    matcher.Finish();
    EXPECT_EQ(Heard(), (Lines{"a: x >", "b: nobody > hello"}));
}

TEST_F(ExchangeMatcherTests, ReplyThatIsStillToBeSent_HoldsItsExchangeOpen) {
    matcher.Command("a", "x", 0.0);
    const auto open = matcher.FindFor("a", "0_x_1");
    matcher.Answered(open, 1, 0.1);
    matcher.Command("a", "y", 0.2);
    matcher.Tick(10.0);
    EXPECT_EQ(Heard(), Lines{});
    matcher.Sent(open, "late", 20.0);
    matcher.Tick(21.0);
    EXPECT_EQ(Heard(), Lines{"a: x > late"});
}

TEST_F(ExchangeMatcherTests, ReplyOfNothing_EndsItsExchangeLikeAnyOther) {
    matcher.Command("a", "x", 0.0);
    matcher.Answered(matcher.FindFor("a", "0_x_1"), 0, 0.1);
    matcher.Command("a", "y", 0.2);
    EXPECT_EQ(Heard(), Lines{"a: x >"});
}

TEST_F(ExchangeMatcherTests, Unanswered_AreThoseOfWhichTheServerSaidNothing) {
    matcher.Command("a", "x", 0.0);
    matcher.Command("a", "y", 0.1);
    matcher.Command("b", "z", 0.2);
    Reply("a", "0_y_1", 0.3);
    ASSERT_EQ(matcher.Unanswered("a").size(), 1U);
    EXPECT_EQ(matcher.Unanswered("a")[0]->exchange.command, "x");
    EXPECT_EQ(matcher.Unanswered().size(), 2U);
    EXPECT_TRUE(matcher.Unanswered("c").empty());
}

TEST_F(ExchangeMatcherTests, FloodOnASilentServer_KeepsOnlyTheYoungest) {
    constexpr std::size_t kFlood = 25'000;
    for (std::size_t i = 0; i < kFlood; ++i) {
        matcher.Command("a", "x", 0.0);
    }
    EXPECT_EQ(heard.size() + matcher.Unanswered().size(), kFlood);
    EXPECT_LE(matcher.Unanswered().size(), 10'000U);
}

}  // namespace

}  // namespace emulator
