#include "page/Server.h"

#include <atomic>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/socket_base.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <unordered_set>
#include <utility>
#include <variant>
#include <vector>

#include "keep/Keeper.h"
#include "model/Event.h"
#include "model/Snapshot.h"
#include "page/Access.h"
#include "page/PageSession.h"
#include "page/Request.h"
#include "page/Router.h"
#include "page/ServerLimits.h"
#include "show/SnapshotJson.h"

namespace {

namespace net = boost::asio;
using boost::system::error_code;
using net::ip::tcp;

constexpr std::uint64_t kNothingKnown = std::numeric_limits<std::uint64_t>::max();
/// Clients that are told that there is no room; still more are cut off.
constexpr std::size_t kTurnedAway = 50;
constexpr std::chrono::milliseconds kAcceptAgain{100};

// One port, one program: a port that is just being closed may be taken, but not shared.
#ifdef _WIN32
using AcceptorOption = net::detail::socket_option::boolean<SOL_SOCKET, SO_EXCLUSIVEADDRUSE>;
#else
using AcceptorOption = net::socket_base::reuse_address;
#endif

PageSession::Frame MakeFrame(const std::string& fields, const std::string& json) {
    return std::make_shared<const std::string>(fields + "data: " + json + "\n\n");
}

PageSession::Frame EventFrame(const Event& event) {
    return MakeFrame("event: event\nid: " + std::to_string(event.id) + "\n", EventJson(event));
}

/// The system's own words come in any language and encoding.
std::string WhyNotListening(const error_code& error, const std::string& address, std::uint16_t port) {
    const std::string place = address + " port " + std::to_string(port);
    if (error == net::error::address_in_use) {
        return place + " is taken by another program: choose another port";
    }
    if (error == net::error::access_denied) {
        return place + " is not given to this program by the system: choose a port above 1023";
    }
    return "cannot listen on " + place + " (error " + std::to_string(error.value()) + ")";
}

}  // namespace

class Server::Impl : public PageSession::Owner {
 public:
    Impl(Options options, const Keeper& keeper, SetTarget setTarget)
        : m_options(std::move(options)),
          m_keeper(keeper),
          m_setTarget(std::move(setTarget)),
          m_acceptor(m_context),
          m_acceptTimer(m_context),
          m_heartbeat(m_context),
          m_stopTimer(m_context) {}

    std::optional<std::string> Listen();
    void Run();
    void BeginStop();
    std::uint16_t Port() const noexcept { return m_port; }

    void Wake();
    void TargetDone(std::uint64_t id, const TargetResult& result);

    const ServerLimits& Limits() const override { return m_options.limits; }
    void Answer(const std::shared_ptr<PageSession>& session, const Request& request) override;
    std::size_t& UnsentBytes() override { return m_nUnsentBytes; }
    void Forget(const std::shared_ptr<PageSession>& session) override;

    std::thread thread;

 private:
    struct PendingTarget {
        std::weak_ptr<PageSession> session;
        TargetWanted wanted;
        net::steady_timer timer;
    };

    template <typename Work>
    void Post(Work work) {
        net::post(m_context, [this, work] { work(*this); });
    }

    void Accept();
    void Take(tcp::socket socket);
    bool MakeRoom();
    void Stream(const std::shared_ptr<PageSession>& session, const StreamWanted& wanted);
    void AskDevice(const std::shared_ptr<PageSession>& session, const TargetWanted& wanted);
    void AnswerTarget(std::uint64_t id, const TargetResult& result);
    void TellStreams();
    void Tell(const PageSession::Frame& frame);
    const PageSession::Frame& SnapshotFrame();
    void BeatHeart();

    Options m_options;
    const Keeper& m_keeper;
    SetTarget m_setTarget;
    std::size_t m_nUnsentBytes = 0;
    std::atomic<std::uint16_t> m_port = 0;
    std::atomic<bool> m_isAwake = false;

    // What holds sockets and timers goes before what they live in.
    net::io_context m_context{1};
    tcp::acceptor m_acceptor;
    net::steady_timer m_acceptTimer;
    net::steady_timer m_heartbeat;
    net::steady_timer m_stopTimer;
    std::unordered_set<std::shared_ptr<PageSession>> m_sessions;
    std::unordered_set<std::shared_ptr<PageSession>> m_streams;
    std::map<std::uint64_t, PendingTarget> m_targets;
    std::uint64_t m_nTargets = 0;
    std::uint64_t m_nToldEvent = 0;
    std::shared_ptr<const Snapshot> m_toldSnapshot;
    PageSession::Frame m_snapshotFrame;
    bool m_isStopping = false;
};

