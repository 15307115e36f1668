// The targets that the user asks for on the command line.

#include "device/TargetSetting.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(TargetSettingTests, NameMayHoldColonsAndEqualsSigns) {
    const auto setting = ParseTargetSetting("a:b=c=-1.5");
    ASSERT_TRUE(setting);
    EXPECT_EQ(setting->channel, "a:b=c");
    EXPECT_EQ(setting->value, -1.5);
}

TEST(TargetSettingTests, OtherFormsAreRefused) {
    for (const char* text : {"", "CO2", "=5", "CO2=", "CO2=five", "CO2=5%", "CO2=nan", "CO2=inf", "CO2=1e999"}) {
        EXPECT_FALSE(ParseTargetSetting(text)) << text;
        EXPECT_NE(ParseTargetSetting(text).error, "") << text;
    }
}

TEST(TargetSettingTests, DecimalCommaIsToldToBeAPoint) {
    EXPECT_NE(ParseTargetSetting("CO2=7,5").error.find("7.5"), std::string::npos);
}

}  // namespace
