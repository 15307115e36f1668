#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "Fixture.h"
#include "channels/Simulation.h"
#include "fakes/HostLog.h"
#include "link/LinkOperation.h"
#include "oko/CDevApiInterface_GasConcentration.h"
#include "oko/CDevApiInterface_Humidifier.h"
#include "oko/CDevApiInterface_Temperature.h"
#include "oko/Result.h"

namespace {

class ValueThreadTests : public DeviceTest {};

TEST_F(ValueThreadTests, NullDevice_EndsAtOnce) { EXPECT_EQ(SimulationThread(nullptr), 0U); }

TEST_F(ValueThreadTests, RunFlagClear_SetsTheEventWithoutAStep) {
    CDevApiInterface_Impl& device = MakeDevice(1);
    device.m_bThreadRun = false;
    EXPECT_EQ(SimulationThread(std::make_unique<ValueThreadStart>(device, device.m_nThreadRun).release()), 0U);
    device.m_hThreadStopped.Wait(5000);  // does not wait
    EXPECT_EQ(device.m_pTemperature[0]->m_llLastTick, 0);
    EXPECT_TRUE(platform.clock.Sleeps().empty());
}

TEST_F(ValueThreadTests, Cycle_VisitsTheLiveChannelsEvery100Milliseconds) {
    CDevApiInterface_Impl& device = MakeDevice(1);
    device.m_nTemperatures = 2;
    device.m_nGasConcentrations = 1;
    device.m_nHumidifiers = 3;
    device.StartValueThread(device);
    EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(3));
    device.StopValueThread();
    EXPECT_NE(device.m_pTemperature[1]->m_llLastTick, 0);
    EXPECT_EQ(device.m_pTemperature[2]->m_llLastTick, 0);
    const std::size_t cycles = platform.clock.OtherThreadSleeps()[100];
    EXPECT_GE(cycles, 3U);
    EXPECT_EQ(platform.windows.OtherThreadNoticeCount(), cycles * 4);
    EXPECT_EQ(platform.clock.OtherThreadSleeps().size(), 1U);
}

TEST_F(ValueThreadTests, FirstCycle_StepsTemperatureGasAndHumidityBeforeItSleeps) {
    CDevApiInterface_Impl& device = MakeDevice(1);
    device.m_nTemperatures = device.m_nGasConcentrations = device.m_nHumidifiers = 1;
    auto& temperature = *device.m_pTemperature[0];
    Assign(temperature, 9, 0);
    temperature.m_dCurrent = 37.0;
    device.m_pGasConcentration[0]->m_dCurrent = 20.0;
    // Three draws have the temperature tremble upwards, one lifts the gas by half a point, one takes a point from the
    // humidity. In any other order they mean something else.
    platform.random.Script({1, 0, 1, 32767, 0});
    std::vector<double> values;
    platform.clock.onSleep = [&](std::uint32_t) {
        if (values.empty()) {
            values = {temperature.m_dCurrent, device.m_pGasConcentration[0]->m_dCurrent,
                      device.m_pHumidifier[0]->m_dCurrent};
        }
    };
    device.StartValueThread(device);
    EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(1));
    device.StopValueThread();
    ASSERT_EQ(values.size(), 3U);
    EXPECT_NEAR(values[0], 37.1, 1e-9);
    EXPECT_EQ(values[1], 20.5);
    EXPECT_EQ(values[2], 54.0);
}

TEST_F(ValueThreadTests, CountsThatChangeLater_DoNotConcernARunningThread) {
    CDevApiInterface_Impl& device = MakeDevice(1);
    device.m_nTemperatures = device.m_nGasConcentrations = device.m_nHumidifiers = 1;
    device.StartValueThread(device);
    EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(1));
    device.m_nTemperatures = device.m_nGasConcentrations = device.m_nHumidifiers = 4;
    EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(2));
    device.StopValueThread();
    EXPECT_EQ(device.m_pTemperature[1]->m_llLastTick, 0);
    EXPECT_EQ(platform.windows.OtherThreadNoticeCount(), platform.clock.OtherThreadSleeps()[100] * 2);
}

