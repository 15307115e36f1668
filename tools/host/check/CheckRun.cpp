#include "check/CheckRun.h"

#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "check/CheckLines.h"
#include "platform/PipedProcess.h"
#include "text/Duration.h"
#include "text/Words.h"

namespace check {

const char* VerdictName(CheckVerdict verdict) {
    constexpr std::array<const char*, 6> kNames{"passed", "failed", "crashed", "hung", "skipped", "unusable"};
    return kNames[static_cast<std::size_t>(verdict)];  // cppcheck-suppress CastIntegerToAddressAtReturn; it is a text
}

void CheckWitness::Take(const CheckLine& line) {
    if (line.word == word::kEnter) {
        m_call = line.text;
        m_bInside = true;
    } else if (line.word == word::kLeave) {
        m_bInside = false;
        m_box.clear();
    } else if (m_word.empty() && line.word != word::kAsk) {
        m_word = line.word;
        m_text = line.text;
    }
}

void CheckWitness::Judge(const ProcessEnd& end, double timeLimit, CheckResult& result) const {
    const std::string place = m_call.empty() ? "before the first call" : (m_bInside ? "in " : "after ") + m_call;
    const auto say = [&](CheckVerdict verdict, std::string reason) {
        result.verdict = verdict;
        result.reason = std::move(reason);
    };
    // What failed has failed, however the process ends then; what passed must also end.
    if (m_word == word::kFailed) {
        say(CheckVerdict::Failed, m_text);
        return;
    }
    if (m_word == word::kSkipped || m_word == word::kUnusable) {
        say(m_word == word::kSkipped ? CheckVerdict::Skipped : CheckVerdict::Unusable, m_text);
        return;
    }
    if (end.kind == ProcessEnd::Kind::Killed) {
        result.call = m_call;
        say(CheckVerdict::Hung, "hung " + place + " for " + FormatDuration(timeLimit) +
                                    (m_box.empty() ? "" : ", behind its box " + InQuotes(m_box)));
    } else if (end.kind == ProcessEnd::Kind::Crashed) {
        result.call = m_call;
        say(CheckVerdict::Crashed, "crashed " + place + ": " + end.reason);
    } else if (m_word != word::kPassed || end.exitCode != 0) {
        result.call = m_call;
        say(CheckVerdict::Crashed, "ended the process " + place + ", with exit code " + std::to_string(end.exitCode));
    } else {
        say(CheckVerdict::Passed, {});
    }
}

}  // namespace check
