#include "core/RangeReply.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

TEST(RangeReplyTests, Number_IsTakenFromSevenCharactersOfThePayload) {
    EXPECT_EQ(ReadRangeEnd("0_readmin 9 0_25.5\r", 7.0), 25.5);
    EXPECT_EQ(ReadRangeEnd("0_readmin 9 0_25.5", 7.0), 25.5);
    EXPECT_EQ(ReadRangeEnd("0_readmin 9 0_123456789\r", 7.0), 1234567.0);
    EXPECT_EQ(ReadRangeEnd("0_readmin 9 0_-4\r", 7.0), -4.0);
}

TEST(RangeReplyTests, ResultCode_DoesNotMatter) {
    for (const char code : std::string_view("0123456789x ")) {
        EXPECT_EQ(ReadRangeEnd(std::string(1, code) + "_readmin 9 0_25.5\r", 7.0), 25.5) << code;
    }
}

TEST(RangeReplyTests, TextThatIsNoNumber_IsZero) {
    EXPECT_EQ(ReadRangeEnd("0_readmin 9 0_\r", 7.0), 0.0);
    EXPECT_EQ(ReadRangeEnd("0_readmin 9 0_x\r", 7.0), 0.0);
    EXPECT_EQ(ReadRangeEnd("0_readmin 9 0_ \r", 7.0), 0.0);
}

TEST(RangeReplyTests, MissingOrMarkedPayload_GivesTheDefault) {
    for (const std::string_view reply : {"", "0", "0_readmin 9 0", "0_readmin 9 0_", "0_readmin 9 0_NaN\r",
                                         "0_readmin 9 0_nan\r", "0_readmin 9 0_error\r", "garbage"}) {
        EXPECT_EQ(ReadRangeEnd(reply, 7.0), 7.0) << reply;
    }
}

TEST(RangeReplyTests, NumberThatIsNotFinite_GivesTheDefault) {
    for (const std::string_view payload :
         {"-nan", "+nan", " nan", " -NaN", "inf", "-inf", "INF", "infinity", "1e999", "-1e999", "nan(1)"}) {
        EXPECT_EQ(ReadRangeEnd("0_readmin 9 0_" + std::string(payload) + "\r", 7.0), 7.0) << payload;
    }
}

}  // namespace
