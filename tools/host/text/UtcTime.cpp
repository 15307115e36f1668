#include "text/UtcTime.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <tuple>

std::string FormatUtc(std::int64_t utcMs) {
    using namespace std::chrono;
    const sys_time<milliseconds> when{milliseconds{utcMs}};
    const auto day = floor<days>(when);
    const year_month_day date{day};
    const hh_mm_ss time{when - day};
    std::array<char, 64> text{};
    std::ignore = std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", int{date.year()},
                                unsigned{date.month()}, unsigned{date.day()}, static_cast<int>(time.hours().count()),
                                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
                                static_cast<int>(time.subseconds().count()));
    return text.data();
}
