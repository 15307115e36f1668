#include "transcript/Transcript.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace emulator {

namespace {

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
    }
}

TEST(TranscriptTests, Line_IsTimeCommandReplies) {
    EXPECT_EQ(FormatTranscriptLine(1.5, "status", {"0_status_ \r"}), "1.500\tstatus\t0_status_ \\r");
    EXPECT_EQ(FormatTranscriptLine(0.0, "status", {}), "0.000\tstatus\t-");
    EXPECT_EQ(FormatTranscriptLine(0.0, "x", {"a", ""}), "0.000\tx\ta\t\\0");
}

TEST(TranscriptTests, Replay_GivesRepliesInTurnAndKeepsTheLast) {
    Replay replay("0.1\tstatus\ta\\r\r\n0.2\tlistprod\tb\n0.3\tstatus\tc\td\n\n0.4\tfind 9\t-\n");
    EXPECT_EQ(replay.Answer("status"), std::vector<std::string>{"a\r"});
    EXPECT_EQ(replay.Answer("status"), (std::vector<std::string>{"c", "d"}));
    EXPECT_EQ(replay.Answer("status"), (std::vector<std::string>{"c", "d"}));
    EXPECT_EQ(replay.Answer("listprod"), std::vector<std::string>{"b"});
    EXPECT_TRUE(replay.Answer("find 9").empty());
    EXPECT_TRUE(replay.Answer("unknown").empty());
}

TEST(TranscriptTests, WrongLines_AreNamedByTheirNumber) {
    for (const char* const text :
         {"0.1\tstatus\ta\nonly one field", "0.1\tstatus\ta\n0.2\tstatus\t\\q", "0.1\tx\ty\n0\tx\t\\x1"}) {
        try {
            Replay replay(text);
            FAIL() << text;
        } catch (const TranscriptError& error) {
            EXPECT_EQ(std::string(error.what()).substr(0, 7), "line 2:");
        }
    }
}

}  // namespace

}  // namespace emulator
