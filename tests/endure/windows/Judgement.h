#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "Exchanges.h"

/// What a host may see of a reply, read from the protocol once more and not with the library's own code.

struct Outcome {
    int result;                   // 0 or -1
    std::optional<double> value;  // none: what the host gave in stays
    auto operator<=>(const Outcome&) const = default;
};

inline constexpr Outcome kNoAnswer{-1, std::nullopt};

/// Of a reply to a command that reads a value. A payload that begins with one of `refusals` is a failure.
Outcome OutcomeOfRead(std::string_view reply, std::string_view refusals);

/// Of a reply to a command that writes one.
Outcome OutcomeOfWrite(std::string_view reply);

/// Whether a reply names an earlier one of the last commands: nobody takes it for the answer to the command at `index`.
bool AnswersAnEarlierCommand(std::string_view reply, const std::vector<Exchange>& exchanges, std::size_t index);

/// The replies that a client may take for the answer to the command at `index`: its own, and the second copy of an
/// answer to one of the commands before, where nothing in it tells whose answer it is.
std::vector<std::string_view> PossibleReplies(const std::vector<Exchange>& exchanges, std::size_t index);
