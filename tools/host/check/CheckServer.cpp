#include "check/CheckServer.h"

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "check/Incubator.h"
#include "faults/Faults.h"
#include "incubator/Incubator.h"
#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"

namespace check {

namespace {

namespace asio = boost::asio;
using Udp = asio::ip::udp;

constexpr std::uint16_t kPort = 60000;
constexpr unsigned kSeed = 1;  // the same run each time
constexpr std::size_t kLongestDatagram = 65'536;

emulator::Scenario LoadFor(const std::string& name) {
    return name.empty() ? emulator::ParseScenario(incubator::kScenario, "the checks' incubator")
                        : emulator::LoadScenario(name);
}

}  // namespace

/// All but the calls from outside happens on the one thread.
struct CheckServer::Impl {
    Impl() : socket(context) {
        boost::system::error_code error;
        const Udp::endpoint place(asio::ip::address_v4::loopback(), kPort);
        socket.open(Udp::v4());
        socket.bind(place, error);
        if (error) {
            throw CheckServerError("port " + std::to_string(kPort) +
                                   " cannot be had, and the library knows no other: " + error.message() +
                                   "; is a server or an emulator running?");
        }
        Begin({});
        Receive();
        thread = std::thread([this] { context.run(); });
    }
    ~Impl() {
        context.stop();
        thread.join();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// Runs it on the server's thread, and waits.
    template <class Result>
    Result Do(std::function<Result()> what) {
        std::packaged_task<Result()> task(std::move(what));
        asio::post(context, [&task] { task(); });
        return task.get_future().get();
    }

    void Begin(const std::string& scenario) {
        ++run;
        incubator.emplace(LoadFor(scenario), kSeed);
        SetRules({});
        commands.clear();
        last = std::chrono::steady_clock::now();
    }

    void SetRules(const std::vector<std::string>& texts) {
        std::vector<emulator::FaultRule> rules;
        for (const std::string& text : texts) {
            rules.push_back(emulator::ParseFaultRule(text));
        }
        faults.emplace(std::move(rules), kSeed, [](const emulator::FaultRule&, std::string_view) {});
    }

    void Receive() {
        socket.async_receive_from(asio::buffer(buffer), peer,
                                  [this](boost::system::error_code error, std::size_t size) {
                                      // On Windows a receive tells that an earlier reply found nobody any more, which
                                      // is no trouble of ours.
                                      if (!error) {
                                          Answer(std::string(buffer.data(), size));
                                      }
                                      if (error != asio::error::operation_aborted) {
                                          Receive();
                                      }
                                  });
    }

    void Answer(const std::string& command) {
        commands.push_back(command);
        const auto now = std::chrono::steady_clock::now();
        incubator->Advance(std::chrono::duration<double>(now - last).count());
        last = now;
        const emulator::Answer answer = incubator->Execute(emulator::ParseCommand(command));
        const emulator::Transmission transmission = faults->Apply(command, answer, 0.0);
        if (transmission.delayMs == 0) {
            Send(transmission.datagrams, peer);
            return;
        }
        const auto timer =
            std::make_shared<asio::steady_timer>(context, std::chrono::milliseconds(transmission.delayMs));
        timer->async_wait([this, timer, transmission, to = peer, of = run](boost::system::error_code) {
            if (of == run) {
                Send(transmission.datagrams, to);
            }
        });
    }

    void Send(const std::vector<std::string>& datagrams, const Udp::endpoint& to) {
        for (const std::string& datagram : datagrams) {
            boost::system::error_code ignored;  // whoever asked may be gone
            socket.send_to(asio::buffer(datagram), to, 0, ignored);
        }
    }

    asio::io_context context{1};
    Udp::socket socket;
    Udp::endpoint peer;
    std::array<char, kLongestDatagram> buffer{};
    std::optional<emulator::Incubator> incubator;
    std::optional<emulator::Faults> faults;
    std::chrono::steady_clock::time_point last;
    std::vector<std::string> commands;
    int run = 0;
    std::thread thread;
};

CheckServer::CheckServer() : m_pImpl(std::make_unique<Impl>()) {}
CheckServer::~CheckServer() = default;

void CheckServer::Begin(const std::string& scenario) {
    m_pImpl->Do<void>([&] { m_pImpl->Begin(scenario); });
}

void CheckServer::SetRules(const std::vector<std::string>& rules) {
    m_pImpl->Do<void>([&] { m_pImpl->SetRules(rules); });
}

std::vector<std::string> CheckServer::TakeCommands() {
    return m_pImpl->Do<std::vector<std::string>>([this] { return std::exchange(m_pImpl->commands, {}); });
}

}  // namespace check
