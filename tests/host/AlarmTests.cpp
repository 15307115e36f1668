// When an alarm goes on and off, with a clock that the test turns.

#include "judge/Alarm.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "MadeChannels.h"
#include "judge/AlarmRule.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "model/Snapshot.h"

namespace {

constexpr std::nullopt_t kMissing = std::nullopt;

/// Ten seconds into the program, and well into the world's time.
Moment At(double seconds) { return {1'700'000'000'000 + static_cast<std::int64_t>(seconds * 1000.0), 10.0 + seconds}; }

/// One alarm on CO2, and the moments at which it is fed.
class Watched {
 public:
    explicit Watched(const std::string& text)
        : m_alarm(ResolveAlarms({*ParseAlarm(text)}, {Co2()})->front(), Co2(), At(0.0)) {}

    /// "on: TEXT", "off: TEXT" or nothing.
    std::string Feed(double seconds, std::optional<double> current, std::optional<double> target = 5.0) {
        const auto change = m_alarm.Update({current, target, ChannelState::None, false}, At(seconds));
        if (!change) {
            return {};
        }
        EXPECT_EQ(change->event.channel, "CO2");
        EXPECT_EQ(change->event.when.utcMs, At(seconds).utcMs);
        EXPECT_EQ(change->status.phase == AlarmPhase::On, change->event.kind == EventKind::AlarmOn);
        return (change->event.kind == EventKind::AlarmOn ? "on: " : "off: ") + change->event.text;
    }

    AlarmStatus Status() const { return m_alarm.Status(); }
    AlarmPhase Phase() const { return Status().phase; }

 private:
    BandAlarm m_alarm;
};

TEST(BandAlarm, GoesOnAfterItsDelayOutside) {
    Watched watched("CO2: 4.5..5.5 for 2m");
    EXPECT_EQ(watched.Feed(0, 5.0), "");
    EXPECT_EQ(watched.Feed(1, 6.0), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Pending);
    EXPECT_EQ(watched.Status().reason, "CO2 is 6.00 %, above 5.50 %");
    EXPECT_EQ(watched.Feed(60, 6.1), "");
    EXPECT_EQ(watched.Feed(120.9, 6.1), "");
    EXPECT_EQ(watched.Feed(121, 6.2), "on: CO2 is 6.20 %, above 5.50 %, for 2 min");
    EXPECT_EQ(watched.Phase(), AlarmPhase::On);
    EXPECT_EQ(watched.Status().since->seconds, At(1).seconds);
    EXPECT_EQ(watched.Status().low, 4.5);
    EXPECT_EQ(watched.Status().high, 5.5);
    EXPECT_EQ(watched.Feed(122, 6.3), "");
    EXPECT_EQ(watched.Status().reason, "CO2 is 6.30 %, above 5.50 %");
}

TEST(BandAlarm, WithoutDelayGoesOnAtOnce) {
    Watched watched("CO2: 4.5..5.5");
    watched.Feed(0, 5.0);
    EXPECT_EQ(watched.Feed(1, 4.0), "on: CO2 is 4.00 %, below 4.50 %");
}

TEST(BandAlarm, DelayOfManyShortRoundsIsNotMissedByRounding) {
    Watched watched("CO2: 4.5..5.5 for 9s");  // the thirty rounds add up to a little less
    watched.Feed(0, 5.0);
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(watched.Feed(0.3 * (i + 1), 6.0), "");
    }
    EXPECT_NE(watched.Feed(0.3 * 31, 6.0), "");
}

TEST(BandAlarm, ValueThatComesBackInTimeStartsTheDelayAnew) {
    Watched watched("CO2: 4.5..5.5 for 10s");
    watched.Feed(0, 5.0);
    watched.Feed(1, 6.0);
    watched.Feed(9, 6.0);
    EXPECT_EQ(watched.Feed(10, 5.5), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Watching);
    EXPECT_EQ(watched.Status().reason, "");
    EXPECT_FALSE(watched.Status().since);
    EXPECT_EQ(watched.Feed(11, 6.0), "");
    EXPECT_EQ(watched.Feed(20, 6.0), "");
    EXPECT_NE(watched.Feed(21, 6.0), "");
}