std::optional<std::string> Server::Impl::Listen() {
    error_code error;
    const net::ip::address address = net::ip::make_address(m_options.address, error);
    if (error) {
        return "\"" + m_options.address + "\" is no address: write numbers, as 127.0.0.1 or 0.0.0.0";
    }
    const tcp::endpoint endpoint(address, m_options.port);
    const auto open = [&] {
        return m_acceptor.open(endpoint.protocol(), error) || m_acceptor.set_option(AcceptorOption(true), error) ||
               m_acceptor.bind(endpoint, error) || m_acceptor.listen(net::socket_base::max_listen_connections, error);
    };
    if (open()) {
        return WhyNotListening(error, m_options.address, m_options.port);
    }
    m_port = m_acceptor.local_endpoint(error).port();
    Accept();
    BeatHeart();
    return std::nullopt;
}

void Server::Impl::Run() {
    while (!m_context.stopped()) {
        try {
            m_context.run();
        } catch (const std::exception&) {
            // Nothing is known to come here; whatever it is, the next client is served.
            continue;
        }
    }
}

void Server::Impl::BeginStop() {
    Post([](Impl& self) {
        self.TellStreams();
        self.m_isStopping = true;
        error_code ignored;
        std::ignore = self.m_acceptor.close(ignored);
        const auto sessions = self.m_sessions;
        for (const auto& session : sessions) {
            session->Finish();
        }
        if (self.m_sessions.empty()) {
            self.m_context.stop();
            return;
        }
        self.m_stopTimer.expires_after(self.Limits().stopTime);
        self.m_stopTimer.async_wait([&self](const error_code&) { self.m_context.stop(); });
    });
}

void Server::Impl::Accept() {
    m_acceptor.async_accept([this](const error_code& error, tcp::socket socket) {
        if (error == net::error::operation_aborted) {
            return;
        }
        if (error) {
            // Too many files are open, perhaps: trying at once would only keep the processor busy.
            m_acceptTimer.expires_after(kAcceptAgain);
            m_acceptTimer.async_wait([this](const error_code& cancelled) {
                if (!cancelled) {
                    Accept();
                }
            });
            return;
        }
        Accept();
        Take(std::move(socket));
    });
}

void Server::Impl::Take(tcp::socket socket) {
    const bool hasRoom = MakeRoom();
    if (!hasRoom && m_sessions.size() >= Limits().connections + kTurnedAway) {
        return;
    }
    error_code ignored;
    std::ignore = socket.set_option(tcp::no_delay(true), ignored);
    const auto session = MakeSession(std::move(socket), *this);
    m_sessions.insert(session);
    if (hasRoom) {
        session->Start();
        return;
    }
    struct Reply reply = ErrorReply(503, "too many others are connected; try again later");
    reply.headers.emplace_back("Retry-After", "10");
    session->TurnAway(reply);
}

/// Whoever has connected and says nothing makes room for who may: a thousand silent connections keep nobody out.
bool Server::Impl::MakeRoom() {
    while (m_sessions.size() >= Limits().connections) {
        std::shared_ptr<PageSession> oldest;
        for (const auto& session : m_sessions) {
            if (session->IsIdle() && (!oldest || session->IdleSince() < oldest->IdleSince())) {
                oldest = session;
            }
        }
        if (!oldest) {
            return false;
        }
        oldest->Close();
    }
    return true;
}

void Server::Impl::Forget(const std::shared_ptr<PageSession>& session) {
    m_streams.erase(session);
    m_sessions.erase(session);
    if (m_isStopping && m_sessions.empty()) {
        m_context.stop();
    }
}

void Server::Impl::Answer(const std::shared_ptr<PageSession>& session, const Request& request) {
    const Outcome outcome = Route(request, m_keeper, m_options.access);
    if (const auto* reply = std::get_if<struct Reply>(&outcome)) {
        session->Reply(*reply);
    } else if (const auto* target = std::get_if<TargetWanted>(&outcome)) {
        AskDevice(session, *target);
    } else if (request.method == "HEAD") {
        session->Reply({200, "text/event-stream; charset=utf-8", "", {{"Cache-Control", "no-store"}}});
    } else {
        Stream(session, std::get<StreamWanted>(outcome));
    }
}

