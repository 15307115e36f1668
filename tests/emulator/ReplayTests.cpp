#include "transcript/Replay.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "protocol/Answer.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

Replay ReplayOf(std::string_view transcript, ReplayOptions options = {}) {
    return {ReadTranscript(transcript), std::move(options)};
}

ReplayOptions Missing(MissingReply missing) {
    ReplayOptions options;
    options.missing = missing;
    return options;
}

TEST(ReplayTests, RepliesComeInTurn_AndTheLastStays) {
    Replay replay = ReplayOf("0.1\tstatus\ta\\r\r\n0.2\tlistprod\tb\n0.3\tstatus\tc\td\n\n0.4\tfind 9\t-\n");
    EXPECT_EQ(BytesOf(replay.Answer("status")), std::vector<std::string>{"a\r"});
    EXPECT_EQ(BytesOf(replay.Answer("status")), (std::vector<std::string>{"c", "d"}));
    EXPECT_EQ(BytesOf(replay.Answer("status")), (std::vector<std::string>{"c", "d"}));
    EXPECT_EQ(BytesOf(replay.Answer("listprod")), std::vector<std::string>{"b"});
    EXPECT_TRUE(replay.Answer("find 9").empty());
}

TEST(ReplayTests, RecordedTiming_IsKept) {
    constexpr std::string_view kTranscript = "5 0.25 0.5\tx\ta\tb\n6\tx\tc\n";
    ReplayOptions recorded;
    recorded.timing = ReplayTiming::Recorded;
    Replay timed = ReplayOf(kTranscript, recorded);
    EXPECT_EQ(timed.Answer("x"), (Transmission{{"a", 250}, {"b", 500}}));
    EXPECT_EQ(timed.Answer("x"), (Transmission{{"c", 0}}));  // whose time is not known
    EXPECT_EQ(ReplayOf(kTranscript).Answer("x"), (Transmission{{"a", 0}, {"b", 0}}));
}

TEST(ReplayTests, AbsurdDelay_DoesNotOverflow) {
    ReplayOptions recorded;
    recorded.timing = ReplayTiming::Recorded;
    EXPECT_EQ(ReplayOf("0 1e300\tx\ta\n", recorded).Answer("x").at(0).delayMs, 1'000'000'000);
}

TEST(ReplayTests, WhatNobodyAskedFor_IsNoReply) {
    EXPECT_EQ(BytesOf(ReplayOf("0\t-\ta\n0\t\\x2D\tb\n").Answer("-")), std::vector<std::string>{"b"});
}

TEST(ReplayTests, UnknownCommand_IsAnsweredAsAskedFor) {
    EXPECT_EQ(BytesOf(ReplayOf("0\tx\ta").Answer("status")),
              std::vector<std::string>{"3_status_e not in the record\r"});
    EXPECT_TRUE(ReplayOf("0\tx\ta", Missing(MissingReply::Silent)).Answer("status").empty());
    ReplayOptions options = Missing(MissingReply::Model);
    options.model = [](const std::string& command) { return Answer{1, "model of " + command}; };
    EXPECT_EQ(BytesOf(ReplayOf("0\tx\ta", options).Answer("status")),
              std::vector<std::string>{"1_status_model of status\r"});
}

TEST(ReplayTests, UnknownCommand_IsWarnedOfOnce) {
    std::vector<std::string> warnings;
    ReplayOptions options = Missing(MissingReply::Silent);
    options.onMissing = [&](const std::string& command) { warnings.push_back(command); };
    Replay replay = ReplayOf("0\tx\ta", options);
    for (const char* const command : {"a", "x", "b", "a", "b"}) {
        replay.Answer(command);
    }
    EXPECT_EQ(warnings, (std::vector<std::string>{"a", "b"}));
}

TEST(ReplayTests, FloodOfUnknownCommands_IsWarnedOfUpToALimit) {
    std::size_t warnings = 0;
    ReplayOptions options = Missing(MissingReply::Silent);
    options.onMissing = [&](const std::string&) { ++warnings; };
    Replay replay = ReplayOf("0\tx\ta", options);
    for (int i = 0; i < 3000; ++i) {
        replay.Answer("noise " + std::to_string(i));
    }
    EXPECT_EQ(warnings, 1000U);
}

}  // namespace

}  // namespace emulator
