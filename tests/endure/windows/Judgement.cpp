#include "Judgement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "endure/windows/Exchanges.h"

namespace {

constexpr std::size_t kReplyBuffer = 64;

/// How far back a client knows its commands, and how far back an answer that names none may have been held up.
constexpr std::size_t kCommandsKnown = 32;

bool IsAnswer(std::string_view reply) { return !reply.empty() && reply.size() <= kReplyBuffer; }

int CodeOf(std::string_view reply) {
    const char first = reply.front();
    return first >= '0' && first <= '9' ? first - '0' : 0;
}

/// What follows the second "_" of the line; nothing when there is none.
std::string_view PayloadOf(std::string_view reply) {
    const std::string_view line = reply.substr(0, reply.find('\r'));
    const std::size_t first = line.find('_');
    const std::size_t second = first == std::string_view::npos ? first : line.find('_', first + 1);
    return second == std::string_view::npos ? std::string_view{} : reply.substr(second + 1);
}

/// The number at the start of a text; 0 when there is none.
double NumberOf(std::string_view text) { return std::strtod(std::string(text).c_str(), nullptr); }

}  // namespace

Outcome OutcomeOfRead(std::string_view reply, std::string_view refusals) {
    if (!IsAnswer(reply) || CodeOf(reply) == 3) {
        return kNoAnswer;
    }
    const std::string_view payload = PayloadOf(reply);
    if (CodeOf(reply) > 3 || payload.empty() || payload.front() == '\r') {
        return {0, std::nullopt};
    }
    if (refusals.find(payload.front()) != std::string_view::npos) {
        return {-1, std::nullopt};
    }
    const std::size_t end = payload.find_first_of(" \r");
    if (end == std::string_view::npos) {
        return {0, std::nullopt};
    }
    const double value = NumberOf(payload.substr(0, end));
    return {0, std::isfinite(value) ? std::optional(value) : std::nullopt};
}

Outcome OutcomeOfWrite(std::string_view reply) {
    return {IsAnswer(reply) && CodeOf(reply) != 3 ? 0 : -1, std::nullopt};
}

bool AnswersAnEarlierCommand(std::string_view reply, const std::vector<Exchange>& exchanges, std::size_t index) {
    const std::size_t first = reply.find('_');
    const std::size_t second = first == std::string_view::npos ? first : reply.find('_', first + 1);
    if (second == std::string_view::npos) {
        return false;
    }
    const std::string_view echo = reply.substr(first + 1, second - first - 1);
    if (echo == exchanges[index].command) {
        return false;
    }
    const auto begin = exchanges.begin() + static_cast<std::ptrdiff_t>(index - std::min(index, kCommandsKnown - 1));
    const auto end = exchanges.begin() + static_cast<std::ptrdiff_t>(index);
    return std::any_of(begin, end, [&](const Exchange& earlier) { return earlier.command == echo; });
}

std::vector<std::string_view> PossibleReplies(const std::vector<Exchange>& exchanges, std::size_t index) {
    std::vector<std::string_view> replies;
    if (!exchanges[index].replies.empty()) {
        replies.emplace_back(exchanges[index].replies.front());
    }
    bool heldUp = false;
    for (std::size_t i = index - std::min(index, kCommandsKnown); i < index; ++i) {
        heldUp = heldUp || exchanges[i].replies.size() > 1;
        // Behind a copy that was taken for an answer the answers may follow one command late.
        if (heldUp && !exchanges[i].replies.empty() &&
            !AnswersAnEarlierCommand(exchanges[i].replies.front(), exchanges, index)) {
            replies.emplace_back(exchanges[i].replies.front());
        }
    }
    return replies;
}
