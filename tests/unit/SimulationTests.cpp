#include "channels/Simulation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "Fixture.h"

namespace {

constexpr int kPlus = 0;        // the first draw of a jitter that moves
constexpr int kSecond = 1;      // ... and its second draw: up
constexpr int kSecondDown = 2;  // ... or down
constexpr int kStill = 1;       // the only draw of a jitter that does not move

class SimulationTests : public DeviceTest {
 protected:
    /// Temperature channel 0 of a fresh device, at `current` with a target of 37.
    CDevApiInterface_Temperature_Impl& Zone(int product, int number, double current, double rate = 0.4) {
        auto& channel = *MakeDevice(1).m_pTemperature[0];
        Assign(channel, product, number);
        channel.m_dCurrent = current;
        channel.m_dRate = rate;
        return channel;
    }

    /// One step `seconds` after the last one.
    void Step(CDevApiInterface_Temperature_Impl& channel, double seconds) {
        channel.m_llLastTick = 1'000'000;
        platform.clock.SetCounter(1'000'000 + static_cast<std::int64_t>(seconds * 1'000'000));
        SimulateTemperature(channel);
    }
};

TEST_F(SimulationTests, Temperature_FirstStep_OnlySetsRateAndState) {
    auto& channel = Zone(9, 0, 20.0);
    SimulateTemperature(channel);
    EXPECT_EQ(channel.m_dRate, 10.0);
    EXPECT_EQ(channel.m_iState, 1);
    EXPECT_EQ(channel.m_dCurrent, 20.0);
    EXPECT_EQ(channel.m_llLastTick, platform.clock.Counter());
}

TEST_F(SimulationTests, Temperature_ControlledZone_MovesByItsDistance) {
    struct Case {
        double current;
        double rate;  // before
        double moved;
        int state;
    };
    for (const Case& row :
         {Case{34.0, 0.4, 10.0 * 2 / 60, 1}, Case{35.5, 0.4, 10.0 * 2 / 200, 1}, Case{36.6, 0.4, 10.0 * 2 / 500, 1},
          Case{36.9, 10.0, 10.0 * 2 / 500, 4}, Case{37.5, 0.4, -10.0 * 2 / 500, 2}, Case{38.5, 0.4, -10.0 * 2 / 200, 2},
          Case{40.0, 0.4, -10.0 * 2 / 60, 2}}) {
        auto& channel = Zone(9, 0, row.current, row.rate);
        Step(channel, 2.0);
        EXPECT_NEAR(channel.m_dCurrent - row.current, row.moved, 1e-9) << row.current;
        EXPECT_EQ(channel.m_iState, row.state) << row.current;
    }
}

TEST_F(SimulationTests, Temperature_RateOfTheHost_IsDegreesPerMinuteFarFromTheTargetAndLessNearIt) {
    for (const auto& [distance, share] : {std::pair{3.0, 1.0}, std::pair{1.5, 0.3}, std::pair{0.4, 0.12}}) {
        SCOPED_TRACE(distance);
        auto& channel = Zone(9, 0, 37.0 - distance);
        channel.SetTolerance(5.0, 5.0);  // outside the band the rate is the simulator's own
        EXPECT_EQ(channel.SetTemperatureRate(6.0), 0);
        Step(channel, 1.0);
        EXPECT_NEAR(channel.m_dCurrent, 37.0 - distance + 6.0 * share / 60, 1e-9);
    }
}

TEST_F(SimulationTests, Temperature_EdgesOfTheDamping_BelongToTheSlowerSide) {
    for (const auto& [current, moved] : {std::pair{36.5, 10.0 * 2 / 500}, std::pair{37.5, -10.0 * 2 / 500},
                                         std::pair{35.0, 10.0 * 2 / 200}, std::pair{39.0, -10.0 * 2 / 200}}) {
        auto& channel = Zone(9, 0, current);
        Step(channel, 2.0);
        EXPECT_NEAR(channel.m_dCurrent - current, moved, 1e-9) << current;
    }
}

TEST_F(SimulationTests, Temperature_StepPastTheTarget_EndsOnItAtTheNextStep) {
    auto& heating = Zone(9, 0, 37.1, 10.0);  // within the band, above the target, still heating
    Step(heating, 0.0);
    EXPECT_EQ(heating.m_dCurrent, 37.0);
    auto& cooling = Zone(9, 0, 36.9, -10.0);
    Step(cooling, 0.0);
    EXPECT_EQ(cooling.m_dCurrent, 37.0);
}

TEST_F(SimulationTests, Temperature_AtTheTarget_RestsAndTremblesNowAndThen) {
    struct Case {
        std::vector<int> draws;
        double current;
    };
    for (const Case& row : {Case{{0}, 37.005}, Case{{2}, 37.005}, Case{{1, kStill}, 37.0},
                            Case{{6, kPlus, kSecond}, 37.1}, Case{{11, kPlus, kSecondDown}, 36.9}}) {
        SCOPED_TRACE(testing::PrintToString(row.draws));
        auto& channel = Zone(9, 0, 37.005, 5.0);
        platform.random.Script(row.draws);
        const std::size_t before = platform.random.DrawCount();
        SimulateTemperature(channel);
        EXPECT_EQ(channel.m_dRate, 0.0);
        EXPECT_EQ(channel.m_iState, 4);
        EXPECT_NEAR(channel.m_dCurrent, row.current, 1e-9);
        EXPECT_EQ(platform.random.DrawCount() - before, row.draws.size());
    }
}

TEST_F(SimulationTests, Temperature_RestsWithinAHundredthOfADegree) {
    struct Case {
        double current;
        bool rests;
    };
    for (const Case& row :
         {Case{37.0 - 0.01, true}, Case{37.0 + 0.01, true}, Case{37.0 - 0.0101, false}, Case{37.0 + 0.0101, false}}) {
        auto& channel = Zone(9, 0, row.current, std::nan(""));  // a rate that lets the guard be
        platform.random.Script({0});
        Step(channel, 0.0);
        EXPECT_EQ(channel.m_dRate == 0.0, row.rests) << row.current - 37.0;
    }
}

TEST_F(SimulationTests, Temperature_TimeAtRest_IsNotMadeUpForLater) {
    auto& channel = Zone(9, 0, 37.0);
    SimulateTemperature(channel);
    for (int i = 0; i < 10; ++i) {
        platform.random.Script({0});
        platform.clock.Advance(1000);
        SimulateTemperature(channel);
    }
    channel.m_dTarget = 40.0;
    platform.clock.Advance(100);
    SimulateTemperature(channel);
    EXPECT_NEAR(channel.m_dCurrent, 37.0 + 10.0 * 0.1 / 60, 1e-9);
}

TEST_F(SimulationTests, Temperature_Product9Channel1AtRest_IsTheRoom) {
    auto& channel = Zone(9, 1, 37.0);
    platform.random.Script({kPlus, kSecond});
    SimulateTemperature(channel);
    EXPECT_NEAR(channel.m_dCurrent, 25.1, 1e-9);
    EXPECT_EQ(channel.m_iState, 4);
}

TEST_F(SimulationTests, Temperature_KindsOfEveryProduct) {
    enum Kind { Follower, Room, Warm, Controlled };
    struct Case {
        int product;
        int channel;
        Kind kind;
    };
    const std::vector<Case> cases{
        {7, 0, Controlled},  {7, 1, Follower},   {7, 4, Follower},    {8, 0, Controlled},  {8, 74, Follower},
        {9, 0, Controlled},  {9, 107, Follower}, {9, 132, Room},      {9, 1, Follower},    {14, 0, Controlled},
        {14, 259, Follower}, {14, 132, Room},    {16, 0, Controlled}, {16, 1, Controlled}, {16, 2, Follower},
        {16, 132, Follower}, {17, 0, Warm},      {17, 1, Follower},   {17, 6, Follower},   {10, 206, Warm},
        {10, 0, Warm},       {11, 0, Warm},      {12, 209, Warm},     {15, 206, Warm},     {13, 206, Controlled},
        {13, 0, Controlled}, {0, 0, Controlled}, {7, -1, Controlled}, {9, -1, Controlled},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(testing::Message() << row.product << "/" << row.channel);
        auto& channel = Zone(row.product, row.channel, 30.0);
        auto& main = *m_pDevice->m_pTemperature[5];
        Assign(main, row.product, 0);
        main.m_dCurrent = 33.0;
        platform.random.Script({kPlus, kSecond});
        Step(channel, 0.0);
        const double expected = row.kind == Follower ? (row.channel == 0 ? 30.1 : 33.1)
                                : row.kind == Room   ? 25.1
                                : row.kind == Warm   ? 60.1
                                                     : 30.0;
        EXPECT_NEAR(channel.m_dCurrent, expected, 1e-9);
        EXPECT_EQ(channel.m_iState, row.kind == Controlled ? 1 : 0);
    }
}

TEST_F(SimulationTests, Temperature_FollowerWithoutAMainZone_StaysWhereItIs) {
    auto& channel = Zone(9, 107, 30.0);
    const std::size_t before = platform.random.DrawCount();
    Step(channel, 1.0);
    EXPECT_EQ(channel.m_dCurrent, 30.0);
    EXPECT_EQ(platform.random.DrawCount(), before);
}

TEST_F(SimulationTests, Temperature_FollowerTakesTheFirstMainZone) {
    auto& channel = Zone(9, 107, 30.0);
    for (const std::size_t i : {3U, 9U}) {
        Assign(*m_pDevice->m_pTemperature[i], 9, 0);
        m_pDevice->m_pTemperature[i]->m_dCurrent = static_cast<double>(i);
    }
    platform.random.Script({kStill});
    Step(channel, 1.0);
    EXPECT_EQ(channel.m_dCurrent, 3.0);
}

TEST_F(SimulationTests, Temperature_FollowerBesideADeletedChannel_TakesTheNextMainZone) {
    auto& channel = Zone(9, 107, 30.0);
    m_pDevice->m_pTemperature[1]->DeletingDestructor(1);
    Assign(*m_pDevice->m_pTemperature[2], 9, 0);
    m_pDevice->m_pTemperature[2]->m_dCurrent = 33.0;
    platform.random.Script({kStill});
    Step(channel, 1.0);
    EXPECT_EQ(channel.m_dCurrent, 33.0);
}

TEST_F(SimulationTests, Temperature_RateThatIsNoNumber_CountsAsMoving) {
    auto& channel = Zone(9, 132, 36.9, std::nan(""));
    platform.random.Script({kStill});
    Step(channel, 1.0);
    EXPECT_EQ(channel.m_dCurrent, 25.0);
}

TEST_F(SimulationTests, Temperature_ToleranceMakesTheBand) {
    auto& channel = Zone(9, 0, 36.0);
    channel.m_dToleranceBelow = 1.5;
    Step(channel, 0.0);
    EXPECT_EQ(channel.m_dRate, 0.4);
    EXPECT_EQ(channel.m_iState, 4);
    channel.m_dCurrent = 35.0;
    Step(channel, 0.0);
    EXPECT_EQ(channel.m_dRate, 10.0);
    EXPECT_EQ(channel.m_iState, 1);
}

TEST_F(SimulationTests, Temperature_EdgesOfTheBand_AreWithin) {
    for (const double current : {36.5, 37.25}) {
        auto& channel = Zone(9, 0, current, current < 37.0 ? 0.4 : -0.4);
        channel.SetTolerance(0.5, 0.25);
        Step(channel, 0.0);
        EXPECT_EQ(channel.m_iState, 4) << current;
        EXPECT_EQ(std::abs(channel.m_dRate), 0.4) << current;
    }
}

TEST_F(SimulationTests, Temperature_PostsNoNotice) {
    SimulateTemperature(Zone(9, 0, 20.0));
    EXPECT_EQ(platform.windows.NoticeCount(), 0U);
}

TEST_F(SimulationTests, Gas_IsPulledByAPointAndShakenByNoise) {
    struct Case {
        double current, target;
        int draw;
        double expected;
        int state;
    };
    constexpr int kMiddle = 0;  // the lowest draw: half a point down
    for (const Case& row :
         {Case{5.0, 20.0, kMiddle, 5.5, 1}, Case{20.6, 20.0, kMiddle, 19.1, 1}, Case{20.5, 20.0, kMiddle, 20.0, 0},
          Case{19.5, 20.0, 32767, 20.0, 0}, Case{19.4, 20.0, 32767, 20.9, 1}, Case{5.0, 150.0, 32767, 5.5, 1},
          Case{5.0, -1.0, 32767, 5.5, 1}, Case{99.9, 150.0, 32767, 100.0, 1}, Case{0.2, -1.0, 0, 0.0, 1},
          Case{50.0, 100.0, 0, 50.5, 1}, Case{50.0, 0.0, 0, 48.5, 1}}) {
        auto& channel = *MakeDevice(1).m_pGasConcentration[0];
        channel.m_dCurrent = row.current;
        channel.m_dTarget = row.target;
        platform.random.Script({row.draw});
        SimulateGasConcentration(channel);
        EXPECT_NEAR(channel.m_dCurrent, row.expected, 1e-9) << row.current << " " << row.target;
        EXPECT_EQ(channel.m_iState, row.state) << row.current << " " << row.target;
    }
}

TEST_F(SimulationTests, Gas_TolerancesCountFromTheTargetToTheValue) {
    auto& channel = *MakeDevice(1).m_pGasConcentration[0];
    channel.m_dToleranceBelow = 0.1;
    channel.m_dToleranceAbove = 2.0;
    channel.m_dTarget = 20.0;
    channel.m_dCurrent = 20.1;
    platform.random.Script({0});  // 19.6: 0.4 under the target, within "above"
    SimulateGasConcentration(channel);
    EXPECT_EQ(channel.m_iState, 0);
    std::uint32_t state = 0;
    channel.GetGasConcentrationState(&state);
    EXPECT_EQ(state, 1U);
}

TEST_F(SimulationTests, GasAndHumidity_EdgesOfTheBand_AreWithin) {
    struct Case {
        double current;
        int draw;
        double reached;
    };
    constexpr int kDown = 0;
    constexpr int kUp = 32767;
    for (const Case& row : {Case{20.0, kDown, 19.5}, Case{20.0, kUp, 20.5}}) {
        SCOPED_TRACE(testing::Message() << row.current << " draw " << row.draw);
        auto& channel = *MakeDevice(1).m_pGasConcentration[0];
        channel.m_dCurrent = row.current;
        platform.random.Script({row.draw});
        SimulateGasConcentration(channel);
        EXPECT_EQ(channel.m_dCurrent, row.reached);
        EXPECT_EQ(channel.m_iState, 0);
    }
    for (const Case& row : {Case{54.0, kUp, 55.0}, Case{55.0, kDown, 54.0}}) {
        SCOPED_TRACE(testing::Message() << row.current << " draw " << row.draw);
        auto& channel = *MakeDevice(1).m_pHumidifier[0];
        channel.SetTolerance(0.0, 1.0);
        channel.m_dCurrent = row.current;
        platform.random.Script({row.draw});
        SimulateHumidity(channel);
        EXPECT_EQ(channel.m_dCurrent, row.reached);
        EXPECT_EQ(channel.m_iState, 0);
    }
}

TEST_F(SimulationTests, Humidity_SagsAndIsRounded) {
    struct Case {
        double current, target;
        int draw;
        double expected;
        int state;
    };
    for (const Case& row :
         {Case{55.0, 55.0, 32767, 55.0, 0}, Case{55.0, 55.0, 0, 54.0, 0}, Case{50.0, 55.0, 32767, 51.0, 1},
          Case{56.0, 55.0, 32767, 55.0, 0}, Case{54.0, 55.0, 16383, 54.0, 0}, Case{0.0, 0.0, 0, 0.0, 0},
          Case{99.9, 120.0, 32767, 100.0, 1}}) {
        auto& channel = *MakeDevice(1).m_pHumidifier[0];
        channel.m_dCurrent = row.current;
        channel.m_dTarget = row.target;
        platform.random.Script({row.draw});
        SimulateHumidity(channel);
        EXPECT_EQ(channel.m_dCurrent, row.expected) << row.current << " " << row.target;
        EXPECT_EQ(channel.m_iState, row.state) << row.current << " " << row.target;
    }
}

TEST_F(SimulationTests, Humidity_StateIsJudgedBeforeTheRounding) {
    auto& channel = *MakeDevice(1).m_pHumidifier[0];
    channel.m_dToleranceBelow = 0.0;
    channel.m_dToleranceAbove = 0.2;
    channel.m_dCurrent = 55.0;
    platform.random.Script({20000});  // 54.61, which rounds to the target
    SimulateHumidity(channel);
    EXPECT_EQ(channel.m_dCurrent, 55.0);
    EXPECT_EQ(channel.m_iState, 1);
}

TEST_F(SimulationTests, GasAndHumidity_PostTheirNotices) {
    CDevApiInterface_Impl& device = MakeDevice(1);
    SimulateGasConcentration(*device.m_pGasConcentration[0]);
    SimulateHumidity(*device.m_pHumidifier[0]);
    EXPECT_EQ(platform.windows.NoticeCount(), 2U);
    int window = 0;
    device.m_hNotifyWnd = &window;
    SimulateGasConcentration(*device.m_pGasConcentration[0]);
    EXPECT_EQ(platform.windows.NoticeCount(&window), 1U);
    SimulateHumidity(*device.m_pHumidifier[0]);
    EXPECT_EQ(platform.windows.NoticeCount(&window), 2U);
    EXPECT_EQ(platform.windows.NoticeCount(), 2U);
}

}  // namespace
