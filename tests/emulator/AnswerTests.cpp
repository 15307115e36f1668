#include "protocol/Answer.h"

#include <gtest/gtest.h>

namespace emulator {

namespace {

TEST(AnswerTests, Split_GivesTheParts) {
    const auto parts = SplitReply("2_readcurval 9(0)_36.5_7\r\r");
    ASSERT_TRUE(parts.has_value());
    EXPECT_EQ(parts->answer.code, 2);
    EXPECT_EQ(parts->echo, "readcurval 9(0)");
    EXPECT_EQ(parts->answer.payload, "36.5_7\r");
}

TEST(AnswerTests, Split_IsUndoneByFormat) {
    for (const char* const reply : {"0_x_1\r", "0__\r", "-1_x_\r", "12_x_ _\r"}) {
        const auto parts = SplitReply(reply);
        ASSERT_TRUE(parts.has_value()) << reply;
        EXPECT_EQ(FormatReply(parts->answer, parts->echo), reply);
    }
}

TEST(AnswerTests, WhatIsNotOfTheForm_IsLeftWhole) {
    for (const char* const reply : {"", "\r", "0_x_1", "0_x\r", "_x_1\r", "x_x_1\r", "0x_x_1\r", "07_x_1\r", "+1_x_1\r",
                                    "99999999999_x_1\r", " 0_x_1\r", "0_x_1\r\n"}) {
        EXPECT_FALSE(SplitReply(reply).has_value()) << reply;
    }
}

TEST(AnswerTests, Echo_IsTheWholeCommand) {
    EXPECT_TRUE(EchoesCommand("0_readcurval 9_1\r", "readcurval 9"));
    EXPECT_TRUE(EchoesCommand("garbage_x_", "x"));
    EXPECT_TRUE(EchoesCommand("0_a_b_1", "a_b"));
    EXPECT_FALSE(EchoesCommand("0_readcurval 9(0)_1\r", "readcurval 9"));
    EXPECT_FALSE(EchoesCommand("0_readcurval 9", "readcurval 9"));
    EXPECT_FALSE(EchoesCommand("readcurval 9", "readcurval 9"));
    EXPECT_FALSE(EchoesCommand("", ""));
}

}  // namespace

}  // namespace emulator
