#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/Reading.h"
#include "oko/CDevApiInterface.h"

/// The live channels of a device, all kinds alike.

/// A number that the device was asked for. Answered without a number: it answered, but named none.
struct Answer {
    bool answered = false;
    std::optional<double> number;
};

/// A channel and the slots that all kinds have. They may wait for the server.
struct Channel {
    ChannelInfo info;
    std::function<Answer()> readCurrent;
    std::function<Answer()> readTarget;
    std::function<bool(double)> setTarget;
    std::function<ChannelState()> bandState;  // from memory: what the last reads say
    std::function<bool()> airMode;            // from memory
};

/// Every channel that Init offers, in the device's order: temperature, gas, humidity. Limits and tolerances are those
/// of this moment; asks no server.
std::vector<Channel> ListChannels(CDevApiInterface& device);

/// Gives each channel a key of its own: its name where no other has it, else "gas:CO2", else "gas:CO2:1".
void GiveKeys(std::vector<ChannelInfo*> channels);

/// The reading that these answers make: a band state needs both numbers, and a gas or humidity channel that is out of
/// its band is below or above by them.
Reading MakeReading(const ChannelInfo& channel, const Answer& current, const Answer& target, ChannelState bandState);
