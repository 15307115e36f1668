// When a value counts as settled, with a clock that the test turns.

#include "judge/Settling.h"

#include <gtest/gtest.h>

#include <optional>

#include "judge/Band.h"
#include "model/ChannelInfo.h"
#include "model/Moment.h"

namespace {

constexpr Band kBand{4.5, 5.5};

Moment At(double seconds) { return {0, 10.0 + seconds}; }

ChannelInfo Co2() { return {ChannelKind::Gas, 0, "CO2", "CO2", true, 0.0, 20.0, 0.5, 0.5}; }

TEST(Settling, SettlesAfterThatLongInItsBand) {
    Settling settling(60.0, {}, At(0));
    EXPECT_EQ(settling.Update(3.0, kBand, At(0)), SettlingState::Waiting);
    EXPECT_EQ(settling.Describe(Co2()), "CO2 is 3.00 %, below 4.50 %");
    EXPECT_EQ(settling.Update(4.5, kBand, At(100)), SettlingState::Waiting);
    EXPECT_EQ(settling.Progress(), 0.0);
    EXPECT_EQ(settling.Update(5.5, kBand, At(115)), SettlingState::Waiting);
    EXPECT_EQ(settling.Progress(), 0.25);
    EXPECT_EQ(settling.HeldSeconds(), 15.0);
    EXPECT_EQ(settling.Describe(Co2()), "CO2 is 5.50 %, within 4.50 to 5.50 %, for 15 s of 1 min");
    EXPECT_EQ(settling.Update(5.0, kBand, At(159.9)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, At(160)), SettlingState::Settled);
    EXPECT_EQ(settling.Progress(), 1.0);
    EXPECT_EQ(settling.Describe(Co2()), "CO2 is 5.00 %, within 4.50 to 5.50 %");
}

TEST(Settling, ShortHoldIsToldInFractionsOfASecond) {
    Settling settling(0.3, {}, At(0));
    settling.Update(5.0, kBand, At(0));
    settling.Update(5.0, kBand, At(0.125));
    EXPECT_EQ(settling.Describe(Co2()), "CO2 is 5.00 %, within 4.50 to 5.50 %, for 125 ms of 300 ms");
}

TEST(Settling, ValueOutsideInterrupts) {
    Settling settling(10.0, {}, At(0));
    settling.Update(5.0, kBand, At(0));
    EXPECT_EQ(settling.Update(5.6, kBand, At(9)), SettlingState::Waiting);
    EXPECT_EQ(settling.HeldSeconds(), 0.0);
    EXPECT_EQ(settling.Update(5.0, kBand, At(10)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, At(19)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, At(20)), SettlingState::Settled);
}

TEST(Settling, MissingDataInterrupts) {
    Settling settling(10.0, {}, At(0));
    settling.Update(5.0, kBand, At(0));
    EXPECT_EQ(settling.Update({}, kBand, At(9)), SettlingState::Waiting);
    EXPECT_EQ(settling.Describe(Co2()), "CO2 gives no value");
    EXPECT_EQ(settling.Update({}, kBand, At(30)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, At(31)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, At(41)), SettlingState::Settled);
}

TEST(Settling, ChangedBandInterrupts) {
    Settling settling(10.0, {}, At(0));
    settling.Update(5.0, kBand, At(0));
    EXPECT_EQ(settling.Update(5.0, {4.6, 5.6}, At(10)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, {4.6, 5.6}, At(20)), SettlingState::Settled);
}

TEST(Settling, WithoutTimeToHoldTheFirstValueInsideSettles) {
    Settling settling(0.0, {}, At(0));
    EXPECT_EQ(settling.Update(4.0, kBand, At(0)), SettlingState::Waiting);
    EXPECT_EQ(settling.Progress(), 0.0);
    EXPECT_EQ(settling.Update({}, kBand, At(1)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, At(2)), SettlingState::Settled);
    EXPECT_EQ(settling.Progress(), 1.0);
}

TEST(Settling, GivesUpInTime) {
    Settling settling(10.0, 60.0, At(0));
    EXPECT_EQ(settling.Update(4.0, kBand, At(59)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(4.0, kBand, At(60)), SettlingState::GivenUp);
    EXPECT_EQ(settling.Describe(Co2()), "CO2 is 4.00 %, below 4.50 %");
    EXPECT_EQ(settling.Update(5.0, kBand, At(61)), SettlingState::GivenUp);
    EXPECT_EQ(settling.Update(5.0, kBand, At(100)), SettlingState::GivenUp);
}

TEST(Settling, GivesUpWithoutData) {
    Settling settling(10.0, 60.0, At(0));
    EXPECT_EQ(settling.Update({}, kBand, At(60)), SettlingState::GivenUp);
}

TEST(Settling, WhatSettlesInTheLastMomentHasSettled) {
    Settling settling(10.0, 60.0, At(0));
    settling.Update(5.0, kBand, At(50));
    EXPECT_EQ(settling.Update(5.0, kBand, At(60)), SettlingState::Settled);
    EXPECT_EQ(settling.Update(1.0, kBand, At(99)), SettlingState::Settled);
}

}  // namespace
