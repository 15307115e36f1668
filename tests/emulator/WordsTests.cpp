#include "text/Words.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "text/Number.h"

namespace {

TEST(WordsTests, Words_StandBetweenAnyBlanks) {
    EXPECT_EQ(SplitWords("freeze 9 0"), (std::vector<std::string_view>{"freeze", "9", "0"}));
    EXPECT_EQ(SplitWords("  a\t\tb \r\n"), (std::vector<std::string_view>{"a", "b"}));
    EXPECT_TRUE(SplitWords("").empty());
    EXPECT_TRUE(SplitWords(" \t").empty());
}

TEST(WordsTests, ControlCharactersInQuotes_CannotHideTheRestOfAMessage) {
    EXPECT_EQ(InQuotes("plain \xC3\xA4"), "\"plain \xC3\xA4\"");
    EXPECT_EQ(InQuotes(std::string_view("a\0b\r\x7F", 5)), "\"a\\x00b\\x0D\\x7F\"");
}

TEST(WordsTests, PlainNumbers_HaveNoExponent) {
    EXPECT_EQ(FormatPlain(1e9), "1000000000");
    EXPECT_EQ(FormatPlain(-0.001), "-0.001");
    EXPECT_EQ(FormatPlain(38.5), "38.5");
    EXPECT_EQ(FormatPlain(5e-324).size(), 326U);
}

}  // namespace
