// One snapshot of a device out of what its thread tells and of the time that passes, with a scripted clock.

#include "judge/Watch.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/DeviceMessage.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "model/Snapshot.h"

namespace {

using device_message::CallBegun;
using device_message::ChannelRead;
using device_message::LogLine;
using device_message::Opened;
using device_message::RoundDone;
using device_message::TargetSet;

Moment AtSecond(double seconds) { return {static_cast<std::int64_t>(seconds * 1000.0), seconds}; }

ChannelInfo Info(const char* key) {
    ChannelInfo info;
    info.name = info.key = key;
    info.canSetTarget = true;
    return info;
}

Reading ReadingOf(double current, double target = 37.0) {
    Reading reading;
    reading.current = current;
    reading.target = target;
    reading.state = ChannelState::Within;
    return reading;
}

Reading Unanswered() {
    Reading reading;
    reading.state = ChannelState::NoAnswer;
    return reading;
}

/// Two channels, "A" and "B"; a row each second, and ten seconds for an answer.
class WatchTests : public testing::Test {
 protected:
    WatchTests() {
        Take(0.0, CallBegun{});
        Take(0.5, Opened{{.name = "device", .simulated = true, .port = {}}, {Info("A"), Info("B")}});
    }

    bool Take(double seconds, decltype(DeviceMessage::what) what) {
        return watch.Take({AtSecond(seconds), std::move(what)});
    }

    /// A whole round within a tenth of a second.
    bool Round(double seconds, const Reading& a, const Reading& b) {
        Take(seconds, CallBegun{0});
        Take(seconds + 0.05, ChannelRead{0, a, {0.05}});
        Take(seconds + 0.05, CallBegun{1});
        Take(seconds + 0.1, ChannelRead{1, b, {0.05}});
        return Take(seconds + 0.1, RoundDone{});
    }

    std::vector<std::string> Events() {
        std::vector<std::string> texts;
        for (const Event& event : watch.TakeEvents()) {
            texts.push_back(std::string(EventKindName(event.kind)) + "|" + event.channel + "|" + event.text);
        }
        return texts;
    }

    std::optional<double> Current(std::size_t channel) const { return watch.Now().statuses[channel].reading.current; }
    ChannelState State(std::size_t channel) const { return watch.Now().statuses[channel].reading.state; }

