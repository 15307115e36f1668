#include "incubator/Motion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace emulator {

namespace {

TEST(MotionTests, TimeInOnePieceAndInMany_EndsAtTheSameValue) {
    for (const double overshoot : {0.0, 0.05, 0.5, 0.9}) {
        SCOPED_TRACE(overshoot);
        Motion whole{20.0, 3.0};
        Motion pieces = whole;
        Control(whole, 37.0, 60.0, overshoot, 25.0);
        for (int i = 0; i < 2500; ++i) {
            Control(pieces, 37.0, 60.0, overshoot, 0.01);
        }
        EXPECT_NEAR(pieces.value, whole.value, 1e-6);
        EXPECT_NEAR(pieces.speed, whole.speed, 1e-6);
        EXPECT_GT(std::abs(whole.value - 20.0), 1.0);
    }
}

TEST(MotionTests, Step_GoesTooFarByItsPartAndSettles) {
    for (const double overshoot : {0.0, 0.1, 0.5}) {
        SCOPED_TRACE(overshoot);
        Motion motion{20.0, 0.0};
        double highest = motion.value;
        for (int i = 0; i < 2000; ++i) {  // twice the lag
            Control(motion, 30.0, 10.0, overshoot, 0.01);
            highest = std::max(highest, motion.value);
        }
        EXPECT_NEAR(motion.value, 30.0, 0.1);
        EXPECT_NEAR(highest, 30.0 + 10.0 * overshoot, 0.04);
        Control(motion, 30.0, 10.0, overshoot, 1e9);
        EXPECT_EQ(motion.value, 30.0);
    }
}

TEST(MotionTests, Speed_IsWhatTheValueChangesBy) {
    for (const double overshoot : {0.0, 0.3}) {
        Motion before{20.0, -2.0};
        Control(before, 30.0, 10.0, overshoot, 3.0);
        Motion after = before;
        Control(after, 30.0, 10.0, overshoot, 1e-6);
        EXPECT_NEAR((after.value - before.value) / 1e-6, before.speed, 1e-3);
    }
}

TEST(MotionTests, WithoutLag_ValuesJump) {
    Motion motion{20.0, 5.0};
    Control(motion, 30.0, 0.0, 0.5, 0.0);
    EXPECT_EQ(motion.value, 30.0);
    EXPECT_EQ(motion.speed, 0.0);
    Approach(motion, 10.0, 0.0, 0.0);
    EXPECT_EQ(motion.value, 10.0);
}

TEST(MotionTests, Approach_NeverGoesTooFarAndKeepsNoSpeed) {
    Motion motion{37.0, 50.0};
    double last = motion.value;
    for (int i = 0; i < 100; ++i) {
        Approach(motion, 20.0, 10.0, 0.1);
        EXPECT_LT(motion.value, last);
        EXPECT_GT(motion.value, 20.0);
        EXPECT_EQ(motion.speed, 0.0);
        last = motion.value;
    }
    EXPECT_NEAR(last, 20.0, 0.5);
}

TEST(MotionTests, AnyTime_LeavesNumbersFinite) {
    for (const double lag : {1e-7, 1e-6, 1.0, 1e6}) {
        for (const double seconds : {0.0, 1e-300, 1.0, 1e9, 1e300, HUGE_VAL}) {
            Motion motion{-1e9, 1e9};
            Control(motion, 1e9, lag, 0.9, seconds);
            EXPECT_TRUE(std::isfinite(motion.value) && std::isfinite(motion.speed)) << lag << " " << seconds;
            Approach(motion, -1e9, lag, seconds);
            EXPECT_TRUE(std::isfinite(motion.value)) << lag << " " << seconds;
        }
    }
}

}  // namespace

}  // namespace emulator
