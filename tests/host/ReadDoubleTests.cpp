// Numbers by the library's streams, for standard libraries that read no double otherwise: as std::from_chars reads
// them.

#include "text/ReadDouble.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace {

void ExpectAsFromChars(const std::string& text) {
    const char* const end = text.data() + text.size();
    for (const std::chars_format format : {std::chars_format::general, std::chars_format::fixed}) {
        double expected = -7.0;
        double value = -7.0;
        const auto right = std::from_chars(text.data(), end, expected, format);
        const auto result = ReadDoubleByStream(text.data(), end, value, format);
        EXPECT_EQ(result.ec, right.ec) << text;
        EXPECT_EQ(result.ptr - text.data(), right.ptr - text.data()) << text;
        EXPECT_EQ(value, expected) << text;
    }
}

TEST(ReadDoubleByStream, TakesWhatFromCharsTakes) {
    for (const char* const text : {"0",        "37",
                                   "37.5",     "-0.25",
                                   "1.",       ".5",
                                   "-.5",      "1e3",
                                   "1E-3",     "1e+3x",
                                   "1e",       "1e+",
                                   "2e5e5",    "",
                                   "-",        ".",
                                   "-.",       "+1",
                                   " 1",       "1 ",
                                   "1,5",      "e5",
                                   "x",        "--1",
                                   "1-",       "007",
                                   "0x10",     "123456789012345678901234567890",
                                   "4.9e-324", "1.7976931348623157e308",
                                   "1e999",    "-1e999",
                                   "0.1",      "24.018"}) {
        ExpectAsFromChars(text);
    }
}

TEST(ReadDoubleByStream, TextsByChance_AreReadAsFromCharsReadsThem) {
    std::mt19937 random(20);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts in every run
    constexpr std::string_view kCharacters = "0123456789.-+eE x,";
    for (int round = 0; round < 20'000; ++round) {
        std::string text;
        for (std::size_t length = random() % 9; text.size() < length;) {
            text.push_back(kCharacters[random() % kCharacters.size()]);
        }
        ExpectAsFromChars(text);
    }
}

}  // namespace
