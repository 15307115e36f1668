// What the summary says about the channels' values, with a clock that the test turns.

#include "judge/Statistics.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "MadeChannels.h"
#include "judge/AlarmRule.h"
#include "judge/Band.h"
#include "model/ChannelInfo.h"
#include "model/Reading.h"

namespace {

/// One channel that is read once a second.
class WatchedChannel {
 public:
    explicit WatchedChannel(const ChannelInfo& channel, const std::vector<AlarmRule>& rules = {})
        : m_statistics({channel}, rules) {}

    void Feed(std::optional<double> current, std::optional<double> target = 5.0) {
        m_statistics.Update({{current, target, ChannelState::None, false}}, SinceBegin(m_seconds));
        m_seconds += 1.0;
    }
    const Statistics& All() const { return m_statistics; }
    const ChannelStatistics& Channel() const { return m_statistics.Channels().front(); }

 private:
    Statistics m_statistics;
    double m_seconds = 0.0;
};

TEST(Statistics, ChannelMovedWhenTwoOfItsValuesDiffer) {
    Statistics statistics({Room(), Co2()});
    statistics.Update({{20.0, {}, {}, false}, {5.0, 5.0, {}, false}}, SinceBegin(0));
    statistics.Update({{20.1, {}, {}, false}, {5.0, 5.0, {}, false}}, SinceBegin(1));
    EXPECT_EQ(statistics.Moved(), 1U);
    EXPECT_EQ(statistics.Rounds(), 2U);
    EXPECT_TRUE(statistics.Channels()[0].moved);
    EXPECT_FALSE(statistics.Channels()[1].moved);
}

TEST(Statistics, ChannelThatCameBackToItsFirstValueMoved) {
    WatchedChannel watched(Room());
    watched.Feed(20.0);
    watched.Feed(20.1);
    watched.Feed(20.0);
    EXPECT_EQ(watched.All().Moved(), 1U);
}

TEST(Statistics, SilentChannelDidNotMove) {
    WatchedChannel watched(Room());
    watched.Feed({});
    watched.Feed({});
    EXPECT_EQ(watched.All().Moved(), 0U);
    EXPECT_EQ(watched.Channel().reads, 2U);
    EXPECT_EQ(watched.Channel().failedReads, 2U);
    EXPECT_EQ(watched.Channel().Values(), 0U);
    EXPECT_FALSE(watched.Channel().ShareInBand());
}

TEST(Statistics, GapBetweenTwoEqualValuesIsNoMove) {
    WatchedChannel watched(Room());
    watched.Feed(20.0);
    watched.Feed({});
    watched.Feed(20.0);
    EXPECT_EQ(watched.All().Moved(), 0U);
    EXPECT_EQ(watched.Channel().failedReads, 1U);
}

TEST(Statistics, SmallestMeanAndLargestAreOfTheValuesThatCame) {
    WatchedChannel watched(Room());
    for (const auto value : {std::optional<double>{}, std::optional(-3.0), std::optional<double>{}, std::optional(-9.0),
                             std::optional(-6.0)}) {
        watched.Feed(value);
    }
    EXPECT_EQ(watched.Channel().min, -9.0);
    EXPECT_EQ(watched.Channel().mean, -6.0);
    EXPECT_EQ(watched.Channel().max, -3.0);
    EXPECT_EQ(watched.Channel().Values(), 3U);
}

TEST(Statistics, MeanOfEqualValuesIsThatValueHoweverMany) {
    WatchedChannel watched(Room());
    for (int i = 0; i < 10'000; ++i) {
        watched.Feed(0.1);  // a sum of these is not quite a thousand
    }
    EXPECT_EQ(watched.Channel().mean, 0.1);
}

TEST(Statistics, ShareInBandIsOfTheTimeAndNotOfTheReads) {
    Statistics statistics({Co2()});
    statistics.Update({{5.0, 5.0, {}, false}}, SinceBegin(0));
    statistics.Update({{6.0, 5.0, {}, false}}, SinceBegin(30));
    statistics.Update({{5.5, 5.0, {}, false}}, SinceBegin(40));
    EXPECT_EQ(statistics.Channels()[0].judgedSeconds, 40.0);
    EXPECT_EQ(statistics.Channels()[0].ShareInBand(), 0.75);
}

TEST(Statistics, BandMovesWithTheTarget) {
    WatchedChannel watched(Co2());
    watched.Feed(5.0, 5.0);
    watched.Feed(5.0, 7.0);
    watched.Feed(5.0, 5.0);
    EXPECT_EQ(watched.Channel().ShareInBand(), 0.5);
}

TEST(Statistics, TargetThatDoesNotComeIsTheLastOneStill) {
    WatchedChannel watched(Co2());
    watched.Feed(5.0, 5.0);
    watched.Feed(5.0, {});
    watched.Feed(5.0, {});
    EXPECT_EQ(watched.Channel().judgedSeconds, 2.0);
    EXPECT_EQ(watched.Channel().ShareInBand(), 1.0);
}

TEST(Statistics, TimeWithoutDataIsNotJudged) {
    WatchedChannel watched(Co2());
    watched.Feed(5.0);
    watched.Feed(5.0);
    watched.Feed({});
    watched.Feed({});
    watched.Feed(6.0);
    watched.Feed(5.0);
    EXPECT_EQ(watched.Channel().judgedSeconds, 2.0);
    EXPECT_EQ(watched.Channel().ShareInBand(), 0.5);
}

TEST(Statistics, SensorHasABandWhenItsAlarmHasOne) {
    WatchedChannel without(Room());
    WatchedChannel with(Room(), {{0, Band{20.0, 25.0}, 0.0, {}, {}}});
    for (const double value : {21.0, 26.0, 21.0}) {
        without.Feed(value, {});
        with.Feed(value, {});
    }
    EXPECT_FALSE(without.Channel().ShareInBand());
    EXPECT_EQ(with.Channel().ShareInBand(), 0.5);
}

}  // namespace
