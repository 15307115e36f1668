#pragma once

#include <string>
#include <string_view>

#include "text/Parsed.h"

/// Durations as people write them and read them.

/// Seconds of "500ms", "10s", "2m", "2min", "1h30m", "1.5 h" or "3d"; a bare number is seconds. From nothing to
/// kLongestDuration; the units stand from the largest to the smallest, each once.
Parsed<double> ParseDuration(std::string_view text);

constexpr double kLongestDuration = 1e9;  // s, some thirty years

/// "1 h 30 min", "2.5 s", "500 ms"; from a minute on in whole seconds. What is no duration is "-".
std::string FormatDuration(double seconds);
