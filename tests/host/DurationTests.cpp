// Durations and numbers as people write them, and what they are told about those that cannot be read.

#include "text/Duration.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "text/Number.h"

namespace {

TEST(Duration, EveryUnitIsRead) {
    const std::vector<std::pair<const char*, double>> cases{{"500ms", 0.5},
                                                            {"10s", 10.0},
                                                            {"2m", 120.0},
                                                            {"2min", 120.0},
                                                            {"1h", 3600.0},
                                                            {"3d", 259200.0},
                                                            {"1h30m", 5400.0},
                                                            {"1 h 30 min", 5400.0},
                                                            {"1d2h3m4s5ms", 93784.005},
                                                            {"1.5min", 90.0},
                                                            {"0s", 0.0},
                                                            {"0", 0.0},
                                                            {"90", 90.0},
                                                            {"0.25", 0.25},
                                                            {" 10s ", 10.0},
                                                            {"1000000000s", 1e9}};
    for (const auto& [text, seconds] : cases) {
        const auto parsed = ParseDuration(text);
        ASSERT_TRUE(parsed) << text << ": " << parsed.error;
        EXPECT_DOUBLE_EQ(*parsed, seconds) << text;
        EXPECT_EQ(parsed.error, "") << text;
    }
}

TEST(Duration, OtherTextsAreRefusedWithExamples) {
    for (const char* text : {"",       " ",    "s",   "ten", "-5s", "5x",  "5 parsecs", "1h 30", "30m1h", "1h1h",
                             "2m2min", "1e3s", "nan", "inf", "5ss", "5s!", "0x10",      "+5s",   "-0",    "1..5s"}) {
        const auto parsed = ParseDuration(text);
        EXPECT_FALSE(parsed) << text;
        EXPECT_NE(parsed.error.find("is not a duration: write one such as 500ms, 10s, 2min, 1h30m or 3d"),
                  std::string::npos)
            << text << ": " << parsed.error;
    }
}

TEST(Duration, DecimalCommaIsAnsweredWithThePoint) {
    EXPECT_EQ(ParseDuration("1,5h").error, "\"1,5h\" has a decimal comma: write 1.5h, with a point");
    EXPECT_EQ(ParseDuration("0,5").error, "\"0,5\" has a decimal comma: write 0.5, with a point");
}

TEST(Duration, LongerThanTheClockIsRefused) {
    EXPECT_EQ(ParseDuration("1000000000.1s").error,
              "\"1000000000.1s\" is too long: the longest duration is 1000000000s");
    EXPECT_FALSE(ParseDuration("99999999999999999999d"));
}

TEST(Duration, IsWrittenForPeople) {
    const std::vector<std::pair<double, const char*>> cases{{0.0, "0 s"},
                                                            {0.0004, "0 s"},
                                                            {0.5, "500 ms"},
                                                            {0.9996, "1 s"},
                                                            {2.5, "2.5 s"},
                                                            {59.9996, "1 min"},
                                                            {60.4, "1 min"},
                                                            {90.0, "1 min 30 s"},
                                                            {5400.0, "1 h 30 min"},
                                                            {86400.0 * 3, "3 d"},
                                                            {3599.6, "1 h"},
                                                            {93784.0, "1 d 2 h 3 min 4 s"},
                                                            {-1.0, "-"},
                                                            {std::numeric_limits<double>::quiet_NaN(), "-"},
                                                            {std::numeric_limits<double>::infinity(), "-"}};
    for (const auto& [seconds, text] : cases) {
        EXPECT_EQ(FormatDuration(seconds), text) << seconds;
    }
}

TEST(Duration, WhatIsWrittenIsReadBack) {
    for (const double seconds : {0.0, 0.001, 0.999, 1.0, 59.999, 60.0, 3661.0, 90061.0, 1e9}) {
        const auto parsed = ParseDuration(FormatDuration(seconds));
        ASSERT_TRUE(parsed) << seconds;
        EXPECT_DOUBLE_EQ(*parsed, seconds);
    }
}

TEST(Number, FiniteNumbersAreRead) {
    const std::vector<std::pair<const char*, double>> cases{{"38.5", 38.5}, {"-1.5", -1.5}, {" 7 ", 7.0},
                                                            {".5", 0.5},    {"5e-1", 0.5},  {"0", 0.0}};
    for (const auto& [text, value] : cases) {
        const auto parsed = ParseNumber(text);
        ASSERT_TRUE(parsed) << text << ": " << parsed.error;
        EXPECT_EQ(*parsed, value) << text;
    }
}

TEST(Number, DecimalCommaIsAnsweredWithThePoint) {
    EXPECT_EQ(ParseNumber("38,5").error, "\"38,5\" has a decimal comma: write 38.5, with a point");
    EXPECT_EQ(ParseNumber("-0,25").error, "\"-0,25\" has a decimal comma: write -0.25, with a point");
}

TEST(Number, UnitBehindTheNumberIsNamed) {
    EXPECT_EQ(ParseNumber("38.5%").error, "\"38.5%\" has more than a number: write 38.5 alone");
    EXPECT_EQ(ParseNumber("7 vol").error, "\"7 vol\" has more than a number: write 7 alone");
}

TEST(Number, OtherTextsAreRefused) {
    for (const char* text : {"", "five", "nan", "inf", "-inf", "1,000.5", "1,2,3", "1.2.3", ",5", "5,", "--1"}) {
        EXPECT_EQ(ParseNumber(text).error, "\"" + std::string(text) + "\" is not a number: write one such as 38.5");
    }
    EXPECT_EQ(ParseNumber("1e999").error, "\"1e999\" is too large or too small a number");
}

TEST(Number, IsWrittenWithAPoint) {
    EXPECT_EQ(FormatShortest(38.5), "38.5");
    EXPECT_EQ(FormatShortest(0.1), "0.1");
    EXPECT_EQ(FormatFixed(6.2, 2), "6.20");
    EXPECT_EQ(FormatFixed(-0.125, 1), "-0.1");
    EXPECT_EQ(FormatFixed(std::numeric_limits<double>::max(), 2).size(), 312U);
    EXPECT_EQ(FormatFixed(std::numeric_limits<double>::quiet_NaN(), 2), "-");
}

}  // namespace
