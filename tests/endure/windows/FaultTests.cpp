// A host's calls against a server that misbehaves: every result has to be one that the answers on the wire allow, and
// no value may come from another channel's answer or from an older one.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "Effort.h"
#include "Incubator.h"
#include "Report.h"
#include "endure/windows/Exchanges.h"

namespace {

/// All effects but the ones that leave a client without a time-out waiting: "silent", and an "echo" of a recent
/// command.
constexpr std::array kEffects{
    "code 1",       "code 2",    "code 3",   "code 7",     "error broken", "value",      "value nan",
    "value 999.5",  "empty",     "long 200", "truncate 5", "truncate 20",  "garbage 30", "echo readcurval 1",
    "no-separator", "no-return", "late 2",   "twice"};

std::string Rule(const std::string& pattern, const std::string& effect, const std::string& chance) {
    return pattern + "; chance " + chance + "; " + effect;
}

class FaultTests : public testing::Test {
 protected:
    /// Makes calls under these rules and holds them against the wire.
    void Endure(const std::string& what, const std::vector<std::string>& rules, int count) {
        std::vector<Call> calls;
        const std::vector<Exchange> exchanges =
            m_incubator.With(rules, [&] { calls = m_incubator.MakeCalls(count, what); });
        WireJudge judge(m_incubator.Channels(), exchanges);
        judge.JudgeAll(calls);
        EXPECT_GT(m_incubator.Fired(), count / 10);  // else this proved nothing
        ReportLine(what, std::to_string(calls.size()) + " calls, " + std::to_string(exchanges.size()) + " exchanges, " +
                             std::to_string(m_incubator.Fired()) + " faults; " + std::to_string(judge.Values()) +
                             " values, " + std::to_string(judge.Failures()) + " failures");
    }

    Incubator m_incubator;
};

TEST_F(FaultTests, EachFault_GivesWhatTheAnswersAllow) {
    for (const char* const effect : kEffects) {
        Endure(effect, {Rule("*", effect, "0.2")}, CurrentEffort().faultCalls);
    }
}

/// All but one. An answer under a foreign name is nobody's; behind the copy of an earlier answer that came late it may
/// meet another command. A server that does both has no order that a client could keep.
std::vector<std::string> AllRulesWithout(std::string_view excepted, const std::string& chance) {
    std::vector<std::string> rules;
    for (const std::string_view effect : kEffects) {
        if (!effect.starts_with(excepted)) {
            rules.push_back(Rule("*", std::string(effect), chance));
        }
    }
    return rules;
}

TEST_F(FaultTests, AllFaultsTogether_GiveWhatTheAnswersAllow) {
    for (const std::string excepted : {"twice", "echo"}) {
        for (const std::string chance : {"0.2", "0.02"}) {
            Endure("all but \"" + excepted + "\", chance " + chance, AllRulesWithout(excepted, chance),
                   CurrentEffort().togetherCalls);
        }
    }
}

}  // namespace
