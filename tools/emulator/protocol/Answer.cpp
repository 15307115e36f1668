#include "protocol/Answer.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/Number.h"

namespace emulator {

std::string FormatReply(const Answer& answer, const std::string& echo) {
    return std::to_string(answer.code) + "_" + echo + "_" + answer.payload + "\r";
}

std::vector<std::string> BytesOf(const Transmission& transmission) {
    std::vector<std::string> bytes;
    bytes.reserve(transmission.size());
    for (const Datagram& datagram : transmission) {
        bytes.push_back(datagram.bytes);
    }
    return bytes;
}

std::optional<ReplyParts> SplitReply(std::string_view datagram) {
    const std::size_t first = datagram.find('_');
    const std::size_t second = first == std::string_view::npos ? first : datagram.find('_', first + 1);
    if (second == std::string_view::npos || !datagram.ends_with('\r')) {
        return std::nullopt;
    }
    const auto code = ReadExactly<int>(datagram.substr(0, first));
    if (!code) {
        return std::nullopt;
    }
    ReplyParts parts;
    parts.answer.code = *code;
    parts.echo = datagram.substr(first + 1, second - first - 1);
    parts.answer.payload = datagram.substr(second + 1, datagram.size() - second - 2);
    // "007" and "-0" are codes, too, but would not come out as they went in.
    return FormatReply(parts.answer, parts.echo) == datagram ? std::optional(parts) : std::nullopt;
}

bool EchoesCommand(std::string_view reply, std::string_view command) {
    const std::size_t first = reply.find('_');
    if (first == std::string_view::npos) {
        return false;
    }
    reply.remove_prefix(first + 1);
    return reply.starts_with(command) && reply.substr(command.size()).starts_with('_');
}

}  // namespace emulator
