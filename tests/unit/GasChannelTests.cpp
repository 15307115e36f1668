#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Fixture.h"
#include "RegistryNames.h"
#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"

namespace {

class GasChannelTests : public DeviceTest {
 protected:
    CDevApiInterface_GasConcentration_Impl& Channel(int product, int number, double min = 0.0, double max = 100.0) {
        return Ready(*RealDevice().m_pGasConcentration[0], product, number, min, max);
    }
};

TEST_F(GasChannelTests, Commands_AlwaysCarryProductAndChannel) {
    auto& channel = Channel(12, 0);
    double value = 0.0;
    channel.GetTargetGasConcentration(&value);
    channel.GetCurrentGasConcentration(&value);
    channel.SetTargetGasConcentration(7.0);
    EXPECT_EQ(platform.server.Commands(),
              (std::vector<std::string>{"readsetpoint 12 0 -1", "readcurval 12(0)", "writesetpoint 12 0 7.00"}));
}

TEST_F(GasChannelTests, SetTarget_IsClampedToPercentAndRange) {
    struct Case {
        double wanted, min, max;
        const char* command;
        double target;
    };
    for (const Case& row :
         {Case{150.0, 0, 100, "writesetpoint 10 0 99.99", 99.99}, Case{150.0, 0, 20, "writesetpoint 10 0 20.00", 20.0},
          Case{-3.0, 0, 20, "writesetpoint 10 0 0.00", 0.0}, Case{-3.0, 1.5, 20, "writesetpoint 10 0 1.50", 1.5},
          Case{5.004, 0, 20, "writesetpoint 10 0 5.00", 5.004}, Case{5.0, 30, 20, "writesetpoint 10 0 20.00", 20.0}}) {
        SCOPED_TRACE(testing::Message() << row.wanted << " of " << row.min << ".." << row.max);
        auto& channel = Channel(10, 0, row.min, row.max);
        EXPECT_EQ(channel.SetTargetGasConcentration(row.wanted), 0);
        EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{row.command});
        EXPECT_EQ(channel.m_dTarget, row.target);
    }
}

TEST_F(GasChannelTests, SetTarget_PostsTheChangeNotice) {
    auto& channel = Channel(10, 0);
    channel.SetTargetGasConcentration(5.0);
    EXPECT_EQ(platform.windows.NoticeCount(), 1U);
    int window = 0;
    m_pDevice->m_hNotifyWnd = &window;
    channel.SetTargetGasConcentration(6.0);
    EXPECT_EQ(platform.windows.NoticeCount(&window), 1U);
}

TEST_F(GasChannelTests, LogSwitchThatInitReads_DoesNotReachTheChannelsThatAreThere) {
    platform.registry.Set(kMiscKey, kLogValue, RegistryValue::Dword(1));
    platform.server.AnswerPayload("listconprod", "10 11");
    CDevApiInterface_Impl& device = RealDevice();
    device.m_pGasConcentration[1]->DeletingDestructor(1);
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    EXPECT_TRUE(device.m_bLogCommunication);
    // Made with the library, before any Init; the second one was made anew by this one.
    EXPECT_EQ(device.m_pGasConcentration[0]->m_bLogCommunication, 0);
    EXPECT_EQ(device.m_pGasConcentration[1]->m_bLogCommunication, 1);

    HostLog::Reset();
    double value = 0.0;
    platform.server.Answer("readcurval 10(0)", "2_readcurval 10(0)_5.0\r");
    EXPECT_EQ(device.m_pGasConcentration[0]->GetCurrentGasConcentration(&value), 0);
    EXPECT_EQ(HostLog::Lines().size(), 1U);  // the exchange, and nothing of the channel's own
}

TEST_F(GasChannelTests, SetTarget_AnyChannel_IsSent) {
    EXPECT_EQ(Channel(12, 5).SetTargetGasConcentration(5.0), 0);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"writesetpoint 12 5 5.00"});
}

TEST_F(GasChannelTests, State_IsTheBandAroundTheTarget) {
    struct Case {
        double current;
        std::uint32_t state;
    };
    auto& channel = Channel(10, 0);
    channel.SetTolerance(1.0, 0.5);
    for (const Case& row : {Case{18.9, 1}, Case{19.0, 0}, Case{20.5, 0}, Case{20.6, 1}}) {
        SCOPED_TRACE(row.current);
        channel.m_dCurrent = row.current;
        std::uint32_t state = 99;
        EXPECT_EQ(channel.GetGasConcentrationState(&state), 0);
        EXPECT_EQ(state, row.state);
        EXPECT_EQ(channel.m_iState, static_cast<std::int32_t>(row.state));
    }
    EXPECT_EQ(channel.GetGasConcentrationState(nullptr), -1);
}

TEST_F(GasChannelTests, PlainSlots_GiveWhatTheyKeep) {
    auto& channel = Channel(10, 0);
    double below = 0.0;
    double above = 0.0;
    EXPECT_EQ(channel.SetEnabled(0), 0);
    EXPECT_EQ(channel.NoOperation(), 0);
    EXPECT_EQ(channel.SetTolerance(0.3, 0.4), 0);
    EXPECT_EQ(channel.GetTolerance(&below, &above), 0);
    EXPECT_EQ(below, 0.3);
    EXPECT_EQ(above, 0.4);
    EXPECT_EQ(channel.GetTolerance(nullptr, &above), -1);
}

TEST_F(GasChannelTests, Feature2_MarksO2ControllersInAirMode) {
    for (const int product : {10, 11, 12, 13}) {
        for (const int number : {0, 1}) {
            for (const std::uint8_t airMode : std::vector<std::uint8_t>{0, 1, 7}) {
                auto& channel = Channel(product, number);
                m_pDevice->m_bAirMode = airMode;
                const bool o2 = product == 11 || (product >= 12 && number == 1);
                for (int feature = 0; feature <= 4; ++feature) {
                    EXPECT_EQ(channel.HasFeature(feature), feature == 2 && o2 && airMode != 0)
                        << product << "/" << number << " air mode " << int{airMode} << " feature " << feature;
                }
            }
        }
    }
}

}  // namespace
