#pragma once

#include <cstdint>

/// Blocks the calling thread.
void SleepMilliseconds(std::uint32_t milliseconds) noexcept;

/// The performance counter, and how many of its ticks make a second.
std::int64_t PerformanceCounter() noexcept;
std::int64_t PerformanceFrequency() noexcept;

/// Seconds since 1970, the seed of the random numbers.
std::uint32_t CurrentTimeSeconds() noexcept;
