#pragma once

#include <cstdint>

/// How far the local time is ahead of UTC at that instant (milliseconds since 1970-01-01T00:00:00Z); negative in the
/// west.
int LocalOffsetMinutes(std::int64_t utcMs);
