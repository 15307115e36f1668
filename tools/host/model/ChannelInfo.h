#pragma once

#include <string>

/// What does not change about a channel from Init to Close.

enum class ChannelKind { Temperature, Gas, Humidity };

struct ChannelInfo {
    ChannelKind kind = ChannelKind::Temperature;
    int number = 0;  // within its kind
    std::string name;
    std::string
        key;  // unique in the device: the name, "gas:CO2" where kinds share it, "gas:CO2:1" where one has it twice
    bool canSetTarget = false;  // false for a sensor; all that follows is 0 for it
    double min = 0.0;           // of the target
    double max = 0.0;
    double below = 0.0;  // how far under and over the target a value still counts as reached
    double above = 0.0;
};

/// "temperature", "gas", "humidity".
const char* KindName(ChannelKind kind);

/// "°C" or "%", in UTF-8.
const char* UnitOf(ChannelKind kind);
