#include "link/Reply.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

TEST(ReplyTests, ResultCode_IsTheFirstCharacterAsADigit) {
    for (char digit = '0'; digit <= '9'; ++digit) {
        EXPECT_EQ(ResultCodeOf(std::string(1, digit) + "9_x_\r"), digit - '0');
    }
    for (const std::string_view reply : {"", "x", " 1", "-1_x_", "+1_x_", "_", "\r"}) {
        EXPECT_EQ(ResultCodeOf(reply), 0) << testing::PrintToString(reply);
    }
}

TEST(ReplyTests, Payload_BeginsDirectlyBehindTheSecondUnderscore) {
    struct Case {
        std::string_view reply;
        std::optional<std::size_t> position;
    };
    for (const Case& row : std::vector<Case>{{"0_listprod_7 8\r", 11},
                                             {"0_x_ 7\r", 4},
                                             {"0_x__7\r", 4},
                                             {"0_x_\r", {}},
                                             {"0_x_", {}},
                                             {"0_x", {}},
                                             {"0_x\r_7", {}},
                                             {"", {}},
                                             {"__7", 2},
                                             {"no separators", {}}}) {
        SCOPED_TRACE(row.reply);
        EXPECT_EQ(PayloadPosition(row.reply), row.position);
    }
}

TEST(ReplyTests, DropLineEnd_DropsOneCharacter) {
    EXPECT_EQ(DropLineEnd("1\r"), "1");
    EXPECT_EQ(DropLineEnd("1\n"), "1");
    EXPECT_EQ(DropLineEnd("1\r\n"), "1\r");
    EXPECT_EQ(DropLineEnd("1"), "1");
    EXPECT_EQ(DropLineEnd(""), "");
}

TEST(ReplyTests, Value_EndsAtABlankOrACarriageReturn) {
    struct Case {
        std::string_view reply;
        char mark;
        std::optional<double> value;
    };
    for (const Case& row : std::vector<Case>{{"0_readcurval 9_36.512\r", '3', 36.512},
                                             {"0_readcurval 9_36.512 and more\r", '3', 36.512},
                                             {"0_readcurval 9_36.512", '3', {}},
                                             {"0_readcurval 9_ 36.5\r", ' ', 0.0},
                                             {"0_readcurval 9_\r", '\0', {}},
                                             {"0_readcurval 9_", '\0', {}},
                                             {"0_readcurval 9_error\r", 'e', 0.0},
                                             {"0_readcurval 9_-1.5\r", '-', -1.5},
                                             {"0_readcurval 9_1,5\r", '1', 1.0},
                                             {"0_readcurval 9_nan\r", 'n', {}},
                                             {"0_readcurval 9_-NaN\r", '-', {}},
                                             {"0_readcurval 9_+inf 5\r", '+', {}},
                                             {"0_readcurval 9_1e999\r", '1', {}},
                                             {"", '\0', {}},
                                             {"garbage", '\0', {}},
                                             {"\r0_x_5\r", '\0', {}}}) {
        SCOPED_TRACE(row.reply);
        const ValueToken token = ParseValue(row.reply);
        EXPECT_EQ(token.mark, row.mark);
        EXPECT_EQ(token.value, row.value);
    }
}

std::vector<int> Integers(std::string_view reply) {
    std::vector<int> integers;
    EXPECT_EQ(ParseIntegerList(reply, [&](int value) { integers.push_back(value); }), ListOutcome::Complete);
    return integers;
}

TEST(ReplyTests, IntegerList_TakesEveryTokenOfThePayload) {
    struct Case {
        std::string_view reply;
        std::vector<int> integers;
    };
    for (const Case& row : std::vector<Case>{
             {"0_listconprod_9 12 15\r", {9, 12, 15}},
             {"0_listconprod_9 12 15", {9, 12, 15}},
             {"0_listconprod_  9   12 \r", {9, 12}},
             {"0_listconprod_\r", {}},
             {"0_listconprod_", {}},
             {"", {}},
             {"9 12 15", {}},
             {"0_listconprod 9", {}},
             {"0_listdev 0_0 1\r", {0, 1}},
             {"0_x_1234567\r", {1234567}},
             {"0_x_err 5\r", {0, 0, 0, 5}},  // each letter is a 0 of its own
             {"0_x_-1\r", {0, 1}},           // no signs: a minus is a letter
             {"0_x_1_2\r", {1, 2}},          // the underscore ends a number unseen
             {"0_x__1\r", {1}},
             {"0_x_9x8\r", {9, 8}},   // so does the x
             {"0_x_7\r8\r", {7, 8}},  // and even the carriage return
             {"0_x_7 \r8\r", {7}},
             {"0_x\r_7\r", {}},
         }) {
        SCOPED_TRACE(row.reply);
        EXPECT_EQ(Integers(row.reply), row.integers);
    }
}

TEST(ReplyTests, IntegerList_EightDigits_StopsTheReading) {
    std::vector<int> integers;
    EXPECT_EQ(ParseIntegerList("0_x_7 12345678 9\r", [&](int value) { integers.push_back(value); }),
              ListOutcome::NumberTooLong);
    EXPECT_EQ(integers, std::vector<int>{7});
}

TEST(ReplyTests, Buffer_IsZeroedAndHasASpareByteBehindItsCapacity) {
    Reply reply(kListReplySize);
    EXPECT_EQ(reply.capacity(), 1023);
    EXPECT_EQ(reply.data()[1023], '\0');
    EXPECT_FALSE(reply.IsAnswer());
    reply.m_nLength = -1;
    EXPECT_TRUE(reply.bytes().empty());
    EXPECT_FALSE(reply.IsAnswer());
    reply.m_nLength = 1;
    EXPECT_TRUE(reply.IsAnswer());
    EXPECT_EQ(Reply().capacity(), 64);
}

}  // namespace
