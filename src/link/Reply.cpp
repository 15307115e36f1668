#include "link/Reply.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

#include "base/Numbers.h"

// kept: docs/oddities.md#code-of-one-character
int ResultCodeOf(std::string_view reply) noexcept { return ParseInteger(reply.substr(0, 1)); }

std::optional<std::string_view> EchoOf(std::string_view reply) noexcept {
    const std::size_t first = reply.find('_');
    const std::size_t second = first == std::string_view::npos ? first : reply.find('_', first + 1);
    if (second == std::string_view::npos) {
        return std::nullopt;
    }
    return reply.substr(first + 1, second - first - 1);
}

std::optional<std::size_t> PayloadPosition(std::string_view reply) noexcept {
    int underscores = 0;
    for (std::size_t i = 0; i < reply.size() && reply[i] != kReplyEnd; ++i) {
        if (underscores == 2) {
            return i;
        }
        underscores += reply[i] == '_' ? 1 : 0;
    }
    return std::nullopt;
}

std::string_view DropLineEnd(std::string_view text) noexcept {
    if (text.ends_with('\n') || text.ends_with('\r')) {
        text.remove_suffix(1);
    }
    return text;
}

ValueToken ParseValue(std::string_view reply) noexcept {
    const auto position = PayloadPosition(reply);
    if (!position) {
        return {};
    }
    const std::string_view payload = reply.substr(*position);
    const std::size_t end = payload.find_first_of(" \r");
    if (end == std::string_view::npos) {
        return {payload.front(), std::nullopt};
    }
    // kept: docs/oddities.md#letters-read-as-0
    return {payload.front(), ParseDouble(payload.substr(0, end))};
}

ListOutcome ParseIntegerList(std::string_view reply, const std::function<void(int)>& take) {
    int underscores = 0;
    for (std::size_t i = 0; i < reply.size() && reply[i] != kReplyEnd; ++i) {
        if (reply[i] == '_') {
            ++underscores;
            continue;
        }
        if (underscores < 2 || reply[i] == ' ') {
            continue;
        }
        const auto begin = reply.begin() + static_cast<std::ptrdiff_t>(i);
        const auto end = std::find_if_not(begin, reply.end(), IsDigit);
        const auto length = static_cast<std::size_t>(end - begin);
        if (length > kMaxListDigits) {
            return ListOutcome::NumberTooLong;
        }
        take(ParseInteger(reply.substr(i, length)));
        // kept: docs/oddities.md#list-steps-over-its-ends
        i += length;
    }
    return ListOutcome::Complete;
}