TEST(BandAlarm, CrossingTheBandIsStillOutside) {
    Watched watched("CO2: 4.5..5.5 for 10s");
    watched.Feed(0, 5.0);
    watched.Feed(1, 6.0);
    EXPECT_EQ(watched.Feed(11, 4.0), "on: CO2 is 4.00 %, below 4.50 %, for 10 s");
}

TEST(BandAlarm, GoesOffWhenInsideByATwentiethOfTheBand) {
    Watched watched("CO2: 4..6");
    watched.Feed(0, 5.0);
    watched.Feed(1, 7.0);
    EXPECT_EQ(watched.Feed(2, 6.0), "");
    EXPECT_EQ(watched.Feed(3, 5.91), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::On);
    EXPECT_EQ(watched.Status().reason, "CO2 is 5.91 %, within 4.00 to 6.00 %, but not yet well inside");
    EXPECT_EQ(watched.Feed(61, 5.9), "off: CO2 is 5.90 %, within 4.00 to 6.00 % again, after 1 min");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Watching);
}

TEST(BandAlarm, GoesOffByTheHysteresisAskedForFromBothSides) {
    Watched watched("CO2: 4..6 hysteresis 0.5");
    watched.Feed(0, 5.0);
    watched.Feed(1, 3.0);
    EXPECT_EQ(watched.Feed(2, 4.49), "");
    EXPECT_NE(watched.Feed(3, 4.5), "");
    watched.Feed(4, 7.0);
    EXPECT_EQ(watched.Feed(5, 5.51), "");
    EXPECT_NE(watched.Feed(6, 5.5), "");
}

TEST(BandAlarm, GoesOnAgainAfterItWentOff) {
    Watched watched("CO2: 4..6 for 5s");
    watched.Feed(0, 5.0);
    watched.Feed(1, 7.0);
    EXPECT_NE(watched.Feed(6, 7.0), "");
    EXPECT_NE(watched.Feed(7, 5.0), "");
    EXPECT_EQ(watched.Feed(8, 7.0), "");
    EXPECT_EQ(watched.Feed(13, 7.0), "on: CO2 is 7.00 %, above 6.00 %, for 5 s");
}

TEST(BandAlarm, WarmUpIsNoAlarm) {
    Watched watched("CO2: 4.5..5.5 for 2m");
    for (int second = 0; second < 10'000; second += 100) {
        EXPECT_EQ(watched.Feed(second, 0.1), "");
        EXPECT_EQ(watched.Phase(), AlarmPhase::Unarmed);
    }
    watched.Feed(10'000, 4.5);
    EXPECT_EQ(watched.Phase(), AlarmPhase::Watching);
}

TEST(BandAlarm, ValueThatNeverSettlesIsAnAlarmAfterAll) {
    Watched watched("CO2: 4.5..5.5 for 2m within 1h");
    EXPECT_EQ(watched.Feed(3599, 3.0), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Unarmed);
    EXPECT_EQ(watched.Feed(3600, 3.0), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Pending);
    EXPECT_EQ(watched.Feed(3720, 3.2), "on: CO2 is 3.20 %, below 4.50 %, for 2 min; it has not settled within 1 h");
    EXPECT_EQ(watched.Feed(3800, 5.0), "off: CO2 is 5.00 %, within 4.50 to 5.50 % again, after 3 min 20 s");
}

TEST(BandAlarm, MovingBandFollowsTheTarget) {
    Watched watched("CO2");
    watched.Feed(0, 5.0, 5.0);
    EXPECT_EQ(watched.Status().low, 4.5);
    EXPECT_EQ(watched.Status().high, 5.5);
    EXPECT_EQ(watched.Feed(1, 5.6, 7.0), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Unarmed);
    EXPECT_EQ(watched.Status().low, 6.5);
    EXPECT_EQ(watched.Feed(2, 6.6, 7.0), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Watching);
    EXPECT_EQ(watched.Feed(3, 6.4, 7.0), "on: CO2 is 6.40 %, below 6.50 %");
}

TEST(BandAlarm, NewTargetEndsTheAlarmOfTheOldOne) {
    Watched watched("CO2");
    watched.Feed(0, 5.0, 5.0);
    EXPECT_NE(watched.Feed(1, 6.0, 5.0), "");
    EXPECT_EQ(watched.Feed(2, 6.0, 8.0), "off: CO2 has a new target, 8.00 %: watched again once it is reached");
    EXPECT_EQ(watched.Feed(3, 6.0, 8.0), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Unarmed);
}

TEST(BandAlarm, NewTargetThatIsReachedAlreadyIsWatchedAtOnce) {
    Watched watched("CO2");
    watched.Feed(0, 5.0, 5.0);
    EXPECT_NE(watched.Feed(1, 6.0, 5.0), "");
    EXPECT_EQ(watched.Feed(2, 6.0, 6.0), "off: CO2 is 6.00 %, within 5.50 to 6.50 % again, after 1 s");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Watching);
}

