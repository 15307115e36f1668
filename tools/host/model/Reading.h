#pragma once

#include <optional>

/// Where a channel's value lies. NoAnswer: the device did not answer in time, or refused; what it said before is not
/// shown any more.
enum class ChannelState { None, Below, Within, Above, NoAnswer };

/// One channel as it was read once.
struct Reading {
    std::optional<double> current;  // none: no answer, or an answer without a value
    std::optional<double> target;   // none for a sensor, too
    ChannelState state = ChannelState::None;
    bool airMode = false;  // of gas channels

    bool Valid() const { return current.has_value(); }
};
