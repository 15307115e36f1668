// What people write after --alarm, and which channels it means.

#include "judge/AlarmRule.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "judge/Band.h"
#include "model/ChannelInfo.h"
#include "model/FindChannel.h"
#include "text/Parsed.h"

namespace {

/// A zone, a sensor, and a gas and a humidity channel of one name, beside two gas channels that share theirs.
std::vector<ChannelInfo> SixChannels() {
    return {{ChannelKind::Temperature, 0, "H301-T", "H301-T", true, 20.0, 60.0, 0.2, 0.2},
            {ChannelKind::Temperature, 1, "Room", "Room", false, 0.0, 0.0, 0.0, 0.0},
            {ChannelKind::Gas, 0, "CO2", "gas:CO2", true, 0.0, 20.0, 0.5, 0.5},
            {ChannelKind::Humidity, 0, "CO2", "humidity:CO2", true, 0.0, 100.0, 0.5, 2.0},
            {ChannelKind::Gas, 1, "O2", "gas:O2:0", true, 0.0, 21.0, 0.5, 0.5},
            {ChannelKind::Gas, 2, "O2", "gas:O2:1", true, 0.0, 21.0, 0.0, 0.0}};
}

std::string ErrorOf(const std::string& text) { return ParseAlarm(text).error; }

Parsed<std::vector<AlarmRule>> Resolve(const std::vector<std::string>& texts) {
    std::vector<AlarmText> alarms;
    for (const std::string& text : texts) {
        alarms.push_back(*ParseAlarm(text));
    }
    return ResolveAlarms(alarms, SixChannels());
}

TEST(ChannelName, KeyNameAndKindAreUnderstood) {
    const std::vector<std::pair<const char*, std::size_t>> cases{
        {"H301-T", 0}, {"temperature:H301-T", 0}, {"gas:CO2", 2}, {"humidity:CO2", 3}, {"gas:O2:1", 5}};
    for (const auto& [name, index] : cases) {
        const auto found = FindChannel(SixChannels(), name);
        ASSERT_TRUE(found) << name << ": " << found.error;
        EXPECT_EQ(*found, index) << name;
    }
}

TEST(ChannelName, NameOfSeveralIsRefusedWithTheirKeys) {
    EXPECT_EQ(FindChannel(SixChannels(), "CO2").error,
              "\"CO2\" is the name of 2 channels: write gas:CO2 or humidity:CO2");
    EXPECT_EQ(FindChannel(SixChannels(), "gas:O2").error,
              "\"gas:O2\" is the name of 2 channels: write gas:O2:0 or gas:O2:1");
}

TEST(ChannelName, UnknownNameIsRefusedWithAllKeys) {
    EXPECT_EQ(FindChannel(SixChannels(), "Lid").error,
              "no channel is called \"Lid\": write H301-T, Room, gas:CO2, humidity:CO2, gas:O2:0 or gas:O2:1");
    EXPECT_EQ(FindChannel({}, "Lid").error, "no channel is called \"Lid\": there is none at all");
    EXPECT_FALSE(FindChannel(SixChannels(), ""));
    EXPECT_FALSE(FindChannel(SixChannels(), "gas:H301-T"));
}

TEST(AlarmText, BandAndDelayAreRead) {
    for (const char* text : {"CO2: 4.5..5.5 for 2m", "CO2:4.5..5.5 for 2min", " CO2 : 4.5 .. 5.5  for  2 min "}) {
        const auto alarm = ParseAlarm(text);
        ASSERT_TRUE(alarm) << text << ": " << alarm.error;
        EXPECT_EQ(alarm->channel, "CO2") << text;
        EXPECT_EQ(alarm->band, (Band{4.5, 5.5})) << text;
        EXPECT_EQ(alarm->delaySeconds, 120.0) << text;
        EXPECT_FALSE(alarm->hysteresis) << text;
        EXPECT_FALSE(alarm->withinSeconds) << text;
    }
}

TEST(AlarmText, OptionsStandInAnyOrder) {
    for (const char* text : {"O2 hysteresis 0.1 within 1h for 30s", "O2 for 30s within 1 h hysteresis 0.1"}) {
        const auto alarm = ParseAlarm(text);
        ASSERT_TRUE(alarm) << text << ": " << alarm.error;
        EXPECT_EQ(alarm->channel, "O2") << text;
        EXPECT_FALSE(alarm->band) << text;
        EXPECT_EQ(alarm->delaySeconds, 30.0) << text;
        EXPECT_EQ(alarm->hysteresis, 0.1) << text;
        EXPECT_EQ(alarm->withinSeconds, 3600.0) << text;
    }
}

TEST(AlarmText, NameMayHoldKindsKeysAndBlanks) {
    const std::vector<std::pair<const char*, const char*>> cases{
        {"gas:CO2", "gas:CO2"},          {"gas:CO2:1", "gas:CO2:1"},        {"gas:CO2: 4..5", "gas:CO2"},
        {"gas:CO2:1:4..5", "gas:CO2:1"}, {"Stage Top for 5s", "Stage Top"}, {"waiting for: 1..2", "waiting for"}};
    for (const auto& [text, channel] : cases) {
        const auto alarm = ParseAlarm(text);
        ASSERT_TRUE(alarm) << text << ": " << alarm.error;
        EXPECT_EQ(alarm->channel, channel) << text;
    }
}

TEST(AlarmText, NegativeLimitsAndMissingZerosAreRead) {
    EXPECT_EQ(ParseAlarm("T: -2.5..-1")->band, (Band{-2.5, -1.0}));
    EXPECT_EQ(ParseAlarm("T: .5...75")->band, (Band{0.5, 0.75}));
}

TEST(AlarmText, MistakesSayWhatToWrite) {
    const std::string example = "; write one such as \"CO2: 4.5..5.5 for 2m\" or \"CO2 for 2m\"";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "the channel's name is missing"},
        {": 4..5", "the channel's name is missing"},
        {"CO2 4.5..5.5", "a colon is missing before the band"},
        {"CO2: 5", "\"5\" is not a band: write its two limits, such as 4.5..5.5"},
        {"CO2:", "\"\" is not a band: write its two limits, such as 4.5..5.5"},
        {"CO2: 4,5..5,5", "\"4,5\" has a decimal comma: write 4.5, with a point"},
        {"CO2: 4..5,5", "\"5,5\" has a decimal comma: write 5.5, with a point"},
        {"CO2: 4..", "\"\" is not a number: write one such as 38.5"},
        {"CO2: 5.5..4.5", "\"5.5..4.5\" is empty: write the lower limit first"},
        {"CO2: 5..5", "\"5..5\" is empty: write the lower limit first"},
        {"CO2 for", "after \"for\", \"\" is not a duration: write one such as 500ms, 10s, 2min, 1h30m or 3d"},
        {"CO2 for 2m for 3m", "\"for\" stands twice"},
        {"CO2 within 1h within 2h", "\"within\" stands twice"},
        {"CO2 hysteresis 1 hysteresis 1", "\"hysteresis\" stands twice"},
        {"CO2 hysteresis -1", "after \"hysteresis\", a hysteresis is not negative"},
        {"CO2 hysteresis 0,1", "after \"hysteresis\", \"0,1\" has a decimal comma: write 0.1, with a point"},
        {"all: 4..5", "\"all\" stands for several channels, for which one band cannot be right"}};
    for (const auto& [text, why] : cases) {
        EXPECT_EQ(ErrorOf(text), "the alarm \"" + text + "\" cannot be understood: " + why + example);
    }
}

