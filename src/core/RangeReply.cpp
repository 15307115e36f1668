#include "core/RangeReply.h"

#include <cstddef>
#include <string_view>

#include "base/Numbers.h"

// kept: docs/oddities.md#range-of-seven-characters
double ReadRangeEnd(std::string_view reply, double missing) noexcept {
    constexpr std::size_t kMaxLength = 7;
    const std::size_t first = reply.find('_');
    const std::size_t second = first == std::string_view::npos ? first : reply.find('_', first + 1);
    if (second == std::string_view::npos || second + 1 >= reply.size()) {
        return missing;
    }
    const std::string_view payload = reply.substr(second + 1);
    if (payload.front() == 'N' || payload.front() == 'e' || payload.front() == 'n') {
        return missing;
    }
    return ParseDouble(payload.substr(0, kMaxLength)).value_or(missing);
}
