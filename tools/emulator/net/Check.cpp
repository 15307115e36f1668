#include "net/Check.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "net/Udp.h"
#include "protocol/Answer.h"
#include "text/Words.h"
#include "transcript/Compare.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

namespace net = boost::asio;
using boost::system::error_code;
using net::ip::udp;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kDeafness{100};

Clock::duration Seconds(double seconds) {
    constexpr double kLongest = 1e8;  // three years, far from where the clock overflows
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(std::clamp(seconds, 0.0, kLongest)));
}

std::string CommandOf(const Exchange& exchange) { return exchange.command.value_or(""); }

double LongestDelay(const Exchange& exchange) {
    double longest = 0.0;
    for (const Reply& reply : exchange.replies) {
        longest = std::max(longest, reply.delaySeconds.value_or(0.0));
    }
    return longest;
}

}  // namespace

std::string FormatCheckReport(const CheckReport& report) {
    std::string text;
    for (const Difference& difference : report.differences) {
        text += FormatDifference(difference) + "\n";
    }
    text += (report.differences.empty() ? "no differences"
                                        : Counted(report.differences.size(), "difference", "differences")) +
            " in " + Counted(report.exchanges, "exchange", "exchanges") + "\n";
    if (report.exchanges < report.all) {
        text += "stopped: " + std::to_string(report.all - report.exchanges) + " of " +
                Counted(report.all, "exchange was", "exchanges were") + " not compared\n";
    }
    if (report.unasked > 0) {
        text +=
            Counted(report.unasked, "recorded datagram", "recorded datagrams") + " that nobody asked for left out\n";
    }
    if (report.refused > 0) {
        text += "nobody listened for " + Counted(report.refused, "command", "commands") + "\n";
    }
    return text;
}

class Check::Impl : public std::enable_shared_from_this<Impl> {
 public:
    Impl(net::io_context& context, std::vector<Exchange> exchanges, Options options,
         std::function<void(const CheckReport& report)> onDone)
        : m_options(std::move(options)),
          m_onDone(std::move(onDone)),
          m_exchanges(std::move(exchanges)),
          m_socket(context),
          m_timer(context),
          m_deaf(context),
          m_buffer(kReceiveBuffer) {
        const std::size_t all = m_exchanges.size();
        std::erase_if(m_exchanges, [](const Exchange& exchange) { return !exchange.command; });
        m_report.all = m_exchanges.size();
        m_report.unasked = all - m_exchanges.size();
    }

    void Start();
    void Stop();
    void Abandon();

 private:
    const Exchange& Current() const { return m_exchanges[m_current]; }
    void Next();
    void Send();
    void Receive();
    void Take(std::string datagram);
    void TakeRefusal();
    void EndExchange();
    void AddDifferences(const std::vector<Difference>& differences);
    void Wait(Clock::duration duration, void (Impl::*then)());

    Options m_options;
    std::function<void(const CheckReport&)> m_onDone;
    std::vector<Exchange> m_exchanges;
    udp::socket m_socket;
    net::steady_timer m_timer;
    net::steady_timer m_deaf;
    std::vector<char> m_buffer;
    CheckReport m_report;
    std::size_t m_current = 0;
    std::vector<std::string> m_got;  // for the present command
    Clock::time_point m_sent;
    std::uint64_t m_nWait = 0;
    bool m_bWaiting = false;  // for replies
    bool m_bStopped = false;
};

void Check::Impl::Start() {
    error_code ignored;  // shows itself as a command without an answer
    std::ignore = m_socket.connect(m_options.server, ignored);
    Receive();
    Next();
}

void Check::Impl::Stop() {
    if (!m_bStopped) {
        Abandon();
        m_onDone(m_report);
    }
}

void Check::Impl::Abandon() {
    m_bStopped = true;
    error_code ignored;
    std::ignore = m_socket.close(ignored);
    m_timer.cancel();
    m_deaf.cancel();
}

