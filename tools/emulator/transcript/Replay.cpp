#include "transcript/Replay.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "protocol/Answer.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

constexpr int kNotExecuted = 3;
constexpr std::size_t kMostWarnings = 1000;   // a client that sends random bytes must not fill the memory
constexpr double kLongestDelaySeconds = 1e6;  // some eleven days; far from where milliseconds overflow

int Milliseconds(double seconds) {
    return static_cast<int>(std::lround(std::min(seconds, kLongestDelaySeconds) * 1000.0));
}

Transmission DatagramsOf(const Exchange& exchange, ReplayTiming timing) {
    Transmission datagrams;
    for (const Reply& reply : exchange.replies) {
        const bool atOnce = timing == ReplayTiming::AtOnce;
        datagrams.push_back({reply.datagram, atOnce ? 0 : Milliseconds(reply.delaySeconds.value_or(0.0))});
    }
    return datagrams;
}

}  // namespace

Replay::Replay(const std::vector<Exchange>& exchanges, ReplayOptions options) : m_options(std::move(options)) {
    for (const Exchange& exchange : exchanges) {
        if (exchange.command) {
            m_turns[*exchange.command].replies.push_back(DatagramsOf(exchange, m_options.timing));
        }
    }
}

Transmission Replay::Answer(const std::string& command) {
    const auto found = m_turns.find(command);
    if (found == m_turns.end()) {
        return AnswerMissing(command);
    }
    Turns& turns = found->second;
    const std::size_t turn = turns.next;
    turns.next = std::min(turn + 1, turns.replies.size() - 1);
    return turns.replies[turn];
}

Transmission Replay::AnswerMissing(const std::string& command) {
    if (m_warned.size() < kMostWarnings && m_warned.insert(command).second && m_options.onMissing) {
        m_options.onMissing(command);
    }
    if (m_options.missing == MissingReply::Silent) {
        return {};
    }
    const bool hasModel = m_options.missing == MissingReply::Model && m_options.model;
    const emulator::Answer answer =
        hasModel ? m_options.model(command) : emulator::Answer{kNotExecuted, "e not in the record"};
    return {{FormatReply(answer, command), 0}};
}

}  // namespace emulator
