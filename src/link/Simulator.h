#pragma once

#include <array>
#include <string_view>

#include "base/Text.h"
#include "link/Products.h"
#include "link/Reply.h"
#include "oko/CDevApiInterface.h"

/// The simulated server: answers every command from canned texts and from the channels' own values.

/// What the simulator sees of one channel slot.
struct ChannelView {
    bool exists = false;
    ChannelAddress address;
    double current = 0.0;
    double target = 0.0;
};

/// All channel slots of the device object.
struct ChannelViews {
    std::array<ChannelView, oko::kTemperatureChannels> temperatures{};
    std::array<ChannelView, oko::kGasChannels> gasConcentrations{};
    std::array<ChannelView, oko::kHumidityChannels> humidifiers{};
};

/// Everything that the answers depend on.
struct SimulatorState {
    ChannelViews channels;
    std::string_view listconprod;  // the complete reply to "listconprod"
    bool airMode = false;
};

/// A simulated reply, before it is cut to its reader's buffer.
using SimulatorText = BoundedText<char, kListReplySize + 1>;

/// The reply to `command`, carriage return included. Never fails: an unknown command gets "1".
SimulatorText SimulatorReply(const SimulatorState& state, std::string_view command) noexcept;
