#include "faults/Pattern.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
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

/// How long a pattern takes on a command, at its best of some tries.
std::chrono::nanoseconds Taken(const Pattern& pattern, const std::string& command) {
    auto best = std::chrono::nanoseconds::max();
    for (int i = 0; i < 7; ++i) {
        const auto start = std::chrono::steady_clock::now();
        const bool fits = pattern.Fits(command);
        best = std::min<std::chrono::nanoseconds>(best, std::chrono::steady_clock::now() - start);
        EXPECT_FALSE(fits);
    }
    return best;
}

TEST(PatternTests, ManyStarsAndALongCommand_TakeNoMoreThanTheirLengthsSay) {
    std::string stars = "*";
    for (int i = 0; i < 12; ++i) {
        stars += "aab*";
    }
    // No piece ends before the last "a", and each nearly fits at every character.
    for (const std::string& pattern :
         {stars, "*" + std::string(1000, 'a') + "b*", "*" + std::string(1000, 'a') + "b"}) {
        const auto shorter = Taken(Pattern(pattern), std::string(8'000, 'a'));
        const auto longer = Taken(Pattern(pattern), std::string(64'000, 'a'));
        EXPECT_LT(longer, 8 * 8 * shorter) << pattern.substr(0, 50);  // eight times the length
    }
    // A piece of eight times the length costs nothing more where a search from every character anew would cost eight
    // times as much.
    const auto shortPiece = Taken(Pattern("*" + std::string(500, 'a') + "b*"), std::string(64'000, 'a'));
    const auto longPiece = Taken(Pattern("*" + std::string(16'000, 'a') + "b*"), std::string(64'000, 'a'));
    EXPECT_LT(longPiece, 8 * shortPiece);
}

}  // namespace

}  // namespace emulator