TEST(BandAlarm, NewTargetStartsTheTimeToSettleAnew) {
    Watched watched("CO2 within 1m");
    watched.Feed(0, 5.0, 5.0);
    watched.Feed(100, 5.0, 8.0);
    EXPECT_EQ(watched.Feed(159, 5.0, 8.0), "");
    EXPECT_EQ(watched.Feed(160, 5.0, 8.0), "on: CO2 is 5.00 %, below 7.50 %; it has not settled within 1 min");
}

TEST(BandAlarm, FixedBandDoesNotCareForTheTarget) {
    Watched watched("CO2: 4.5..5.5");
    watched.Feed(0, 5.0, 5.0);
    EXPECT_NE(watched.Feed(1, 7.0, 7.0), "");
}

TEST(BandAlarm, TargetThatDoesNotComeIsTheLastOneStill) {
    Watched watched("CO2");
    watched.Feed(0, 5.0, 5.0);
    EXPECT_EQ(watched.Feed(1, 5.0, kMissing), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Watching);
    EXPECT_NE(watched.Feed(2, 6.0, kMissing), "");
    EXPECT_EQ(watched.Feed(3, 6.0, 5.0), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::On);
}

TEST(BandAlarm, WithoutAnyTargetNothingIsJudged) {
    Watched watched("CO2 within 1m");
    EXPECT_EQ(watched.Feed(0, 6.0, kMissing), "");
    EXPECT_EQ(watched.Feed(100, 6.0, kMissing), "");
    EXPECT_EQ(watched.Status().reason, "");
}

TEST(BandAlarm, MissingDataCountsNeitherWay) {
    Watched watched("CO2: 4.5..5.5 for 10s");
    watched.Feed(0, 5.0);
    watched.Feed(1, 6.0);
    watched.Feed(6, 6.0);
    EXPECT_EQ(watched.Feed(7, kMissing), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Pending);
    EXPECT_EQ(watched.Status().reason, "CO2 was 6.00 %, above 5.50 %, when it last gave a value");
    EXPECT_EQ(watched.Feed(100, kMissing), "");
    EXPECT_EQ(watched.Feed(101, 6.0), "");
    EXPECT_EQ(watched.Feed(105, 6.0), "");
    EXPECT_EQ(watched.Feed(106, 6.0), "on: CO2 is 6.00 %, above 5.50 %, for 10 s");
}

TEST(BandAlarm, MissingDataEndsNoAlarm) {
    Watched watched("CO2: 4.5..5.5");
    watched.Feed(0, 5.0);
    watched.Feed(1, 6.0);
    EXPECT_EQ(watched.Feed(2, kMissing), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::On);
    EXPECT_NE(watched.Feed(3, 5.0), "");
}

TEST(BandAlarm, MissingDataArmsNothing) {
    Watched watched("CO2: 4.5..5.5");
    EXPECT_EQ(watched.Feed(0, kMissing), "");
    EXPECT_EQ(watched.Feed(1, 3.0), "");
    EXPECT_EQ(watched.Phase(), AlarmPhase::Unarmed);
}

TEST(BandAlarm, ReasonTellsTheValueFromItsLimit) {
    Watched watched("CO2: 4.5..5.5");
    watched.Feed(0, 5.0);
    EXPECT_EQ(watched.Feed(1, 5.5004), "on: CO2 is 5.5004 %, above 5.5000 %");
}

