// The targets that the user asks for on the command line.

#include "device/Targets.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "device/Channels.h"
#include "device/TargetSetting.h"

namespace {

Channel MakeChannel(ChannelKind kind, const char* name, double& target) {
    return {kind,
            0,
            name,
            {},
            {},
            [&target](double value) {
                target = value;
                return true;
            },
            {}};
}

/// A gas and a temperature channel of one name, and a gas channel with a name of its own.
class Targets : public testing::Test {
 protected:
    std::string Set(const std::string& text) { return SetTarget(channels, *ParseTargetSetting(text)); }

    double room = 0.0;
    double gas = 0.0;
    double co2 = 0.0;
    std::vector<Channel> channels{MakeChannel(ChannelKind::Temperature, "Room", room),
                                  MakeChannel(ChannelKind::Gas, "Room", gas),
                                  MakeChannel(ChannelKind::Gas, "CO2", co2)};
};

TEST_F(Targets, NameAloneFindsItsChannel) {
    EXPECT_EQ(Set("CO2=7.5"), "");
    EXPECT_EQ(co2, 7.5);
}

TEST_F(Targets, NameInSeveralKindsIsRefusedWithoutItsKind) {
    EXPECT_EQ(Set("Room=30"),
              "\"Room\" is the name of a temperature and of a gas channel: write temperature:Room or gas:Room");
    EXPECT_EQ(room, 0.0);
    EXPECT_EQ(gas, 0.0);
}

TEST_F(Targets, KindChoosesAmongEqualNames) {
    EXPECT_EQ(Set("gas:Room=3"), "");
    EXPECT_EQ(gas, 3.0);
    EXPECT_EQ(room, 0.0);
}

TEST_F(Targets, UnknownNameIsSaid) {
    EXPECT_EQ(Set("Lid=1"), "no channel is called \"Lid\"");
    EXPECT_EQ(Set("humidity:CO2=1"), "no humidity channel is called \"CO2\"");
}

TEST_F(Targets, RefusalOfTheDeviceIsSaid) {
    channels[2].setTarget = [](double) { return false; };
    EXPECT_EQ(Set("CO2=7"), "the target of \"CO2\" could not be set");
}

TEST(TargetSetting, NameMayHoldColonsAndEqualsSigns) {
    const auto setting = ParseTargetSetting("a:b=c=-1.5");
    ASSERT_TRUE(setting);
    EXPECT_EQ(setting->kind, "");
    EXPECT_EQ(setting->name, "a:b=c");
    EXPECT_EQ(setting->value, -1.5);
}

TEST(TargetSetting, OtherFormsAreRefused) {
    for (const char* text : {"", "CO2", "=5", "CO2=", "CO2=five", "CO2=5%", "CO2=nan", "CO2=inf", "CO2=1e999"}) {
        EXPECT_FALSE(ParseTargetSetting(text)) << text;
    }
}

}  // namespace
