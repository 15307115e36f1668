#pragma once

namespace emulator {

/// How a value moves. Exact, however long the time: whoever lets it pass in one piece or in many gets the same.

struct Motion {
    double value = 0.0;
    double speed = 0.0;  // units a second
};

/// A damped oscillation towards the target that settles within the lag and goes too far by the part `overshoot` of a
/// step. Without a lag the value jumps.
void Control(Motion& motion, double target, double lagSeconds, double overshoot, double seconds);

/// Straight towards the target, the slower the nearer it is.
void Approach(Motion& motion, double target, double lagSeconds, double seconds);

}  // namespace emulator