TEST_F(ValueThreadTests, DeletedChannels_AreLeftOut) {
    CDevApiInterface_Impl& device = MakeDevice(1);
    device.m_pTemperature[0]->DeletingDestructor(1);
    device.m_pGasConcentration[1]->DeletingDestructor(1);
    device.m_pHumidifier[2]->DeletingDestructor(1);
    device.StartValueThread(device);
    EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(2));
    device.StopValueThread();
    EXPECT_NE(device.m_pTemperature[15]->m_llLastTick, 0);
}

TEST_F(ValueThreadTests, HostThreads_MayUseEveryChannelMeanwhile) {
    CDevApiInterface_Impl& device = Simulator();
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    const auto useAll = [&device] {
        for (int round = 0; round < 20; ++round) {
            double value = 0.0;
            std::uint32_t state = 0;
            for (CDevApiInterface_Temperature* const channel : device.m_pTemperature) {
                channel->SetTargetTemperature(30.0 + round);
                channel->GetTargetTemperature(&value);
                channel->GetCurrentTemperature(&value);
                channel->GetTemperatureState(&state);
                channel->SetTolerance(0.1, 0.2);
                channel->SetTemperatureRate(0.5);
            }
            for (CDevApiInterface_GasConcentration* const channel : device.m_pGasConcentration) {
                channel->SetTargetGasConcentration(5.0 + round);
                channel->GetTargetGasConcentration(&value);
                channel->GetCurrentGasConcentration(&value);
                channel->GetGasConcentrationState(&state);
                channel->SetTolerance(0.1, 0.2);
                channel->HasFeature(2);
            }
            for (CDevApiInterface_Humidifier* const channel : device.m_pHumidifier) {
                channel->SetTargetHumidity(50.0 + round);
                channel->GetTargetHumidity(&value);
                channel->GetCurrentHumidity(&value);
                channel->GetHumidityState(&state);
                channel->GetTolerance(&value, &value);
            }
        }
    };
    std::thread other(useAll);
    useAll();
    other.join();
    EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(1));
    device.Close();
}

TEST_F(ValueThreadTests, SimulatedIncubator_ReachesItsTargets) {
    CDevApiInterface_Impl& device = Simulator();
    device.Init(HostLog::Callback, nullptr);
    EXPECT_EQ(device.m_pTemperature[0]->SetTargetTemperature(21.0), 0);
    EXPECT_EQ(device.m_pGasConcentration[0]->SetTargetGasConcentration(8.0), 0);
    for (int i = 0; i < 50 && device.m_pTemperature[0]->m_iState != 4; ++i) {
        ASSERT_TRUE(platform.clock.WaitForOtherThreadSleeps(20)) << i;
    }
    EXPECT_EQ(device.m_pTemperature[0]->m_iState, 4);
    EXPECT_NEAR(device.m_pGasConcentration[0]->m_dCurrent, 8.0, 2.0);
    device.Close();
}

TEST_F(ValueThreadTests, ThreadWhoseStopTimedOut_DoesNotComeBackWithTheNextInit) {
    CDevApiInterface_Impl& device = Simulator();
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    const std::uint32_t oldRun = device.m_nThreadRun;
    device.StopValueThread();
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    ASSERT_TRUE(device.m_bThreadRun);
    // The old one comes to its next look at the flag only now: it ends, and does not pass for the new one.
    EXPECT_EQ(SimulationThread(std::make_unique<ValueThreadStart>(device, oldRun).release()), 0U);
    EXPECT_TRUE(platform.threads.WaitForRunning(1));
    EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(2));
    device.StopValueThread();
    EXPECT_EQ(platform.threads.Started(), 2U);
}

TEST_F(ValueThreadTests, ThreadThatIsReplaced_DoesNotSayThatTheNewOneHasStopped) {
    CDevApiInterface_Impl& device = Simulator();
    device.m_nThreadRun = 2;
    device.m_bThreadRun = false;
    EXPECT_EQ(SimulationThread(std::make_unique<ValueThreadStart>(device, 1U).release()), 0U);
    EXPECT_FALSE(device.m_hThreadStopped.Wait(0));
    EXPECT_EQ(SimulationThread(std::make_unique<ValueThreadStart>(device, 2U).release()), 0U);
    EXPECT_TRUE(device.m_hThreadStopped.Wait(0));
}

}  // namespace
