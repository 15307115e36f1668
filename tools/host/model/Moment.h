#pragma once

#include <cstdint>

/// One instant on both clocks: the world's, for people and files, and one that nobody sets, for durations.
struct Moment {
    std::int64_t utcMs = 0;  // milliseconds since 1970-01-01T00:00:00Z
    double seconds = 0.0;    // monotonic, since this program began; never negative
};