    Watch watch{{.intervalSeconds = 1.0, .answerWithinSeconds = 10.0}};
};

using Texts = std::vector<std::string>;

TEST_F(WatchTests, WholeRound_IsARow) {
    EXPECT_TRUE(Round(1.0, ReadingOf(36.5), ReadingOf(5.0)));
    EXPECT_EQ(watch.Now().row, 1U);
    EXPECT_TRUE(watch.Now().live);
    EXPECT_EQ(Current(0), 36.5);
    EXPECT_EQ(Current(1), 5.0);
    EXPECT_EQ(Events(), Texts{});
}

TEST_F(WatchTests, BeforeTheFirstRead_NothingIsLive) {
    EXPECT_FALSE(watch.Now().live);
    EXPECT_EQ(watch.Now().reason, "nothing was read yet");
}

TEST_F(WatchTests, FirstChannelThatFails_IsNoLostLink) {
    Take(1.0, CallBegun{0});
    Take(1.1, ChannelRead{0, Unanswered(), {0.1}});
    EXPECT_EQ(Events(), Texts{});
    Take(1.1, CallBegun{1});
    Take(1.2, ChannelRead{1, ReadingOf(5.0), {0.1}});
    EXPECT_TRUE(watch.Now().live);
}

TEST_F(WatchTests, AllChannelsFailing_IsALostLinkUntilOneAnswers) {
    Round(1.0, Unanswered(), Unanswered());
    EXPECT_FALSE(watch.Now().live);
    EXPECT_EQ(Events(), Texts{"link lost||no channel answers"});
    Round(2.0, Unanswered(), Unanswered());
    EXPECT_EQ(Events(), Texts{});
    Round(3.0, Unanswered(), ReadingOf(5.0));
    EXPECT_TRUE(watch.Now().live);
    EXPECT_EQ(Events(), Texts{"link back||the device answers again"});
}

TEST_F(WatchTests, AnswerWithoutANumber_IsFailedButNoLostLink) {
    Reading reading;
    reading.state = ChannelState::NoValue;
    Round(1.0, reading, reading);
    EXPECT_TRUE(watch.Now().live);
    EXPECT_EQ(watch.Now().statuses[0].failedReads, 1U);
}

TEST_F(WatchTests, ReadsAreCountedPerChannel) {
    Round(1.0, ReadingOf(36.5), Unanswered());
    Round(2.0, ReadingOf(36.5), ReadingOf(5.0));
    EXPECT_EQ(watch.Now().statuses[0].reads, 2U);
    EXPECT_EQ(watch.Now().statuses[0].failedReads, 0U);
    EXPECT_EQ(watch.Now().statuses[1].failedReads, 1U);
}

TEST_F(WatchTests, CallThatDoesNotReturn_IsSilenceAfterTheTimeForAnAnswer) {
    Round(1.0, ReadingOf(36.5), ReadingOf(5.0));
    Take(2.0, CallBegun{0});
    watch.Tick(AtSecond(12.0));
    EXPECT_FALSE(watch.IsSilent());
    EXPECT_EQ(Current(0), 36.5);

    watch.Tick(AtSecond(12.1));
    EXPECT_TRUE(watch.IsSilent());
    EXPECT_FALSE(watch.Now().live);
    EXPECT_EQ(watch.Now().reason, "the device has not answered for 10 s");
    EXPECT_EQ(Current(0), std::nullopt);
    EXPECT_EQ(State(0), ChannelState::NoAnswer);
    EXPECT_EQ(State(1), ChannelState::NoAnswer);
    EXPECT_EQ(Events(), Texts{"link lost||the device has not answered for 10 s"});
}

TEST_F(WatchTests, SilentDevice_HasARowWithoutValuesForEachInterval) {
    Round(1.0, ReadingOf(36.5), ReadingOf(5.0));
    Take(2.0, CallBegun{0});
    int rows = 0;
    for (double now = 2.1; now < 20.05; now += 0.1) {
        rows += watch.Tick(AtSecond(now)) ? 1 : 0;
    }
    EXPECT_EQ(rows, 8);
    EXPECT_EQ(watch.Now().row, 9U);
}

TEST_F(WatchTests, SilentDeviceThatReturns_IsShownAgain) {
    Round(1.0, ReadingOf(36.5), ReadingOf(5.0));
    Take(2.0, CallBegun{0});
    watch.Tick(AtSecond(30.0));
    Events();
    Take(31.0, ChannelRead{0, ReadingOf(36.6), {29.0}});
    EXPECT_FALSE(watch.IsSilent());
    EXPECT_TRUE(watch.Now().live);
    EXPECT_EQ(Current(0), 36.6);
    EXPECT_EQ(Current(1), std::nullopt) << "what was forgotten comes back by a read alone";
    EXPECT_EQ(Events(), Texts{"link back||the device answers again"});
}

TEST_F(WatchTests, LogLineDuringACall_IsNoSignThatItReturned) {
    Take(1.0, CallBegun{0});
    Take(9.0, LogLine{"still trying"});
    watch.Tick(AtSecond(11.5));
    EXPECT_TRUE(watch.IsSilent());
}

TEST_F(WatchTests, SlowRounds_KeepTheirValuesWhileTheyGoOn) {
    Take(1.0, CallBegun{0});
    Take(8.0, ChannelRead{0, ReadingOf(36.5), {7.0}});
    Take(8.0, CallBegun{1});
    Take(15.0, ChannelRead{1, ReadingOf(5.0), {7.0}});
    Take(15.0, RoundDone{});
    Take(15.1, CallBegun{0});
    watch.Tick(AtSecond(22.0));
    EXPECT_EQ(Current(0), 36.5) << "14 s old, as old as this device's values become";
    EXPECT_TRUE(watch.Now().live);
}

TEST_F(WatchTests, MessageThatWaited_DoesNotTurnTimeBack) {
    Round(1.0, ReadingOf(36.5), ReadingOf(5.0));
    Take(2.0, CallBegun{0});
    watch.Tick(AtSecond(12.5));
    Take(12.4, ChannelRead{0, ReadingOf(36.6), {10.4}});
    EXPECT_EQ(watch.Now().when.seconds, 12.5);
}

TEST_F(WatchTests, RoundThatBecomesSlow_KeepsWhatItRead) {
    Round(1.0, ReadingOf(36.5), ReadingOf(5.0));
    Take(2.0, CallBegun{0});
    Take(2.1, ChannelRead{0, ReadingOf(36.6), {0.1}});
    Take(2.1, CallBegun{1});
    Take(12.0, ChannelRead{1, Unanswered(), {9.9}});
    Take(12.0, CallBegun{1});
    Take(20.0, ChannelRead{1, Unanswered(), {8.0}});
    Take(20.0, RoundDone{});
    EXPECT_EQ(Current(0), 36.6) << "the log has what was read in its row";
}

TEST_F(WatchTests, ValueOlderThanARoundAndItsAnswersTake_IsForgotten) {
    Round(1.0, ReadingOf(36.5), ReadingOf(5.0));
    watch.Tick(AtSecond(12.0));
    EXPECT_EQ(Current(0), 36.5);
    watch.Tick(AtSecond(12.3));
    EXPECT_EQ(Current(0), std::nullopt);
    EXPECT_NEAR(*watch.Now().statuses[0].ageSeconds, 11.25, 1e-9) << "its age is still told";
}

TEST_F(WatchTests, ChangedTarget_IsAnEventWhoeverChangedIt) {
    Round(1.0, ReadingOf(36.5, 37.0), ReadingOf(5.0));
    Round(2.0, ReadingOf(36.5, 38.5), ReadingOf(5.0));
    EXPECT_EQ(Events(), Texts{"target changed|A|37 -> 38.5"});
    Take(3.0, TargetSet{1, 0, 99.0, true, 60.0});
    EXPECT_EQ(Events(), Texts{"target changed|A|38.5 -> 60"});
    Round(4.0, ReadingOf(36.5, 60.0), ReadingOf(5.0));
    EXPECT_EQ(Events(), Texts{});
}

TEST_F(WatchTests, TargetThatCouldNotBeRead_HasNotChanged) {
    Round(1.0, ReadingOf(36.5, 37.0), ReadingOf(5.0));
    Round(2.0, Unanswered(), ReadingOf(5.0));
    Round(3.0, ReadingOf(36.5, 37.0), ReadingOf(5.0));
    EXPECT_EQ(Events(), Texts{});
}

TEST_F(WatchTests, AirMode_IsAnEventWhenItChangesAndNotAtFirst) {
    Reading on = ReadingOf(5.0);
    on.airMode = true;
    Round(1.0, ReadingOf(36.5), on);
    EXPECT_EQ(Events(), Texts{});
    Round(2.0, ReadingOf(36.5), ReadingOf(5.0));
    EXPECT_EQ(Events(), Texts{"air mode|B|off"});
    Round(3.0, ReadingOf(36.5), on);
    EXPECT_EQ(Events(), Texts{"air mode|B|on"});
}

TEST_F(WatchTests, ReadThatFailed_SaysNothingOfTheAirMode) {
    Reading on = ReadingOf(5.0);
    on.airMode = true;
    Round(1.0, ReadingOf(36.5), on);
    Round(2.0, ReadingOf(36.5), Unanswered());
    EXPECT_EQ(Events(), Texts{});
}

TEST_F(WatchTests, DurationsOfTheCalls_AreCounted) {
    Round(1.0, ReadingOf(36.5), ReadingOf(5.0));
    EXPECT_EQ(watch.Now().exchanges.counts[5], 2U) << "0.05 s, a bound, is in its own class";
    EXPECT_NEAR(watch.Now().exchanges.sumSeconds, 0.1, 1e-9);
}

TEST_F(WatchTests, DeviceThatIsBeingStarted_IsSilentAfterTheTimeForAnAnswer) {
    Watch starting{{.intervalSeconds = 1.0, .answerWithinSeconds = 10.0}};
    starting.Take({AtSecond(0.0), CallBegun{}});
    starting.Tick(AtSecond(9.0));
    EXPECT_EQ(starting.Now().reason, "the device is being started");
    EXPECT_FALSE(starting.Tick(AtSecond(10.5)));
    EXPECT_EQ(starting.Now().reason, "the device does not answer while it is started");
}

}  // namespace
