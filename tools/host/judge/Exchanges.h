#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "model/DeviceMessage.h"

/// The exchanges between library and server, as far as the library logs them.

struct Exchange {
    double beginSeconds = 0.0;  // since this program began
    double durationSeconds = 0.0;
    std::string command;               // bytes
    std::optional<std::string> reply;  // none: no answer, or an empty one, which the library takes for none
};

/// Command and reply of a line that the library logs after an exchange; nothing of any other line. The line is UTF-8,
/// each of whose characters was a byte of the wire.
std::optional<Exchange> ReadExchangeLine(std::string_view line);

/// Gives each exchange its time. A line comes when its exchange is over; it began when the one before it in the same
/// call was over, or with the call.
class ExchangeTimes {
 public:
    std::optional<Exchange> Take(const DeviceMessage& message);

 private:
    double m_dBegun = 0.0;
};

/// A line of a transcript as the emulator's --replay reads it: seconds and duration, command, reply, with tabs in
/// between. The two numbers share the first column, of which the emulator makes nothing: a further one would be taken
/// for a second reply.
std::string TranscriptLine(const Exchange& exchange);
