#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "model/Snapshot.h"

/// What the device thread tells the main thread, in this order: CallBegun, Opened or Failed; rounds of CallBegun and
/// ChannelRead for each channel with a RoundDone at the end; Closed. LogLine and TargetSet come in between. Nothing
/// comes while a call into the device does not return: that is how the main thread sees it.
namespace device_message {

struct Opened {
    DeviceInfo device;
    std::vector<ChannelInfo> channels;
};

struct Failed {
    int exitCode = 0;
    std::string sentence;  // for the user
};

/// A call into the device is about to be made: for a channel, or for all of it.
struct CallBegun {
    std::optional<std::size_t> channel;
};

struct ChannelRead {
    std::size_t channel = 0;
    Reading reading;
    std::vector<double> callSeconds;  // how long each call for it took
};

struct RoundDone {};

/// A target was asked for. Not accepted: no answer or refused. `taken` is what the device then says it aims at.
struct TargetSet {
    std::uint64_t request = 0;
    std::size_t channel = 0;
    double asked = 0.0;
    bool accepted = false;
    std::optional<double> taken;
};

/// A line that the library logged.
struct LogLine {
    std::string text;
};

struct Closed {
    std::size_t notices = 0;  // change notices that the library posted
};

}  // namespace device_message

struct DeviceMessage {
    Moment when;
    std::variant<device_message::Opened, device_message::Failed, device_message::CallBegun, device_message::ChannelRead,
                 device_message::RoundDone, device_message::TargetSet, device_message::LogLine, device_message::Closed>
        what;
};
