#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Incubator.h"
#include "endure/windows/Judgement.h"
#include "oko/Result.h"
#include "transcript/Transcript.h"

bool WireJudge::NextIs(const std::string& command) const {
    return m_next < m_exchanges.size() && m_exchanges[m_next].command == command;
}

std::size_t WireJudge::Take(const std::string& command) {
    m_bHeld = m_bHeld && NextIs(command);
    EXPECT_TRUE(NextIs(command)) << command << " was not sent; but "
                                 << (m_next < m_exchanges.size() ? m_exchanges[m_next].command : "nothing");
    return std::min(m_next++, m_exchanges.size() - 1);
}

std::set<Outcome> WireJudge::Reads(std::size_t index, std::string_view refusals) const {
    std::set<Outcome> allowed;
    for (const std::string_view reply : PossibleReplies(m_exchanges, index)) {
        allowed.insert(OutcomeOfRead(reply, refusals));
    }
    if (m_bNoAnswerAllowed) {
        allowed.insert(kNoAnswer);
    }
    return allowed;
}

std::set<Outcome> WireJudge::Writes(std::size_t index) const {
    std::set<Outcome> allowed;
    for (const std::string_view reply : PossibleReplies(m_exchanges, index)) {
        allowed.insert(OutcomeOfWrite(reply));
    }
    if (m_bNoAnswerAllowed) {
        allowed.insert(kNoAnswer);
    }
    return allowed;
}

void WireJudge::Expect(const std::set<Outcome>& allowed, const Outcome& seen, const Call& call) {
    if (allowed.contains(seen)) {
        return;
    }
    m_bHeld = false;
    const auto text = [](const Outcome& outcome) {
        return std::to_string(outcome.result) + (outcome.value ? " with " + std::to_string(*outcome.value) : "");
    };
    std::string expected;
    for (const Outcome& outcome : allowed) {
        expected += (expected.empty() ? "" : " or ") + text(outcome);
    }
    const std::size_t index = m_next - 1;
    std::string wire;
    constexpr std::size_t kShown = 9;
    for (std::size_t i = index - std::min(index, kShown); i <= index && i < m_exchanges.size(); ++i) {
        emulator::Exchange exchange{static_cast<double>(i), m_exchanges[i].command, {}};
        for (const std::string& reply : m_exchanges[i].replies) {
            exchange.replies.push_back({reply, {}});
        }
        wire += "\n  " + emulator::FormatTranscriptLine(exchange);
    }
    ADD_FAILURE() << m_channels[call.channel].name << " gave " << text(seen) << ", not " << expected << wire;
}

void WireJudge::JudgeRead(const Call& call, const std::string& command, std::string_view refusals) {
    const Outcome seen{call.result, call.value != call.given ? std::optional(call.value) : std::nullopt};
    Expect(Reads(Take(command), refusals), seen, call);
    m_values += seen.value ? 1 : 0;
    if (call.kind == Call::Kind::Target && seen.value) {
        m_channels[call.channel].rememberedTarget = *seen.value;
    }
}

void WireJudge::JudgeWrite(const Call& call) {
    const LiveChannel& channel = m_channels[call.channel];
    Expect(Writes(Take(channel.WriteCommand(call.given))), {call.result, std::nullopt}, call);
    if (call.result != oko::kSuccess || !channel.readsBack) {
        return;
    }
    std::set<Outcome> readBack = Reads(Take(channel.targetCommand), channel.targetRefusals);
    // One that has no answer in time is repeated. The call after a write never reads the target, so these are no
    // call's.
    constexpr int kMaxRepeats = 2;
    for (int repeats = 0; repeats < kMaxRepeats && m_bNoAnswerAllowed && NextIs(channel.targetCommand); ++repeats) {
        readBack = Reads(Take(channel.targetCommand), channel.targetRefusals);
    }
    // A target that cannot be read back is taken back.
    const bool restored = NextIs(channel.WriteCommand(m_channels[call.channel].rememberedTarget));
    const int result = restored ? oko::kFailure : oko::kSuccess;
    const bool allowed =
        std::ranges::any_of(readBack, [&](const Outcome& outcome) { return outcome.result == result; });
    m_bHeld = m_bHeld && allowed;
    EXPECT_TRUE(allowed) << channel.name << (restored ? " was restored" : " was not restored");
    if (restored) {
        ++m_next;
    } else {
        m_channels[call.channel].rememberedTarget = call.given;
    }
}

void WireJudge::JudgeAll(const std::vector<Call>& calls) {
    for (const Call& call : calls) {
        Judge(call);
        if (!m_bHeld) {
            return;
        }
    }
    EXPECT_EQ(m_next, m_exchanges.size()) << "more was sent than these calls send";
}

void WireJudge::Judge(const Call& call) {
    const LiveChannel& channel = m_channels[call.channel];
    m_failures += call.result != oko::kSuccess ? 1 : 0;
    switch (call.kind) {
        case Call::Kind::Current:
            return JudgeRead(call, channel.currentCommand, channel.currentRefusals);
        case Call::Kind::Target:
            if (!channel.watchCommand.empty()) {
                Take(channel.watchCommand);
            }
            return JudgeRead(call, channel.targetCommand, channel.targetRefusals);
        case Call::Kind::Write:
            return JudgeWrite(call);
    }
}
