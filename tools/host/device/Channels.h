#pragma once

#include <functional>
#include <string>
#include <vector>

#include "model/ChannelInfo.h"
#include "oko/CDevApiInterface.h"

/// The live channels of a device, all kinds alike.

struct Channel {
    ChannelKind kind;
    int number;  // within its kind
    std::string name;

    // The slots that all kinds have; a read gives NaN where there is no value.
    std::function<double()> readCurrent;
    std::function<double()> readTarget;
    std::function<bool(double)> setTarget;
    std::function<std::string()> readState;
};

/// Every channel that Init offers, in the device's order.
std::vector<Channel> ListChannels(CDevApiInterface& device);
