#include "base/Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::string Fixed(double value, int decimals) { return std::string(FormatFixed(value, decimals).view()); }

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
            EXPECT_EQ(Fixed(value, decimals), Printf(value, decimals)) << decimals << " decimals";
        }
    }
    EXPECT_EQ(Fixed(std::nan(""), 1), "nan");
}

TEST(NumbersTests, FormatFixed_LongestNumber_FitsWithAllDecimals) {
    const NumberText longest = FormatFixed(std::numeric_limits<double>::lowest(), kMaxDecimals);
    EXPECT_EQ(longest.length(), NumberText::kCapacity - 1);
    EXPECT_EQ(longest.view(), Printf(std::numeric_limits<double>::lowest(), kMaxDecimals));
    EXPECT_EQ(longest.c_str()[longest.length()], '\0');
}

TEST(NumbersTests, FormatInteger_PrintsWhatPrintfPrints) {
    for (const int value : {0, 7, -1, 60000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(FormatInteger(value).view(), std::to_string(value));
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
                                             "2e-324",
                                             "1e99999999999999999999",
                                             "1e-99999999999999999999",
                                             "-0",
                                             "-0x0",
                                             "0x-45",
                                             "-0x-5",
                                             "0x+5",
                                             "0x 5",
                                             "0x.",
                                             "0x.8",
                                             "0x.p1",
                                             "0x.-8",
                                             "0x1.",
                                             "0x1p",
                                             "0x1p+",
                                             "0x1p+-5",
                                             "-0x.8P+-1",
                                             "0x1e5",
                                             "0xinf",
                                             "0xnan",
                                             "0XAbCdEfp-3z",
                                             "0x1p-5000",
                                             "-0x1p-5000",
                                             "0x1p5000",
                                             "-0x1p5000",
                                             "0x0p5000",
                                             "0x1p1023",
                                             "0x1p1024",
                                             "0x0.00001p1043",
                                             "0x1p-1074",
                                             "0x1p-1076",
                                             "0xe00000000p-1110",
                                             "nan(",
                                             "nan(abc)",
                                             "nan(abc)1",
                                             "nan(a-c)",
                                             "in",
                                             "infin",
                                             "infinityx"};

/// The same bits, so that a zero has its sign too; which NaN it is does not matter.
bool IsSame(double a, double b) {
    return std::isnan(a) ? std::isnan(b) : std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

void ExpectAsStrtod(const std::string& text) {
    char* end = nullptr;
    const double expected = std::strtod(text.c_str(), &end);
    const ScannedDouble scanned = ScanDouble(text);
    EXPECT_EQ(scanned.length, end - text.c_str()) << text;
    EXPECT_PRED2(IsSame, scanned.value, expected) << text;
}

void ExpectAsStrtol(const std::string& text) {
    char* end = nullptr;
    const long long expected = std::strtoll(text.c_str(), &end, 10);
    const ScannedInteger scanned = ScanInteger(text);
    EXPECT_EQ(scanned.length, end - text.c_str()) << text;
    EXPECT_EQ(scanned.value, std::min<long long>(std::max<long long>(expected, std::numeric_limits<int>::min()),
                                                 std::numeric_limits<int>::max()))
        << text;
}

TEST(NumbersTests, ScanDouble_TakesWhatStrtodTakes) {
    for (const std::string& text : kAwkwardTexts) {
        ExpectAsStrtod(text);
    }
}

TEST(NumbersTests, ScanInteger_TakesWhatStrtolTakesAndStopsAtTheEndsOfInt) {
    std::vector<std::string> texts = kAwkwardTexts;
    texts.insert(texts.end(), {"2147483647", "2147483648", "-2147483648", "-2147483649", "007", " 12 34"});
    for (const std::string& text : texts) {
        ExpectAsStrtol(text);
    }
}

/// Texts by chance, the same in every run: std::mt19937 gives the same numbers everywhere, the distributions do not.
class RandomTexts {
 public:
    /// Pieces of numbers, put together in any order.
    std::string Pieces() {
        constexpr std::array<const char*, 33> kPieces{
            "0",  "1",        "9",    "5",     "a",     "f",      "x",  "X",   "p",   "P",     "e",
            "E",  ".",        "-",    "+",     " ",     "\t",     "n",  "i",   "(",   ")",     "_",
            "0x", "99999999", "e308", "e-320", "p1020", "p-1070", "1e", "nan", "inf", "inity", "nan("};
        std::string text;
        for (std::size_t count = 1 + Below(9); count > 0; --count) {
            text += kPieces[Below(kPieces.size())];
        }
        return text;
    }

    /// A decimal number, often one near an end of the range.
    std::string Decimal() { return Number("", "e", 30, "0123456789", -324, 308); }

    /// The same in hex. No more digits than a double has bits for: of longer ones glibc 2.36 rounds a few down that lie
    /// among the subnormal numbers above the middle between two of them.
    std::string Hex() { return Number("0x", "p", 7, "0123456789abcdefABCDEF", -1074, 1023); }

 private:
    std::size_t Below(std::size_t limit) { return m_numbers() % limit; }

    int Around(int middle, std::size_t distance) {
        return middle - static_cast<int>(distance) + static_cast<int>(Below(2 * distance));
    }

    std::string Digits(std::size_t limit, std::string_view digits) {
        std::string text;
        const bool zeros = Below(4) == 0;
        for (std::size_t count = Below(limit); count > 0; --count) {
            text += zeros ? '0' : digits[Below(digits.size())];
        }
        return text;
    }

    std::string Number(std::string_view prefix, std::string_view mark, std::size_t limit, std::string_view digits,
                       int smallest, int largest) {
        const std::array<int, 5> exponents{Around(0, 20), Around(smallest, 60), Around(largest, 60), Around(0, 4000),
                                           static_cast<int>(m_numbers())};
        std::string text = Below(5) == 0 ? "-" : "";
        text.append(prefix).append(Digits(limit, digits));
        if (Below(2) == 0) {
            text.append(".").append(Digits(limit, digits));
        }
        if (Below(4) != 0) {
            text.append(mark).append(std::to_string(exponents[Below(exponents.size())]));
        }
        return text;
    }

    std::mt19937 m_numbers{20261121};
};

TEST(NumbersTests, Scans_OfTextsByChance_TakeWhatStrtodAndStrtolTake) {
    constexpr int kRounds = 40000;
    RandomTexts texts;
    for (int i = 0; i < kRounds && !HasFailure(); ++i) {
        for (const std::string& text : {texts.Pieces(), texts.Decimal(), texts.Hex()}) {
            ExpectAsStrtod(text);
            ExpectAsStrtol(text);
        }
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
