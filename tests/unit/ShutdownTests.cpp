#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Fixture.h"
#include "ProductSets.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/Result.h"

namespace {

class ShutdownTests : public DeviceTest {};

TEST_F(ShutdownTests, RealDevice_StopsAndReleasesEveryProductAndClosesTheSocket) {
    ConnectProducts(platform, {9, 12, 15});
    CDevApiInterface_Impl& device = RealDevice();
    device.Init(HostLog::Callback, nullptr);
    device.m_bServerErrorShown = true;
    device.m_bSetupComplete = true;
    device.m_bBusy = true;
    platform.server.ClearCommands();
    device.Close();
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send start 0", "receive 64", "send connect 9 0",
                                                                 "receive 64", "send connect 12 0", "receive 64",
                                                                 "send connect 15 0", "receive 64", "close"}));
    EXPECT_TRUE(platform.clock.Sleeps().empty());
    EXPECT_FALSE(device.m_bServerErrorShown);
    EXPECT_FALSE(device.m_bSetupComplete);
    EXPECT_TRUE(device.m_bBusy);
    EXPECT_EQ(device.m_products.size(), 3U);
    EXPECT_GT(device.GetTemperatureCount(), 0);
}

TEST_F(ShutdownTests, AlarmSettings_AreForgottenOnceTheLinkIsClosed) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bSetupComplete = true;
    bool atClose = false;
    platform.server.onCall = [&](const std::string& call) {
        if (call == "close") {
            atClose = device.m_bSetupComplete;
        }
    };
    device.Close();
    platform.server.onCall = {};
    EXPECT_TRUE(atClose);
    EXPECT_FALSE(device.m_bSetupComplete);
}

TEST_F(ShutdownTests, EmptyCatalogue_SendsOnlyStart0) {
    CDevApiInterface_Impl& device = RealDevice();
    device.Close();
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"start 0"});
    EXPECT_EQ(platform.server.OpenSockets(), 0U);
}

TEST_F(ShutdownTests, AfterClose_ReadsFail) {
    CDevApiInterface_Impl& device = RealDevice();
    device.Init(HostLog::Callback, nullptr);
    device.Close();
    double value = 7.0;
    EXPECT_EQ(device.m_pTemperature[0]->GetCurrentTemperature(&value), -1);
    EXPECT_EQ(value, 7.0);
}

TEST_F(ShutdownTests, Simulator_WaitsForItsThreadAndGivesItTimeToReturn) {
    CDevApiInterface_Impl& device = Simulator();
    device.m_bLogCommunication = true;
    device.Init(HostLog::Callback, nullptr);
    device.m_bLogCommunication = true;
    HostLog::Reset();
    device.Close();
    EXPECT_EQ(platform.clock.Sleeps(), std::vector<std::uint32_t>{100});
    EXPECT_FALSE(device.m_bThreadRun);
    EXPECT_FALSE(device.m_hThread.IsOpen());
    EXPECT_EQ(HostLog::Lines(),
              (std::vector<std::wstring>{L"OKO-Lab bold line CommandSendSim: start 0 -> 0_start 0_1\r",
                                         L"OKO-Lab bold line CommandSendSim: connect 9 0 -> 0_connect 9 0_1\r",
                                         L"OKO-Lab bold line CommandSendSim: connect 12 0 -> 0_connect 12 0_1\r",
                                         L"OKO-Lab bold line CommandSendSim: connect 15 0 -> 0_connect 15 0_1\r",
                                         L"CDevApiInterface_Impl::DisconnectSocket: The descriptor is not a socket."}));
}

TEST_F(ShutdownTests, Simulator_WaitsForItsThread5SecondsAtMost) {
    CDevApiInterface_Impl& device = Simulator();
    device.Init(HostLog::Callback, nullptr);
    device.Close();
    EXPECT_EQ(platform.events.Waits(), std::vector<std::uint32_t>{5000});
}

TEST_F(ShutdownTests, Simulator_KeepsItsCounts) {
    CDevApiInterface_Impl& device = Simulator();
    device.Init(HostLog::Callback, nullptr);
    device.Close();
    EXPECT_EQ(device.GetTemperatureCount(), 10);
    EXPECT_EQ(device.GetGasConcentrationCount(), 2);
    EXPECT_EQ(device.GetHumidifierCount(), 1);
}

TEST_F(ShutdownTests, CloseTwiceAndCloseBeforeInit_AreHarmless) {
    CDevApiInterface_Impl& device = Simulator();
    device.Close();
    EXPECT_TRUE(platform.clock.Sleeps().empty());
    device.Init(HostLog::Callback, nullptr);
    device.Close();
    device.Close();
    EXPECT_EQ(platform.threads.OpenHandles(), 0U);
    EXPECT_EQ(platform.clock.Sleeps(), std::vector<std::uint32_t>{100});
}

TEST_F(ShutdownTests, AfterAFailedInit_ReleasesTheProductsOfTheEarlierOne) {
    ConnectProducts(platform, {9});
    CDevApiInterface_Impl& device = RealDevice();
    device.Init(HostLog::Callback, nullptr);
    platform.server.Answer("listprod", kReceiveFails);
    device.Init(HostLog::Callback, nullptr);
    platform.server.ClearCommands();
    device.Close();
    EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"start 0", "connect 9 0"}));
}

TEST_F(ShutdownTests, InitAgain_MovesTheValuesAgain) {
    CDevApiInterface_Impl& device = Simulator();
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
        const double before = device.m_pTemperature[0]->m_dCurrent;
        EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(5));
        EXPECT_GT(device.m_pTemperature[0]->m_dCurrent, before);
        device.Close();
        const double stopped = device.m_pTemperature[0]->m_dCurrent;
        platform.clock.Advance(1000);
        EXPECT_EQ(device.m_pTemperature[0]->m_dCurrent, stopped);
    }
    EXPECT_EQ(platform.threads.Started(), 3U);
    EXPECT_EQ(platform.threads.OpenHandles(), 0U);
}

TEST_F(ShutdownTests, ThreadThatCouldNotBeMade_DoesNotMatter) {
    platform.threads.failStart = true;
    CDevApiInterface_Impl& device = Simulator();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    device.Close();
    EXPECT_EQ(platform.threads.OpenHandles(), 0U);
}

}  // namespace