void Check::Impl::Next() {
    if (m_current == m_exchanges.size()) {
        Stop();
        return;
    }
    if (!m_options.withPauses || m_current == 0) {
        Send();
        return;
    }
    const double pause = Current().seconds - m_exchanges[m_current - 1].seconds;
    Wait(m_sent + Seconds(pause) - Clock::now(), &Impl::Send);
}

void Check::Impl::Send() {
    m_got.clear();
    m_bWaiting = true;
    m_sent = Clock::now();
    Wait(m_options.timeout + Seconds(LongestDelay(Current())), &Impl::EndExchange);
    SendToServer(m_socket, CommandOf(Current()));
}

/// Calls `then` on the context, after the duration; what was waited for before is forgotten.
void Check::Impl::Wait(Clock::duration duration, void (Impl::*then)()) {
    m_timer.expires_after(std::max(duration, Clock::duration::zero()));
    // A timer that has expired already can no longer be cancelled: only its number tells that it was replaced.
    m_timer.async_wait([self = shared_from_this(), then, number = ++m_nWait](const error_code& error) {
        if (!self->m_bStopped && !error && number == self->m_nWait) {
            ((*self).*then)();
        }
    });
}

void Check::Impl::Receive() {
    m_socket.async_receive(net::buffer(m_buffer),
                           [self = shared_from_this()](const error_code& error, std::size_t size) {
                               if (self->m_bStopped) {
                                   return;
                               }
                               if (!error) {
                                   self->Take({self->m_buffer.data(), size});
                               } else if (IsRefusal(error)) {
                                   self->TakeRefusal();
                               } else {
                                   // Whatever it is may come again at once.
                                   self->m_deaf.expires_after(kDeafness);
                                   self->m_deaf.async_wait([self](const error_code& stopped) {
                                       if (!self->m_bStopped && !stopped) {
                                           self->Receive();
                                       }
                                   });
                                   return;
                               }
                               if (!self->m_bStopped) {
                                   self->Receive();
                               }
                           });
}

void Check::Impl::Take(std::string datagram) {
    const bool isPresent = m_current < m_exchanges.size() && m_bWaiting;
    if (m_current > 0 && !(isPresent && EchoesCommand(datagram, CommandOf(Current())))) {
        const Exchange& last = m_exchanges[m_current - 1];
        if (!isPresent || EchoesCommand(datagram, CommandOf(last))) {
            AddDifferences(
                {{last.line, CommandOf(last), "number", CountText(last.replies.size()), "another one, late"}});
            return;
        }
    }
    m_got.push_back(std::move(datagram));
    if (m_got.size() >= Current().replies.size()) {
        Wait(m_options.extra, &Impl::EndExchange);
    }
}

void Check::Impl::TakeRefusal() {
    if (m_bWaiting && m_got.empty()) {
        ++m_report.refused;
        EndExchange();
    }
}

void Check::Impl::EndExchange() {
    m_bWaiting = false;
    AddDifferences(CompareReplies(Current(), m_got, m_options.tolerance));
    ++m_report.exchanges;
    ++m_current;
    // Not from here: a server that is not there refuses thousands, one within the other.
    Wait(Clock::duration::zero(), &Impl::Next);
}

void Check::Impl::AddDifferences(const std::vector<Difference>& differences) {
    m_report.differences.insert(m_report.differences.end(), differences.begin(), differences.end());
    if (m_options.onDifferences && !differences.empty()) {
        m_options.onDifferences(differences);
    }
}

Check::Check(net::io_context& context, std::vector<Exchange> exchanges, Options options,
             std::function<void(const CheckReport& report)> onDone)
    : m_impl(std::make_shared<Impl>(context, std::move(exchanges), std::move(options), std::move(onDone))) {
    net::post(context, [impl = m_impl] { impl->Start(); });
}

// What is left to throw is want of memory.
Check::~Check() { m_impl->Abandon(); }  // NOLINT(bugprone-exception-escape)

void Check::Stop() { m_impl->Stop(); }

}  // namespace emulator
