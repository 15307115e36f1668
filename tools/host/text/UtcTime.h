#pragma once

#include <cstdint>
#include <string>

/// Milliseconds since 1970 as "2026-11-21T21:40:00.123Z": the same in every file, page and reply.
std::string FormatUtc(std::int64_t utcMs);
