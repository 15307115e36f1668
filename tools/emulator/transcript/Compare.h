#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "transcript/Transcript.h"

namespace emulator {

/// What another server answered differently.
struct Difference {
    int line = 0;  // of the transcript
    std::string command;
    std::string what;      // "code", "echo", "payload", "number" (of datagrams), "reply" (one that has no such parts)
    std::string recorded;  // for people
    std::string got;
};

/// Holds what came against what was recorded. Payloads that are numbers, or lists of as many numbers, may differ by the
/// tolerance; without one they must be the same.
std::vector<Difference> CompareReplies(const Exchange& recorded, const std::vector<std::string>& got,
                                       std::optional<double> tolerance);

/// "no answer", "1 datagram", "2 datagrams".
std::string CountText(std::size_t datagrams);

/// "line 12, readcurval 9: payload: recorded "37.000", got "36.900"".
std::string FormatDifference(const Difference& difference);

}  // namespace emulator