TEST(AlarmRule, BandLeftOutMovesWithTheTarget) {
    const auto rules = Resolve({"H301-T for 2m", "Room: 18..25"});
    ASSERT_TRUE(rules) << rules.error;
    ASSERT_EQ(rules->size(), 2U);
    EXPECT_EQ(rules->at(0).channel, 0U);
    EXPECT_FALSE(rules->at(0).band);
    EXPECT_EQ(rules->at(0).delaySeconds, 120.0);
    EXPECT_EQ(rules->at(1).channel, 1U);
    EXPECT_EQ(rules->at(1).band, (Band{18.0, 25.0}));
}

TEST(AlarmRule, AllMeansChannelsThatHaveTolerancesAndNoAlarmOfTheirOwn) {
    const auto rules = Resolve({"all for 5m", "gas:CO2: 4..6 for 1m", "Room: 1..2"});
    ASSERT_TRUE(rules) << rules.error;
    std::vector<std::pair<std::size_t, double>> delays;
    for (const AlarmRule& rule : *rules) {
        delays.emplace_back(rule.channel, rule.delaySeconds);
    }
    EXPECT_EQ(delays,
              (std::vector<std::pair<std::size_t, double>>{{0, 300.0}, {1, 0.0}, {2, 60.0}, {3, 300.0}, {4, 300.0}}));
}

TEST(AlarmRule, EveryTextThatCannotBeIsNamed) {
    EXPECT_EQ(Resolve({"Room for 2m", "gas:O2:1", "Lid: 1..2", "H301-T", "temperature:H301-T: 36..38"}).error,
              "Room is a sensor without a target: write the band, such as \"Room: 20..25\"\n"
              "gas:O2:1 has no tolerances: write the band, such as \"gas:O2:1: 20..25\"\n"
              "no channel is called \"Lid\": write H301-T, Room, gas:CO2, humidity:CO2, gas:O2:0 or gas:O2:1\n"
              "H301-T has two alarms: write one of them");
    EXPECT_EQ(Resolve({"all", "all for 2m"}).error, "\"all\" has two alarms: write one of them");
}

TEST(AlarmRule, HysteresisThatLeavesNothingOfTheBandIsRefused) {
    EXPECT_EQ(Resolve({"Room: 20..21 hysteresis 0.5"}).error,
              "a hysteresis of 0.5 leaves nothing of Room's band, which is 1 wide: the alarm would never end");
    EXPECT_FALSE(Resolve({"all hysteresis 0.25"}));
    EXPECT_TRUE(Resolve({"Room: 20..21 hysteresis 0.49"}));
}

TEST(AlarmRule, AllWithoutTolerancesIsRefused) {
    EXPECT_EQ(ResolveAlarms({*ParseAlarm("all")}, {SixChannels()[1]}).error,
              "no channel has tolerances that \"all\" could go by: write a channel and its band");
}

}  // namespace
