#include "base/Numbers.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

namespace {

std::string Fixed(double value, int decimals) {
    std::array<char, 400> buffer;
    const int length = FormatFixed(buffer, value, decimals);
    return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string Printf(double value, int decimals) {
    std::array<char, 400> buffer;
    const int length = std::snprintf(buffer.data(), buffer.size(), "%0.*f", decimals, value);
    return {buffer.data(), static_cast<std::size_t>(length)};
}

TEST(NumbersTests, FormatFixed_PrintsWhatPrintfPrints) {
    std::vector<double> values{0.0,
                               -0.0,
                               0.05,
                               0.15,
                               0.25,
                               0.5,
                               1.5,
                               2.5,
                               37.05,
                               62.5,
                               62.7,
                               99.995,
                               1e15,
                               1e300,
                               std::numeric_limits<double>::max(),
                               std::numeric_limits<double>::denorm_min(),
                               std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity()};
    for (int i = 0; i < 2000; ++i) {
        values.push_back(i * 0.0371 - 37.0);
    }
    for (const double value : values) {
        for (const int decimals : {0, 1, 2, 3, 6}) {
            EXPECT_EQ(Fixed(value, decimals), Printf(value, decimals));
        }
    }
    EXPECT_EQ(Fixed(std::nan(""), 1), "nan");
}

TEST(NumbersTests, FormatFixed_BufferTooSmall_SaysSo) {
    std::array<char, 3> buffer;
    EXPECT_EQ(FormatFixed(buffer, 37.5, 1), -1);
    EXPECT_EQ(FormatFixed(buffer, 7.5, 1), 3);
}

TEST(NumbersTests, FormatInteger_PrintsWhatPrintfPrints) {
    for (const int value : {0, 7, -1, 60000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        std::array<char, 16> buffer;
        const int length = FormatInteger(buffer, value);
        EXPECT_EQ(std::string(buffer.data(), static_cast<std::size_t>(length)), std::to_string(value));
    }
}

const std::vector<std::string> kAwkwardTexts{"",
                                             " ",
                                             "37",
                                             "37.5",
                                             "37.5 next",
                                             "+37.5",
                                             "-37.5",
                                             "+-3",
                                             "-+3",
                                             "--3",
                                             "-",
                                             "+",
                                             ".",
                                             ".5",
                                             "5.",
                                             "-.5",
                                             "e5",
                                             "1e",
                                             "1e+",
                                             "1e5",
                                             "1E-5",
                                             "1e400",
                                             "-1e400",
                                             "1e-400",
                                             "0.0000001e400",
                                             "100000e-400",
                                             "0e999",
                                             "0.0",
                                             "00012.50",
                                             "\t\n\v\f\r 3.25",
                                             "inf",
                                             "-inf",
                                             "infinity",
                                             "INFINITE",
                                             "nan",
                                             "-nan",
                                             "NaNny",
                                             "0x10",
                                             "-0x1.8p1",
                                             "0x",
                                             "0xg",
                                             "1,5",
                                             "3\r",
                                             "abc",
                                             "9999999999999999999999",
                                             "1_000",
                                             "\xC3\xA9",
                                             "1.7976931348623159e308",
                                             "4.9e-324",
                                             "2e-324"};

TEST(NumbersTests, ScanDouble_TakesWhatStrtodTakes) {
    for (const std::string& text : kAwkwardTexts) {
        SCOPED_TRACE(text);
        char* end = nullptr;
        const double expected = std::strtod(text.c_str(), &end);
        const ScannedDouble scanned = ScanDouble(text);
        EXPECT_EQ(scanned.length, end - text.c_str());
        if (std::isnan(expected)) {
            EXPECT_TRUE(std::isnan(scanned.value));
        } else {
            EXPECT_EQ(scanned.value, expected);
        }
    }
}

TEST(NumbersTests, ScanInteger_TakesWhatStrtolTakesAndStopsAtTheEndsOfInt) {
    std::vector<std::string> texts = kAwkwardTexts;
    texts.insert(texts.end(), {"2147483647", "2147483648", "-2147483648", "-2147483649", "007", " 12 34"});
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        char* end = nullptr;
        const long long expected = std::strtoll(text.c_str(), &end, 10);
        const ScannedInteger scanned = ScanInteger(text);
        EXPECT_EQ(scanned.length, end - text.c_str());
        EXPECT_EQ(scanned.value, std::min<long long>(std::max<long long>(expected, std::numeric_limits<int>::min()),
                                                     std::numeric_limits<int>::max()));
    }
}

TEST(NumbersTests, Parse_NoNumber_IsZero) {
    EXPECT_EQ(ParseDouble("x"), 0.0);
    EXPECT_EQ(ParseInteger("x"), 0);
    EXPECT_EQ(ParseDouble({}), 0.0);
    EXPECT_EQ(ParseInteger({}), 0);
}

TEST(NumbersTests, Parse_StopsAtTheEndOfTheView) { EXPECT_EQ(ParseDouble(std::string_view("37.567", 4)), 37.5); }

}  // namespace
