#include "check/CheckServer.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "check/Incubator.h"
#include "net/UdpServer.h"
#include "protocol/Answer.h"
#include "server/EmulatedServer.h"

namespace check {

namespace {

namespace asio = boost::asio;

constexpr int kPort = 60000;
constexpr unsigned kSeed = 1;  // the same run each time
constexpr const char* kOrigin = "the check";

}  // namespace

/// All but the calls from outside happens on the one thread.
struct CheckServer::Impl {
    Impl() : udp(context, [this](const std::string& command) { return Answer(command); }) {
        Begin({});
        try {
            udp.Open(kPort);
        } catch (const emulator::PortError& error) {
            throw CheckServerError(std::string(error.what()) + ", and the library knows no other port");
        }
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
        start = std::chrono::steady_clock::now();
        server = std::make_unique<emulator::EmulatedServer>(scenario.empty() ? incubator::kScenario : scenario, kSeed,
                                                            [](const std::string&) {});
        commands.clear();
    }

    void SetRules(const std::vector<std::string>& rules) {
        server->StopAll(kOrigin);
        for (const std::string& rule : rules) {
            server->Start(rule, kOrigin, Now());
        }
    }

    emulator::Transmission Answer(const std::string& command) {
        commands.push_back(command);
        return server->Answer(command, Now());
    }

    /// Since the incubator's start, s.
    double Now() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); }

    asio::io_context context{1};
    std::chrono::steady_clock::time_point start;
    std::unique_ptr<emulator::EmulatedServer> server;  // one at any time
    std::vector<std::string> commands;
    emulator::UdpServer udp;
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
