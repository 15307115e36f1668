#pragma once

#include <optional>

#include "model/ChannelInfo.h"

/// Where a channel's value lies. None: nobody can say, as of a sensor. NoValue: an answer came, without a number in it.
/// NoAnswer: none came in time, or a refusal. What was read before is not shown any more then.
enum class ChannelState { None, Below, Within, Above, NoValue, NoAnswer };

/// One channel as it was read once.
struct Reading {
    std::optional<double> current;  // none: no answer, or an answer without a value
    std::optional<double> target;   // none for a sensor, too
    ChannelState state = ChannelState::None;
    bool airMode = false;  // of gas channels

    bool Valid() const { return current.has_value(); }
};

/// "-", "heating" (a temperature below its band), "below", "ok", "above", "no value", "no answer".
const char* StateName(ChannelKind kind, ChannelState state);
