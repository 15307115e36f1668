// Which channel a user means.

#include "model/FindChannel.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "device/Channels.h"
#include "model/ChannelInfo.h"

namespace {

ChannelInfo Info(ChannelKind kind, int number, const char* name, bool canSetTarget = true) {
    ChannelInfo info;
    info.kind = kind;
    info.number = number;
    info.name = name;
    info.canSetTarget = canSetTarget;
    return info;
}

class FindChannelTests : public testing::Test {
 protected:
    FindChannelTests() {
        std::vector<ChannelInfo*> all;
        for (ChannelInfo& channel : channels) {
            all.push_back(&channel);
        }
        GiveKeys(all);
    }

    std::vector<ChannelInfo> channels{
        Info(ChannelKind::Temperature, 0, "Room"), Info(ChannelKind::Temperature, 1, "Base", false),
        Info(ChannelKind::Gas, 0, "Room"),         Info(ChannelKind::Gas, 1, "CO2"),
        Info(ChannelKind::Humidity, 0, "Twin"),    Info(ChannelKind::Humidity, 1, "Twin"),
    };
};

TEST_F(FindChannelTests, KeysAreUnique) {
    std::vector<std::string> keys;
    for (const ChannelInfo& channel : channels) {
        keys.push_back(channel.key);
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"temperature:Room", "Base", "gas:Room", "CO2", "humidity:Twin:0",
                                              "humidity:Twin:1"}));
}

TEST_F(FindChannelTests, NameAloneFindsItsChannel) { EXPECT_EQ(*FindChannel(channels, "CO2"), 3U); }

TEST_F(FindChannelTests, KeyFindsItsChannel) { EXPECT_EQ(*FindChannel(channels, "humidity:Twin:1"), 5U); }

TEST_F(FindChannelTests, KindChoosesAmongEqualNames) { EXPECT_EQ(*FindChannel(channels, "gas:Room"), 2U); }

TEST_F(FindChannelTests, NameOfSeveralIsRefusedWithTheirKeys) {
    EXPECT_EQ(FindChannel(channels, "Twin").error,
              "\"Twin\" is the name of 2 channels: write humidity:Twin:0 or humidity:Twin:1");
    EXPECT_EQ(FindChannel(channels, "Room").error,
              "\"Room\" is the name of 2 channels: write temperature:Room or gas:Room");
}

TEST_F(FindChannelTests, UnknownNameIsToldWhatThereIs) {
    EXPECT_EQ(FindChannel(channels, "Lid").error,
              "no channel is called \"Lid\": write temperature:Room, Base, gas:Room, CO2, humidity:Twin:0 or "
              "humidity:Twin:1");
    EXPECT_FALSE(FindChannel(channels, "humidity:CO2"));
}

TEST_F(FindChannelTests, SensorHasNoTarget) {
    EXPECT_EQ(FindChannelWithTarget(channels, "Base").error,
              "\"Base\" is a sensor without a target: write temperature:Room, gas:Room, CO2, humidity:Twin:0 or "
              "humidity:Twin:1");
    EXPECT_TRUE(FindChannelWithTarget(channels, "CO2"));
}

}  // namespace
