// When a value counts as settled, with a clock that the test turns.

#include "judge/Settling.h"

#include <gtest/gtest.h>

#include <optional>

#include "MadeChannels.h"
#include "judge/Band.h"

namespace {

constexpr Band kBand{4.5, 5.5};

TEST(Settling, SettlesAfterThatLongInItsBand) {
    Settling settling(60.0, {}, SinceBegin(0));
    EXPECT_EQ(settling.Update(3.0, kBand, SinceBegin(0)), SettlingState::Waiting);
    EXPECT_EQ(settling.Describe(Co2()), "CO2 is 3.00 %, below 4.50 %");
    EXPECT_EQ(settling.Update(4.5, kBand, SinceBegin(100)), SettlingState::Waiting);
    EXPECT_EQ(settling.Progress(), 0.0);
    EXPECT_EQ(settling.Update(5.5, kBand, SinceBegin(115)), SettlingState::Waiting);
    EXPECT_EQ(settling.Progress(), 0.25);
    EXPECT_EQ(settling.HeldSeconds(), 15.0);
    EXPECT_EQ(settling.Describe(Co2()), "CO2 is 5.50 %, within 4.50 to 5.50 %, for 15 s of 1 min");
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(159.9)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(160)), SettlingState::Settled);
    EXPECT_EQ(settling.Progress(), 1.0);
    EXPECT_EQ(settling.Describe(Co2()), "CO2 is 5.00 %, within 4.50 to 5.50 %");
}

TEST(Settling, ShortHoldIsToldInFractionsOfASecond) {
    Settling settling(0.3, {}, SinceBegin(0));
    settling.Update(5.0, kBand, SinceBegin(0));
    settling.Update(5.0, kBand, SinceBegin(0.125));
    EXPECT_EQ(settling.Describe(Co2()), "CO2 is 5.00 %, within 4.50 to 5.50 %, for 125 ms of 300 ms");
}

TEST(Settling, ValueOutsideInterrupts) {
    Settling settling(10.0, {}, SinceBegin(0));
    settling.Update(5.0, kBand, SinceBegin(0));
    EXPECT_EQ(settling.Update(5.6, kBand, SinceBegin(9)), SettlingState::Waiting);
    EXPECT_EQ(settling.HeldSeconds(), 0.0);
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(10)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(19)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(20)), SettlingState::Settled);
}

TEST(Settling, MissingDataInterrupts) {
    Settling settling(10.0, {}, SinceBegin(0));
    settling.Update(5.0, kBand, SinceBegin(0));
    EXPECT_EQ(settling.Update({}, kBand, SinceBegin(9)), SettlingState::Waiting);
    EXPECT_EQ(settling.Describe(Co2()), "CO2 gives no value");
    EXPECT_EQ(settling.Update({}, kBand, SinceBegin(30)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(31)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(41)), SettlingState::Settled);
}

TEST(Settling, ChangedBandInterrupts) {
    Settling settling(10.0, {}, SinceBegin(0));
    settling.Update(5.0, kBand, SinceBegin(0));
    EXPECT_EQ(settling.Update(5.0, {4.6, 5.6}, SinceBegin(10)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, {4.6, 5.6}, SinceBegin(20)), SettlingState::Settled);
}

TEST(Settling, WithoutTimeToHoldTheFirstValueInsideSettles) {
    Settling settling(0.0, {}, SinceBegin(0));
    EXPECT_EQ(settling.Update(4.0, kBand, SinceBegin(0)), SettlingState::Waiting);
    EXPECT_EQ(settling.Progress(), 0.0);
    EXPECT_EQ(settling.Update({}, kBand, SinceBegin(1)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(2)), SettlingState::Settled);
    EXPECT_EQ(settling.Progress(), 1.0);
}

TEST(Settling, GivesUpInTime) {
    Settling settling(10.0, 60.0, SinceBegin(0));
    EXPECT_EQ(settling.Update(4.0, kBand, SinceBegin(59)), SettlingState::Waiting);
    EXPECT_EQ(settling.Update(4.0, kBand, SinceBegin(60)), SettlingState::GivenUp);
    EXPECT_EQ(settling.Describe(Co2()), "CO2 is 4.00 %, below 4.50 %");
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(61)), SettlingState::GivenUp);
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(100)), SettlingState::GivenUp);
}

TEST(Settling, GivesUpWithoutData) {
    Settling settling(10.0, 60.0, SinceBegin(0));
    EXPECT_EQ(settling.Update({}, kBand, SinceBegin(60)), SettlingState::GivenUp);
}

TEST(Settling, WhatSettlesInTheLastMomentHasSettled) {
    Settling settling(10.0, 60.0, SinceBegin(0));
    settling.Update(5.0, kBand, SinceBegin(50));
    EXPECT_EQ(settling.Update(5.0, kBand, SinceBegin(60)), SettlingState::Settled);
    EXPECT_EQ(settling.Update(1.0, kBand, SinceBegin(99)), SettlingState::Settled);
}

}  // namespace
