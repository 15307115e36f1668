#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace emulator {

/// The parts of a reply before they go on the wire.
struct Answer {
    int code = 0;
    std::string payload;
};

/// One datagram of a reply, and how long after its command it is sent.
struct Datagram {
    std::string bytes;
    int delayMs = 0;

    bool operator==(const Datagram&) const = default;
};

/// What is sent for one command; nothing: no answer.
using Transmission = std::vector<Datagram>;

/// The datagrams' bytes alone.
std::vector<std::string> BytesOf(const Transmission& transmission);

/// The most that a datagram can carry.
constexpr std::size_t kLongestDatagram = 65'507;

/// "<code>_<echo>_<payload>" and a carriage return.
std::string FormatReply(const Answer& answer, const std::string& echo);

/// A reply taken apart.
struct ReplyParts {
    Answer answer;
    std::string echo;
};

/// Nothing where FormatReply would not give the same bytes again.
std::optional<ReplyParts> SplitReply(std::string_view datagram);

/// Whether the reply has the command between its first "_" and a later one.
bool EchoesCommand(std::string_view reply, std::string_view command);

}  // namespace emulator
