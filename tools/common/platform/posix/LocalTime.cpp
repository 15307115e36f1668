#include "platform/LocalTime.h"

#include <cstdint>
#include <ctime>

int LocalOffsetMinutes(std::int64_t utcMs) {
    const std::time_t seconds = utcMs / 1000;
    std::tm local{};
    return localtime_r(&seconds, &local) == nullptr ? 0 : static_cast<int>(local.tm_gmtoff / 60);
}
