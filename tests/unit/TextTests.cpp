#include "base/Text.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace {

TEST(TextTests, Append_WhatDoesNotFit_IsCutBeforeTheTerminator) {
    BoundedText<char, 8> text("1234");
    EXPECT_FALSE(text.IsCut());
    text.Append("5678");
    EXPECT_EQ(text.view(), "1234567");
    EXPECT_EQ(text.c_str()[7], '\0');
    EXPECT_TRUE(text.IsCut());
    text.Append("");
    EXPECT_TRUE(text.IsCut());
    EXPECT_EQ(text.Append("9").length(), 7U);
}

TEST(TextTests, Append_ExactFit_IsNotCut) { EXPECT_FALSE((BoundedText<char, 5>("1234").IsCut())); }

TEST(TextTests, AppendBytes_EveryByte_BecomesTheCharacterOfItsNumber) {
    BoundedText<wchar_t, 300> text;
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        bytes.push_back(static_cast<char>(byte));
    }
    text.AppendBytes(bytes);
    ASSERT_EQ(text.length(), 255U);
    for (std::size_t i = 0; i < 255; ++i) {
        EXPECT_EQ(text.view()[i], static_cast<wchar_t>(i + 1)) << i;
    }
}

TEST(TextTests, LogLine_Holds511Characters) {
    LogLine line;
    line.AppendBytes(std::string(2000, 'x'));
    EXPECT_EQ(line.length(), 511U);
}

}  // namespace
