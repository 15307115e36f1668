// What is kept in memory of the last days, and how it is thinned for the eye.

#include "keep/History.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "model/Reading.h"
#include "text/Json.h"

namespace {

constexpr std::int64_t kStart = 1'763'760'000'000;
constexpr std::int64_t kForever = std::numeric_limits<std::int64_t>::max();

Reading Value(double current, std::optional<double> target = std::nullopt) {
    return {current, target, ChannelState::Within, false};
}
Reading NoAnswer() { return {std::nullopt, std::nullopt, ChannelState::NoAnswer, false}; }

/// One channel, a row a second, with these values; NaN is no answer.
History OneChannel(const std::vector<double>& values) {
    History history(1, 1.0);
    for (std::size_t i = 0; i < values.size(); ++i) {
        history.Add(kStart + static_cast<std::int64_t>(i) * 1000,
                    {std::isnan(values[i]) ? NoAnswer() : Value(values[i], values[i] + 1.0)});
    }
    return history;
}

std::string Text(const std::vector<float>& numbers) {
    std::string text;
    for (const float number : numbers) {
        AppendJson(text += text.empty() ? "" : " ", number);
    }
    return text;
}

std::vector<std::int64_t> SecondsOf(const HistoryTable& table) {
    std::vector<std::int64_t> seconds;
    std::ranges::transform(table.utcMs, std::back_inserter(seconds),
                           [](std::int64_t utcMs) { return (utcMs - kStart) / 1000; });
    return seconds;
}

TEST(History, RowsComeBackAsTheDeviceToldThem) {
    const HistoryTable table = OneChannel({37.3, 37.01, NAN, 0.0, 4.55, 1234.567}).View(0, kForever).Rows();
    ASSERT_EQ(table.channels.size(), 1U);
    EXPECT_EQ(Text(table.channels[0].current), "37.3 37.01 null 0 4.55 1234.567");
    EXPECT_EQ(Text(table.channels[0].target), "38.3 38.01 null 1 5.55 1235.567");
    EXPECT_EQ(SecondsOf(table), (std::vector<std::int64_t>{0, 1, 2, 3, 4, 5}));
}

TEST(History, NumbersThatNoFloatHoldsAreNoValue) {
    const HistoryTable table = OneChannel({1e300, -1e300, 5.0}).View(0, kForever).Rows();
    EXPECT_EQ(Text(table.channels[0].current), "null null 5");
}

TEST(History, ViewHasTheRowsFromItsBeginningToBeforeItsEnd) {
    const History history = OneChannel({0, 1, 2, 3, 4, 5, 6, 7});
    EXPECT_EQ(Text(history.View(kStart + 2000, kStart + 5000).Rows().channels[0].current), "2 3 4");
    EXPECT_EQ(Text(history.View(kStart + 1999, kStart + 5001).Rows().channels[0].current), "2 3 4 5");
    EXPECT_EQ(history.View(kStart + 8000, kForever).Size(), 0U);
    EXPECT_EQ(history.View(kStart + 5000, kStart + 2000).Size(), 0U);
    EXPECT_EQ(History(1, 1.0).View(0, kForever).Rows().utcMs.size(), 0U);
}

TEST(History, RowsOlderThan72HoursAreForgotten) {
    History history(1, 60.0);
    constexpr std::int64_t kMinutes = std::int64_t{72} * 60;
    for (std::int64_t minute = 0; minute < 2 * kMinutes; ++minute) {
        history.Add(kStart + minute * 60'000, {Value(static_cast<double>(minute))});
    }
    const HistoryTable table = history.View(0, kForever).Rows();
    ASSERT_EQ(table.utcMs.size(), static_cast<std::size_t>(kMinutes));
    EXPECT_EQ(table.channels[0].current.front(), static_cast<float>(kMinutes));
    EXPECT_EQ(table.channels[0].current.back(), static_cast<float>(2 * kMinutes - 1));
}

TEST(History, MoreRowsThanItsBoundPushTheOldestOut) {
    History history(2, 0.001, 5000);
    for (int i = 0; i < 12'345; ++i) {
        history.Add(kStart + i, {Value(i), Value(-i)});
    }
    const HistoryTable table = history.View(0, kForever).Rows();
    ASSERT_EQ(history.Size(), 5000U);
    ASSERT_EQ(table.utcMs.size(), 5000U);
    for (std::size_t i = 0; i < 5000; ++i) {
        ASSERT_EQ(table.utcMs[i], kStart + 7345 + static_cast<std::int64_t>(i));
        ASSERT_EQ(table.channels[0].current[i], static_cast<float>(7345 + i));
        ASSERT_EQ(table.channels[1].current[i], -static_cast<float>(7345 + i));
    }
}

TEST(History, ClockThatIsSetBackLeavesTheOrder) {
    History history(1, 1.0);
    history.Add(kStart, {Value(1)});
    history.Add(kStart + 1000, {Value(2)});
    history.Add(kStart - 3'600'000, {Value(3)});
    history.Add(kStart - 3'599'000, {Value(4)});
    history.Add(kStart + 2000, {Value(5)});
    const HistoryTable table = history.View(kStart, kForever).Rows();
    EXPECT_EQ(Text(table.channels[0].current), "1 2 3 4 5");
    EXPECT_TRUE(std::ranges::is_sorted(table.utcMs));
}

TEST(History, ViewStaysAsItWasWhileRowsFollow) {
    History history = OneChannel({0, 1, 2});
    const HistoryView view = history.View(0, kForever);
    for (int i = 3; i < 3000; ++i) {
        history.Add(kStart + i * 1000, {Value(99)});
    }
    EXPECT_EQ(Text(view.Rows().channels[0].current), "0 1 2");
}

TEST(History, TimeWithoutRowsIsARowWithoutValues) {
    History history(1, 1.0);
    history.Add(kStart, {Value(1, 2)});
    history.Add(kStart + 9000, {Value(3, 4)});    // answered slowly
    history.Add(kStart + 69'000, {Value(5, 6)});  // the computer slept
    const HistoryTable table = history.View(0, kForever).Rows();
    EXPECT_EQ(Text(table.channels[0].current), "1 3 null 5");
    EXPECT_EQ(Text(table.channels[0].target), "2 4 null 6");
    EXPECT_EQ(SecondsOf(table), (std::vector<std::int64_t>{0, 9, 39, 69}));

    History slow(1, 60.0);
    slow.Add(kStart, {Value(1)});
    slow.Add(kStart + 60'000, {Value(2)});
    EXPECT_EQ(Text(slow.View(0, kForever).Rows().channels[0].current), "1 2");
}

TEST(History, FewRowsAreNotThinned) {
    const HistoryView view = OneChannel({0, 5, 2, 9}).View(0, kForever);
    EXPECT_EQ(Text(view.Thinned(4).channels[0].current), "0 5 2 9");
}

TEST(History, ThinnedRowsKeepEachSpansSmallestAndLargestInTheirOrder) {
    const HistoryTable table = OneChannel({5, 1, 9, 5, 5, 5, 8, 2, 5, 5}).View(0, kForever).Thinned(6);
    EXPECT_EQ(Text(table.channels[0].current), "1 1 9 8 8 2");
    EXPECT_EQ(Text(table.channels[0].target), "6 6 6 6 6 6");
    EXPECT_EQ(SecondsOf(table), (std::vector<std::int64_t>{0, 2, 4, 5, 7, 9}));
}

TEST(History, ThinnedRowsLoseNoExtremeWhateverTheirNumber) {
    std::vector<double> values(10'000, 37.0);
    for (std::size_t i = 17; i < values.size(); i += 97) {
        values[i] = i % 2 == 0 ? 30.0 + static_cast<double>(i) * 1e-3 : 40.0 + static_cast<double>(i) * 1e-3;
    }
    const History history = OneChannel(values);
    const auto [smallest, largest] = std::ranges::minmax(values);
    for (const std::size_t points : {1U, 2U, 3U, 10U, 100U, 999U, 5000U, 9999U}) {
        const HistoryTable table = history.View(0, kForever).Thinned(points);
        EXPECT_LE(table.utcMs.size(), std::max<std::size_t>(points, 3));
        const auto& column = table.channels[0].current;
        EXPECT_EQ(std::ranges::min(column), static_cast<float>(smallest)) << points;
        EXPECT_EQ(std::ranges::max(column), static_cast<float>(largest)) << points;
        EXPECT_TRUE(std::ranges::is_sorted(table.utcMs)) << points;
        EXPECT_EQ(table.utcMs.front(), kStart);
        EXPECT_EQ(table.utcMs.back(), kStart + 9'999'000);
    }
}

TEST(History, GapStaysAGapWhenThinned) {
    std::vector<double> values(900, 37.0);
    values[450] = NAN;
    EXPECT_EQ(Text(OneChannel(values).View(0, kForever).Thinned(9).channels[0].current),
              "37 37 37 37 null 37 37 37 37");

    std::vector<double> longGap(900, 37.0);
    std::fill(longGap.begin() + 300, longGap.begin() + 600, NAN);
    EXPECT_EQ(Text(OneChannel(longGap).View(0, kForever).Thinned(9).channels[0].current),
              "37 37 37 null null null 37 37 37");
}

TEST(History, GapOfOneChannelIsNoneOfTheOthersWhenThinned) {
    History history(2, 1.0);
    for (int i = 0; i < 100; ++i) {
        history.Add(kStart + i * 1000, {Value(i, 1), i == 50 ? NoAnswer() : Value(100 - i, 2)});
    }
    const HistoryTable table = history.View(0, kForever).Thinned(3);
    EXPECT_EQ(Text(table.channels[0].current), "0 0 99");
    EXPECT_EQ(Text(table.channels[1].current), "100 null 1");
    EXPECT_EQ(Text(table.channels[1].target), "2 null 2");
}

TEST(History, TimeWithoutRowsStaysAGapWhenThinned) {
    History history(1, 1.0);
    for (int i = 0; i < 100; ++i) {
        history.Add(kStart + i * 1000 + (i < 50 ? 0 : 3'600'000), {Value(i)});
    }
    EXPECT_EQ(Text(history.View(0, kForever).Thinned(3).channels[0].current), "0 null 99");
}

}  // namespace
