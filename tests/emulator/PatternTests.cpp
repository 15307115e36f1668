#include "faults/Pattern.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <random>
#include <string>
#include <string_view>

namespace emulator {

namespace {

TEST(PatternTests, Patterns_FitWholeCommands) {
    EXPECT_TRUE(FitsPattern("readcurval 9", "readcurval 9"));
    EXPECT_FALSE(FitsPattern("readcurval 9(0)", "readcurval 9"));
    EXPECT_TRUE(FitsPattern("readcurval 9(0)", "readcurval 9*"));
    EXPECT_TRUE(FitsPattern("readcurval 12(1)", "*(1)"));
    EXPECT_TRUE(FitsPattern("readcurval 12(1)", "read*12*"));
    EXPECT_TRUE(FitsPattern("", "*"));
    EXPECT_TRUE(FitsPattern("", ""));
    EXPECT_FALSE(FitsPattern("", "x"));
}

/// What a pattern means, said as plainly as it can be, however long it takes.
bool FitsBySaying(std::string_view command, std::string_view pattern) {
    if (pattern.empty()) {
        return command.empty();
    }
    if (pattern.front() != '*') {
        return command.starts_with(pattern.front()) && FitsBySaying(command.substr(1), pattern.substr(1));
    }
    return FitsBySaying(command, pattern.substr(1)) || (!command.empty() && FitsBySaying(command.substr(1), pattern));
}

TEST(PatternTests, SmallTexts_FitWhereThePlainMatcherSaysSo) {
    std::mt19937 random(7);
    const auto text = [&random](std::string_view alphabet, std::size_t longest) {
        std::string made(random() % (longest + 1), ' ');
        std::ranges::generate(made, [&] { return alphabet[random() % alphabet.size()]; });
        return made;
    };
    int fitting = 0;
    for (int i = 0; i < 20'000; ++i) {
        const std::string command = text("ab", 10);
        const std::string pattern = text("ab*", 7);
        const bool fits = FitsBySaying(command, pattern);
        ASSERT_EQ(FitsPattern(command, pattern), fits) << command << " by " << pattern;
        fitting += fits ? 1 : 0;
    }
    EXPECT_GT(fitting, 1000);
}

/// What does not fit, and takes the longest to find out.
struct Effort {
    Pattern pattern;
    std::string command;
};

/// How many times as much processor time the second takes as the first, each at its best of many tries in turn.
double TimesAsLong(const Effort& first, const Effort& second) {
    const auto taken = [](const Effort& effort) {
        const std::clock_t start = std::clock();
        EXPECT_FALSE(effort.pattern.Fits(effort.command));
        return static_cast<double>(std::clock() - start);
    };
    double ofFirst = taken(first);
    double ofSecond = taken(second);
    for (int i = 1; i < 20; ++i) {
        ofFirst = std::min(ofFirst, taken(first));
        ofSecond = std::min(ofSecond, taken(second));
    }
    return ofSecond / std::max(ofFirst, 1.0);  // of the clock's microseconds
}

TEST(PatternTests, ManyStarsAndALongCommand_TakeNoMoreThanTheirLengthsSay) {
    std::string stars = "*";
    for (int i = 0; i < 12; ++i) {
        stars += "aab*";
    }
    // No piece ends before the last "a", and each nearly fits at every character.
    for (const std::string& text : {stars, "*" + std::string(1000, 'a') + "b*"}) {
        const Pattern pattern(text);
        EXPECT_LT(TimesAsLong({pattern, std::string(4'000, 'a')}, {pattern, std::string(32'000, 'a')}), 8 * 8)
            << text.substr(0, 50);  // eight times the length
    }
    // A search that began anew at every character would take as many times as long as the piece is longer.
    const Pattern shortPiece("*" + std::string(100, 'a') + "b*");
    const Pattern longPiece("*" + std::string(6'400, 'a') + "b*");
    const std::string command(32'000, 'a');
    EXPECT_LT(TimesAsLong({shortPiece, command}, {longPiece, command}), 16);
}

}  // namespace

}  // namespace emulator
