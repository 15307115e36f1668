#include "platform/Clock.h"

#include <cstdint>
#include <ctime>

#include "platform/win32/Windows.h"

void SleepMilliseconds(std::uint32_t milliseconds) noexcept { Sleep(milliseconds); }

std::int64_t PerformanceCounter() noexcept {
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    return counter.QuadPart;
}

std::int64_t PerformanceFrequency() noexcept {
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}

std::uint32_t CurrentTimeSeconds() noexcept { return static_cast<std::uint32_t>(std::time(nullptr)); }
