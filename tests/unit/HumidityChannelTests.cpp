#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Fixture.h"
#include "channels/CDevApiInterface_Humidifier_Impl.h"

namespace {

class HumidityChannelTests : public DeviceTest {
 protected:
    CDevApiInterface_Humidifier_Impl& Channel() { return Ready(*RealDevice().m_pHumidifier[0], 15, 0, 50.0, 95.0); }
};

TEST_F(HumidityChannelTests, SetTarget_SendsWholePercentAndKeepsTheFraction) {
    struct Case {
        double wanted;
        const char* command;
        double target;
    };
    for (const Case& row : {Case{62.7, "writesetpoint 15 0 63", 62.7}, Case{62.5, "writesetpoint 15 0 62", 62.5},
                            Case{10.0, "writesetpoint 15 0 50", 50.0}, Case{120.0, "writesetpoint 15 0 95", 95.0}}) {
        SCOPED_TRACE(row.wanted);
        auto& channel = Channel();
        EXPECT_EQ(channel.SetTargetHumidity(row.wanted), 0);
        EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{row.command});
        EXPECT_EQ(channel.m_dTarget, row.target);
    }
}

TEST_F(HumidityChannelTests, SetTarget_PostsTheChangeNotice) {
    Channel().SetTargetHumidity(60.0);
    EXPECT_EQ(platform.windows.NoticeCount(), 1U);
}

TEST_F(HumidityChannelTests, SetEnabled_IsKept) {
    auto& channel = Channel();
    EXPECT_EQ(channel.SetEnabled(0), 0);
    EXPECT_EQ(channel.m_bEnabled, 0);
    channel.SetEnabled(200);
    EXPECT_EQ(channel.m_bEnabled, 200);
}

TEST_F(HumidityChannelTests, State_IsTheBandAroundTheTarget) {
    struct Case {
        double current;
        std::uint32_t state;
    };
    auto& channel = Channel();
    for (const Case& row : {Case{54.4, 1}, Case{54.5, 0}, Case{57.0, 0}, Case{57.1, 1}}) {
        SCOPED_TRACE(row.current);
        channel.m_dCurrent = row.current;
        std::uint32_t state = 99;
        EXPECT_EQ(channel.GetHumidityState(&state), 0);
        EXPECT_EQ(state, row.state);
    }
}

TEST_F(HumidityChannelTests, Features_AreNone) {
    auto& channel = Channel();
    for (int feature = -1; feature <= 16; ++feature) {
        EXPECT_FALSE(channel.HasFeature(feature)) << feature;
    }
    EXPECT_EQ(channel.NoOperation(), 0);
}

TEST_F(HumidityChannelTests, Tolerance_IsKept) {
    auto& channel = Channel();
    double below = 0.0;
    double above = 0.0;
    channel.SetTolerance(3.0, 4.0);
    EXPECT_EQ(channel.GetTolerance(&below, &above), 0);
    EXPECT_EQ(below, 3.0);
    EXPECT_EQ(above, 4.0);
}

}  // namespace