TEST(MissingDataAlarm, GoesOnWhenTheLastValueIsTooOld) {
    MissingDataAlarm alarm(0, Room(), 30.0, At(0));
    const Reading value{21.0, {}, ChannelState::None, false};
    EXPECT_FALSE(alarm.Update(value, At(1)));
    EXPECT_FALSE(alarm.Update({}, At(2)));
    EXPECT_EQ(alarm.Status().phase, AlarmPhase::Pending);
    EXPECT_EQ(alarm.Status().reason, "Room has given no value for 1 s");
    EXPECT_EQ(alarm.Status().since->seconds, At(1).seconds);
    EXPECT_FALSE(alarm.Update({}, At(30.9)));
    const auto on = alarm.Update({}, At(31));
    ASSERT_TRUE(on);
    EXPECT_EQ(on->event.kind, EventKind::AlarmOn);
    EXPECT_EQ(on->event.channel, "Room");
    EXPECT_EQ(on->event.text, "Room has given no value for 30 s");
    EXPECT_EQ(on->status.kind, AlarmKind::MissingData);
    EXPECT_FALSE(alarm.Update({}, At(60)));
    EXPECT_EQ(alarm.Status().reason, "Room has given no value for 59 s");
    const auto off = alarm.Update(value, At(61));
    ASSERT_TRUE(off);
    EXPECT_EQ(off->event.kind, EventKind::AlarmOff);
    EXPECT_EQ(off->event.text, "Room gives values again, after 1 min");
    EXPECT_EQ(alarm.Status().phase, AlarmPhase::Watching);
    EXPECT_EQ(alarm.Status().reason, "");
}

TEST(MissingDataAlarm, ChannelThatNeverAnsweredIsMissingSinceTheStart) {
    MissingDataAlarm alarm(0, Room(), 30.0, At(0));
    EXPECT_FALSE(alarm.Update({}, At(29)));
    EXPECT_TRUE(alarm.Update({}, At(30)));
}

TEST(MissingDataAlarm, ValuesNowAndThenAreNoAlarm) {
    MissingDataAlarm alarm(0, Room(), 30.0, At(0));
    for (int second = 0; second < 300; ++second) {
        EXPECT_FALSE(alarm.Update(second % 29 == 0 ? Reading{21.0, {}, {}, false} : Reading{}, At(second)));
    }
}

TEST(MissingDataAlarm, UsualDelayIsHalfAMinuteOrThreeRounds) {
    EXPECT_EQ(DefaultMissingDataDelay(1.0), 30.0);
    EXPECT_EQ(DefaultMissingDataDelay(60.0), 180.0);
}

TEST(Alarms, EachRuleAndEachChannelHasOne) {
    Alarms alarms({Room(), Co2()}, *ResolveAlarms({*ParseAlarm("CO2")}, {Room(), Co2()}), 30.0, At(0));
    const Reading room{21.0, {}, ChannelState::None, false};
    EXPECT_TRUE(alarms.Update({room, {5.0, 5.0, ChannelState::Within, false}}, At(1)).empty());
    ASSERT_EQ(alarms.Statuses().size(), 3U);
    EXPECT_EQ(alarms.Statuses()[0].kind, AlarmKind::OutOfBand);
    EXPECT_EQ(alarms.Statuses()[0].channel, 1U);
    EXPECT_EQ(alarms.Statuses()[1].kind, AlarmKind::MissingData);
    EXPECT_EQ(alarms.Statuses()[2].channel, 1U);
    EXPECT_FALSE(alarms.AnyOn());

    const auto changes = alarms.Update({{}, {6.0, 5.0, ChannelState::Above, false}}, At(31));
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0].event.text, "CO2 is 6.00 %, above 5.50 %");
    EXPECT_EQ(changes[1].event.text, "Room has given no value for 30 s");
    EXPECT_TRUE(alarms.AnyOn());

    EXPECT_EQ(alarms.Update({room, {5.0, 5.0, ChannelState::Within, false}}, At(32)).size(), 2U);
    EXPECT_FALSE(alarms.AnyOn());
}

}  // namespace
