#pragma once

#include <chrono>
#include <cstddef>

/// How much others may ask of the page's server.
struct ServerLimits {
    std::size_t connections = 1100;                             // a thousand that look on, and who asks in between
    std::size_t headerBytes = std::size_t{8} * 1024U;           // of a request
    std::size_t bodyBytes = std::size_t{4} * 1024U;             // of a request
    std::size_t streamBytes = std::size_t{1024} * 1024U;        // that a stream's reader is behind before it is dropped
    std::size_t unsentBytes = std::size_t{64} * 1024U * 1024U;  // of all replies together
    std::size_t pendingTargets = 16;                            // that wait for the device

    std::chrono::milliseconds requestTime{10'000};  // for a whole request, however slowly it comes
    std::chrono::milliseconds sendTime{30'000};     // for a whole reply, however slowly it is read
    std::chrono::milliseconds lingerTime{1'000};    // for a client to read the last reply before it is cut off
    std::chrono::milliseconds setTime{10'000};      // for the device to take a target
    std::chrono::milliseconds heartbeat{15'000};    // after which a stream says that it is still there
    std::chrono::milliseconds stopTime{1'000};      // for what is still being sent at the end
};