void Server::Impl::Stream(const std::shared_ptr<PageSession>& session, const StreamWanted& wanted) {
    session->BeginStream();
    m_streams.insert(session);
    session->Send(std::make_shared<const std::string>("retry: 2000\n\n"));
    if (wanted.after != kNothingKnown) {
        for (const Event& event : m_keeper.EventsAfter(wanted.after)) {
            if (event.id <= m_nToldEvent) {
                session->Send(EventFrame(event));
            }
        }
    }
    if (m_toldSnapshot) {
        session->Send(SnapshotFrame());
    }
}

void Server::Impl::AskDevice(const std::shared_ptr<PageSession>& session, const TargetWanted& wanted) {
    if (m_targets.size() >= Limits().pendingTargets) {
        session->Reply(ErrorReply(503, "other targets wait for the device; try again"));
        return;
    }
    const std::uint64_t id = ++m_nTargets;
    const auto place = m_targets.try_emplace(id, PendingTarget{session, wanted, net::steady_timer(m_context)}).first;
    place->second.timer.expires_after(Limits().setTime);
    place->second.timer.async_wait([this, id](const error_code& cancelled) {
        if (!cancelled) {
            AnswerTarget(id, {false, 0.0});
        }
    });
    m_setTarget(id, wanted);
}

void Server::Impl::AnswerTarget(std::uint64_t id, const TargetResult& result) {
    const auto found = m_targets.find(id);
    if (found == m_targets.end()) {
        return;
    }
    const auto session = found->second.session.lock();
    const TargetWanted wanted = found->second.wanted;
    m_targets.erase(found);
    if (session) {
        session->Reply(TargetReply(wanted, result));
    }
}

void Server::Impl::TargetDone(std::uint64_t id, const TargetResult& result) {
    Post([id, result](Impl& self) { self.AnswerTarget(id, result); });
}

void Server::Impl::Wake() {
    if (!m_isAwake.exchange(true)) {
        Post([](Impl& self) { self.TellStreams(); });
    }
}

void Server::Impl::TellStreams() {
    m_isAwake = false;
    for (const Event& event : m_keeper.EventsAfter(m_nToldEvent)) {
        m_nToldEvent = event.id;
        Tell(EventFrame(event));
    }
    auto newest = m_keeper.Newest();
    if (newest != m_toldSnapshot) {
        m_toldSnapshot = std::move(newest);
        m_snapshotFrame.reset();
        if (!m_streams.empty()) {
            Tell(SnapshotFrame());
        }
    }
}

/// Written once for all that are told it, and not at all when nobody is.
const PageSession::Frame& Server::Impl::SnapshotFrame() {
    if (!m_snapshotFrame) {
        m_snapshotFrame = MakeFrame("event: snapshot\n", SnapshotJson(*m_toldSnapshot, m_options.access.allowSet));
    }
    return m_snapshotFrame;
}

void Server::Impl::Tell(const PageSession::Frame& frame) {
    // A reader that is dropped leaves the set on the way.
    const std::vector<std::shared_ptr<PageSession>> streams(m_streams.begin(), m_streams.end());
    for (const auto& session : streams) {
        session->Send(frame);
    }
}

void Server::Impl::BeatHeart() {
    m_heartbeat.expires_after(Limits().heartbeat);
    m_heartbeat.async_wait([this](const error_code& cancelled) {
        if (!cancelled) {
            Tell(std::make_shared<const std::string>(": still here\n\n"));
            BeatHeart();
        }
    });
}

Server::Server(Options options, const Keeper& keeper, SetTarget setTarget)
    : m_impl(std::make_unique<Impl>(std::move(options), keeper, std::move(setTarget))) {}

Server::~Server() { Stop(); }

std::optional<std::string> Server::Start() {
    auto problem = m_impl->Listen();
    if (!problem) {
        m_impl->thread = std::thread([impl = m_impl.get()] { impl->Run(); });
    }
    return problem;
}

void Server::Stop() {
    if (m_impl->thread.joinable()) {
        m_impl->BeginStop();
        m_impl->thread.join();
    }
}

std::uint16_t Server::Port() const noexcept { return m_impl->Port(); }

void Server::Wake() { m_impl->Wake(); }

void Server::TargetDone(std::uint64_t request, const TargetResult& result) { m_impl->TargetDone(request, result); }
