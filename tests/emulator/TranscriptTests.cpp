#include "transcript/Transcript.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace emulator {

namespace {

/// What is wrong with a transcript; empty where nothing is.
std::string TranscriptComplaint(const std::string& text) {
    try {
        ReadTranscript(text);
        return "";
    } catch (const TranscriptError& error) {
        return error.what();
    }
}

TEST(TranscriptTests, AnyBytes_SurviveTheRoundTrip) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all.push_back(static_cast<char>(byte));
    }
    for (const std::string& bytes :
         {all, std::string(), std::string("-"), std::string("\\0"), std::string("0_x_1\r")}) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        const std::string text = Escape(bytes);
        EXPECT_EQ(Unescape(text), bytes);
        for (const char c : text) {
            EXPECT_TRUE(c >= ' ' && c <= '~') << int{c};
        }
        const auto read = ReadTranscript(FormatTranscriptLine({1.0, bytes, {{bytes, 0.5}}, 0}));
        ASSERT_EQ(read.size(), 1U);
        EXPECT_EQ(read[0].command, bytes);
        ASSERT_EQ(read[0].replies.size(), 1U);
        EXPECT_EQ(read[0].replies[0].datagram, bytes);
    }
}

TEST(TranscriptTests, Line_IsTimesCommandReplies) {
    EXPECT_EQ(FormatTranscriptLine({1.5, "status", {{"0_status_ \r", std::nullopt}}, 0}),
              "1.500\tstatus\t0_status_ \\r");
    EXPECT_EQ(FormatTranscriptLine({1.5, "status", {{"0_status_ \r", 0.25}}, 0}),
              "1.500 0.250000\tstatus\t0_status_ \\r");
    EXPECT_EQ(FormatTranscriptLine({0.0, "status", {}, 0}), "0.000\tstatus\t-");
    EXPECT_EQ(FormatTranscriptLine({0.0, "x", {{"a", 0.001}, {"", 0.002}}, 0}), "0.000 0.001000 0.002000\tx\ta\t\\0");
    EXPECT_EQ(FormatTranscriptLine({2.0, std::nullopt, {{"late\r", 0.0}}, 0}), "2.000 0.000000\t-\tlate\\r");
}

TEST(TranscriptTests, DelayBehindAnUnknownOne_IsNotTakenForIt) {
    EXPECT_EQ(FormatTranscriptLine({0.0, "x", {{"a", std::nullopt}, {"b", 0.5}}, 0}), "0.000\tx\ta\tb");
}

TEST(TranscriptTests, Read_GivesTimesCommandsAndReplies) {
    const auto read = ReadTranscript("12.345 0.002  0.25\tx\ta\\r\tb\r\n\n13\t-\tc\n14 2.5\ty\t-\n15 1\tz\ta\tb\n");
    ASSERT_EQ(read.size(), 4U);
    EXPECT_DOUBLE_EQ(read[0].seconds, 12.345);
    EXPECT_EQ(read[0].command, "x");
    EXPECT_EQ(read[0].line, 1);
    ASSERT_EQ(read[0].replies.size(), 2U);
    EXPECT_EQ(read[0].replies[0].datagram, "a\r");
    EXPECT_EQ(read[0].replies[0].delaySeconds, 0.002);
    EXPECT_EQ(read[0].replies[1].datagram, "b");
    EXPECT_EQ(read[0].replies[1].delaySeconds, 0.25);
    EXPECT_EQ(read[1].command, std::nullopt);
    EXPECT_EQ(read[1].line, 3);
    EXPECT_EQ(read[1].replies.at(0).delaySeconds, std::nullopt);
    EXPECT_EQ(read[2].command, "y");
    EXPECT_TRUE(read[2].replies.empty());  // and 2.5 s without an answer, as oko-host's trace has it
    EXPECT_EQ(read[3].replies.at(1).delaySeconds, std::nullopt);
}

TEST(TranscriptTests, WrongLines_AreNamedByTheirNumber) {
    for (const char* const text : {"0.1\tstatus\ta\nonly one field", "0.1\tstatus\ta\n0.2\tstatus\t\\q",
                                   "0.1\tx\ty\n0\tx\t\\x1", "0.1\tx\ty\n0\tx\t\\x1y", "0.1\tx\ty\n0\tx\t\\xyz",
                                   "0.1\tx\ty\n0\tx", "1\tx\ty\n1 2 3\tx\ty", "1\tx\ty\n1 2 3\tx\t-"}) {
        EXPECT_EQ(TranscriptComplaint(text).substr(0, 7), "line 2:") << text;
    }
}

TEST(TranscriptTests, TimesThatAreNone_AreRefused) {
    for (const char* const time :
         {"", " ", "x", "-1", "1 -1", "nan", "inf", "1 inf", "1e999", "1,5", "1s", "0x1", "1 2x"}) {
        EXPECT_NE(TranscriptComplaint(std::string(time) + "\tx\ty"), "") << time;
    }
    EXPECT_NE(TranscriptComplaint("-1\tx\ty").find("\"-1\" is negative"), std::string::npos)
        << TranscriptComplaint("-1\tx\ty");
    EXPECT_EQ(TranscriptComplaint("1e3 0.5\tx\ty"), "");
}

}  // namespace

}  // namespace emulator
