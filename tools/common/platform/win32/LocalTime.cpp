#include "platform/LocalTime.h"

#include <windows.h>

#include <cstdint>

namespace {

constexpr std::int64_t kTicksPerMinute = 600'000'000;           // of 100 ns
constexpr std::int64_t kTicksTo1970 = 116'444'736'000'000'000;  // from 1601

std::int64_t Ticks(const FILETIME& time) {
    return static_cast<std::int64_t>((std::uint64_t{time.dwHighDateTime} << 32U) | time.dwLowDateTime);
}

}  // namespace

int LocalOffsetMinutes(std::int64_t utcMs) {
    const auto ticks = static_cast<std::uint64_t>(kTicksTo1970 + utcMs * 10'000);
    const FILETIME utc{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
    SYSTEMTIME utcParts{};
    SYSTEMTIME localParts{};
    FILETIME whole{};
    FILETIME local{};
    // FileTimeToLocalFileTime knows today's offset alone; this way summer and winter are told apart.
    if (FileTimeToSystemTime(&utc, &utcParts) == FALSE ||
        SystemTimeToTzSpecificLocalTime(nullptr, &utcParts, &localParts) == FALSE ||
        SystemTimeToFileTime(&utcParts, &whole) == FALSE || SystemTimeToFileTime(&localParts, &local) == FALSE) {
        return 0;
    }
    return static_cast<int>((Ticks(local) - Ticks(whole)) / kTicksPerMinute);
}
