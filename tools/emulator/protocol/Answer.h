#pragma once

#include <string>
#include <vector>

namespace emulator {

/// The parts of a reply before they go on the wire.
struct Answer {
    int code = 0;
    std::string payload;
};

/// What is sent for one command, and how late.
struct Transmission {
    std::vector<std::string> datagrams;  // none: no answer
    int delayMs = 0;
};

/// "<code>_<echo>_<payload>" and a carriage return.
std::string FormatReply(const Answer& answer, const std::string& echo);

}  // namespace emulator
