// What the summary says about the channels' values.

#include "judge/Statistics.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

TEST(Statistics, ChannelMovedWhenTwoOfItsValuesDiffer) {
    Statistics statistics;
    statistics.AddTable({20.0, 5.0});
    statistics.AddTable({20.1, 5.0});
    EXPECT_EQ(statistics.Moved(), 1U);
    EXPECT_EQ(statistics.Tables(), 2U);
}

TEST(Statistics, ChannelThatCameBackToItsFirstValueMoved) {
    Statistics statistics;
    statistics.AddTable({20.0});
    statistics.AddTable({20.1});
    statistics.AddTable({20.0});
    EXPECT_EQ(statistics.Moved(), 1U);
}

TEST(Statistics, SilentChannelDidNotMove) {
    Statistics statistics;
    statistics.AddTable({kNoValue});
    statistics.AddTable({kNoValue});
    EXPECT_EQ(statistics.Moved(), 0U);
}

TEST(Statistics, GapBetweenTwoEqualValuesIsNoMove) {
    Statistics statistics;
    statistics.AddTable({20.0});
    statistics.AddTable({kNoValue});
    statistics.AddTable({20.0});
    EXPECT_EQ(statistics.Moved(), 0U);
}

}  // namespace
