#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "faults/FaultRule.h"
#include "faults/Faults.h"
#include "net/Address.h"
#include "net/Placeholder.h"
#include "net/Proxy.h"
#include "net/ServerBehind.h"
#include "net/UdpServer.h"
#include "program/ExchangeLog.h"
#include "program/LineOutput.h"
#include "program/Options.h"
#include "program/Run.h"
#include "program/RunFrame.h"
#include "protocol/Answer.h"
#include "text/Words.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

constexpr std::chrono::seconds kStartingPatience{1};

/// The options' rules. What acts on the device has none to act on.
void AddRules(Faults& faults, const Options& options) {
    for (std::size_t i = 0; i < options.faults.size(); ++i) {
        const std::string origin = "--fault " + std::to_string(i + 1);
        try {
            FaultRule rule = ParseFaultRule(options.faults[i], origin);
            if (rule.effect.device) {
                throw FaultError("the effect acts on an emulated device, and behind --proxy there is a real one");
            }
            faults.Add(std::move(rule));
        } catch (const FaultError& error) {
            throw FaultError(origin + ": " + error.what());
        }
    }
}

/// The exchanges of a server that the proxy may have started. What clients got before its first answer is the proxy's
/// own word: in the record, it would have a replay leave a library's first question without an answer. What a rule made
/// of an answer belongs there.
class ProxyLog {
 public:
    explicit ProxyLog(ExchangeLog& log) : m_log(log) {}

    void ServerIsStarting() { m_bStarting = true; }
    void ServerAnswers(double now) { m_firstAnswer = m_firstAnswer.value_or(now); }

    /// To be called in the order in which the exchanges began.
    void Add(const Exchange& exchange) {
        m_bStarting = m_bStarting && IsBeforeFirstAnswer(exchange);
        if (m_bStarting) {
            ++m_unanswered;
            m_log.Show(exchange);
        } else {
            m_log.Add(exchange);
        }
    }

    /// How many exchanges were before the server's first answer.
    int Unanswered() const { return m_unanswered; }

 private:
    bool IsBeforeFirstAnswer(const Exchange& exchange) const {
        return !m_firstAnswer || std::ranges::any_of(exchange.replies, [&](const Reply& reply) {
            return reply.datagram.empty() && exchange.seconds + reply.delaySeconds.value_or(0.0) < *m_firstAnswer;
        });
    }

    ExchangeLog& m_log;
    bool m_bStarting = false;
    std::optional<double> m_firstAnswer;  // in the run's seconds
    int m_unanswered = 0;
};

/// What the client gets for the real server's reply.
Transmission Distort(Faults& faults, const std::string& command, const std::string& reply) {
    const std::vector<FaultEffect> effects = faults.Fire(command, RunFrame::Now());
    const std::optional<ReplyParts> parts = SplitReply(reply);
    return parts ? faults.Transmit(effects, parts->echo, parts->answer) : faults.TransmitBytes(effects, reply);
}

}  // namespace

void CheckProxyFaults(const Options& options) {
    Faults faults(options.seed);
    AddRules(faults, options);
}

void RunProxy(const Options& options) {
    RunFrame frame(options);
    LineOutput& output = frame.Output();
    Faults faults(options.seed, [&output](const FaultRule& rule, std::string_view command) {
        output.Show("fault " + InQuotes(rule.source) + " on " + InQuotes(command));
    });
    AddRules(faults, options);
    ExchangeLog exchanges(options, output);
    ProxyLog log(exchanges);
    Proxy::Options passing;
    passing.server = FindServer(options.proxied);
    passing.onExchange = [&log](const std::string& /*client*/, const Exchange& exchange) { log.Add(exchange); };
    passing.onTrouble = [&output](const std::string& sentence) { output.Say("warning: " + sentence); };
    passing.seconds = RunFrame::Now;
    passing.onReply = [&](const std::string& command, const std::string& reply) {
        log.ServerAnswers(RunFrame::Now());
        return options.faults.empty() ? Transmission{{reply, 0}} : Distort(faults, command, reply);
    };
    auto listening = TakePort(frame.Context(), options.port);
    if (!options.startProgram.empty()) {
        const ServerBehind behind = StartServerBehind(frame.Context(), options.startProgram, passing.server.port());
        if (behind.state == BehindState::Failed) {
            throw std::runtime_error(behind.sentence);
        }
        output.Say(behind.sentence);
        if (behind.state == BehindState::Started) {
            log.ServerIsStarting();
        }
        passing.startingPatience = kStartingPatience;
    }
    const int port = listening.local_endpoint().port();
    Proxy proxy(frame.Context(), std::move(listening), std::move(passing));
    exchanges.Open();
    output.Say("answering on 127.0.0.1:" + std::to_string(port) + " for " + AddressText(FindServer(options.proxied)));
    frame.Run([] {});
    proxy.Stop();
    if (!options.record.empty() && log.Unanswered() > 0) {
        output.Say("not in the record: " + std::to_string(log.Unanswered()) +
                   " commands before the server's first answer");
    }
    for (const FaultStatus& status : faults.NeverFired()) {
        output.Say(SayNeverFired(status));
    }
}

void RunPlaceholder(const Options& options) {
    RunFrame frame(options);
    const Placeholder placeholder(frame.Context(), options.port, [&frame] { frame.End(); });
    frame.Output().Say("holding port " + std::to_string(placeholder.Port()) + " until an emulator starts");
    frame.Run([] {});
}

}  // namespace emulator
