// With a time-out for replies: a server that is silent or late costs a call its answer, and nothing else.

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include "Effort.h"
#include "Incubator.h"
#include "RegistryNames.h"
#include "Report.h"
#include "endure/windows/Exchanges.h"
#include "oko/Result.h"
#include "platform/win32/Windows.h"

namespace {

/// The registry value that gives up a silent server, while the object lives.
class ReplyTimeout {
 public:
    explicit ReplyTimeout(DWORD milliseconds) {
        EXPECT_EQ(
            RegSetKeyValueW(HKEY_LOCAL_MACHINE, kMiscKey, kTimeoutValue, REG_DWORD, &milliseconds, sizeof milliseconds),
            ERROR_SUCCESS);
    }
    ~ReplyTimeout() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kMiscKey, kTimeoutValue); }
    ReplyTimeout(const ReplyTimeout&) = delete;
    ReplyTimeout& operator=(const ReplyTimeout&) = delete;
};

class TimeoutTests : public testing::Test {
 protected:
    enum class Expected { Failures, NoFailure };

    void Endure(const std::string& what, const std::vector<std::string>& rules,
                Expected expected = Expected::Failures) {
        std::vector<Call> calls;
        const std::vector<Exchange> exchanges =
            m_incubator.With(rules, [&] { calls = m_incubator.MakeCalls(CurrentEffort().timeoutCalls, what); });
        WireJudge judge(m_incubator.Channels(), exchanges);
        judge.AllowNoAnswer();
        judge.JudgeAll(calls);
        EXPECT_GT(m_incubator.Fired(), 0);
        EXPECT_EQ(judge.Failures() > 0, expected == Expected::Failures) << judge.Failures();
        EXPECT_GT(judge.Values(), 0);
        ReportLine(what + ", with a time-out",
                   std::to_string(calls.size()) + " calls, " + std::to_string(exchanges.size()) + " exchanges, " +
                       std::to_string(m_incubator.Fired()) + " faults; " + std::to_string(judge.Values()) +
                       " values, " + std::to_string(judge.Failures()) + " failures");
    }

    const ReplyTimeout m_timeout{200};
    Incubator m_incubator;
};

TEST_F(TimeoutTests, SilentServer_CostsOnlyItsOwnAnswers) { Endure("silent", {"*; chance 0.2; silent"}); }

TEST_F(TimeoutTests, LateServer_CostsOnlyItsOwnAnswers) { Endure("late 300", {"*; chance 0.2; late 300"}); }

TEST_F(TimeoutTests, AnswerUnderARecentCommandsName_IsNotTaken) {
    Endure("echo of a recent command", {"*; chance 0.2; echo " + m_incubator.Channels().front().currentCommand});
}

TEST_F(TimeoutTests, ServerThatEchoesLoosely_CostsNoAnswer) {
    std::vector<std::string> rules;
    for (const LiveChannel& channel : m_incubator.Channels()) {
        if (const std::size_t sensor = channel.currentCommand.find('('); sensor != std::string::npos) {
            rules.push_back(channel.currentCommand + "; always; echo " + channel.currentCommand.substr(0, sensor));
        }
    }
    m_incubator.Device().ApplyConnection(L"m_iComPort 3");  // a link that has not yet had an echo to the letter
    Endure("loose echoes", rules, Expected::NoFailure);
}

TEST_F(TimeoutTests, ServerSlowerThanTheTimeout_IsReadAllTheSame) {
    constexpr int kReads = 20;
    int answered = 0;
    m_incubator.With({"*; always; late 240"}, [&] {
        for (int i = 0; i < kReads; ++i) {
            NoteProgress("reads of a slow server");
            double value = 0.0;
            answered += m_incubator.Channels().front().readCurrent(&value) == oko::kSuccess ? 1 : 0;
        }
    });
    // Every second one where nothing else takes time: its reply is the late one of the read before.
    EXPECT_GE(answered, kReads / 4);
    ReportLine("a server slower than the timeout",
               std::to_string(answered) + " of " + std::to_string(kReads) + " reads of one channel answered");
}

TEST_F(TimeoutTests, SilentLateAndTwiceTogether_GiveNoAnswerToAnother) {
    Endure("silent, late and twice", {"*; chance 0.2; silent", "*; chance 0.2; late 300", "*; chance 0.2; twice"});
}

TEST_F(TimeoutTests, CloseFromASecondThread_GetsThroughToASilentServer) {
    std::atomic<bool> closed = false;
    int calls = 0;
    const std::vector<Exchange> exchanges = m_incubator.With({"*; always; silent"}, [&] {
        std::thread closer([&] {
            Sleep(500);  // into the middle of the calls
            m_incubator.Device().Close();
            closed = true;
        });
        double value = 0.0;
        while (!closed) {
            NoteProgress("calls while another thread closes");
            EXPECT_EQ(m_incubator.Channels().front().readCurrent(&value), oko::kFailure);
            ++calls;
        }
        closer.join();
    });
    // And it comes up again.
    m_incubator.With({}, [&] {
        m_incubator.Device().ApplyConnection(L"m_iComPort 3");
        EXPECT_EQ(m_incubator.Device().Init(nullptr, nullptr), oko::kSuccess);
        double value = 0.0;
        EXPECT_EQ(m_incubator.Channels().front().readCurrent(&value), oko::kSuccess);
    });
    EXPECT_GT(calls, 0);
    ReportLine("Close from a second thread", "got through after " + std::to_string(calls) +
                                                 " calls without an answer, " + std::to_string(exchanges.size()) +
                                                 " commands sent");
}

}  // namespace
