#include "incubator/Motion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace emulator {

namespace {

/// After the lag e to the power of minus this is left of a step.
constexpr double kSettled = 4.0;

constexpr double kNoLag = 1e-6;        // seconds; less is none
constexpr double kLagsOfRest = 200.0;  // after so many lags nothing is left that a number could hold

/// The damping that goes too far by this part of a step; 1 does not go too far at all.
double DampingOf(double overshoot) {
    if (overshoot <= 0.0) {
        return 1.0;
    }
    const double logarithm = std::log(overshoot);
    return -logarithm / std::sqrt(std::numbers::pi * std::numbers::pi + logarithm * logarithm);
}

}  // namespace

void Control(Motion& motion, double target, double lagSeconds, double overshoot, double seconds) {
    if (lagSeconds < kNoLag) {
        motion = {target, 0.0};
        return;
    }
    seconds = std::min(seconds, kLagsOfRest * lagSeconds);
    // distance'' + 2 decay distance' + (decay^2 + swing^2) distance = 0
    const double damping = DampingOf(overshoot);
    const double decay = kSettled / lagSeconds;
    const double swing = decay / damping * std::sqrt(1.0 - damping * damping);
    const double distance = motion.value - target;
    const double push = motion.speed + decay * distance;
    const double left = std::exp(-decay * seconds);
    const double cosine = std::cos(swing * seconds);
    // The sine over its frequency: where nothing swings that is the time itself.
    const double sine = swing > 0.0 ? std::sin(swing * seconds) / swing : seconds;
    motion.value = target + left * (distance * cosine + push * sine);
    motion.speed = left * (push * cosine - swing * swing * distance * sine - decay * (distance * cosine + push * sine));
}

void Approach(Motion& motion, double target, double lagSeconds, double seconds) {
    const double left = lagSeconds >= kNoLag ? std::exp(-kSettled * seconds / lagSeconds) : 0.0;
    motion = {target + (motion.value - target) * left, 0.0};
}

}  // namespace emulator
