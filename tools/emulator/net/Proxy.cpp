#include "net/Proxy.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "net/Address.h"
#include "net/Room.h"
#include "net/Udp.h"
#include "protocol/Answer.h"
#include "transcript/ExchangeMatcher.h"

namespace emulator {

namespace {

namespace net = boost::asio;
using boost::system::error_code;
using net::ip::udp;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kTick{100};

std::function<double()> SinceNow() {
    return [start = Clock::now()] { return std::chrono::duration<double>(Clock::now() - start).count(); };
}

}  // namespace

class Proxy::Impl : public std::enable_shared_from_this<Impl> {
 public:
    Impl(net::io_context& context, udp::socket listening, Options options)
        : m_context(context),
          m_options(std::move(options)),
          m_listening(std::move(listening)),
          m_tick(context),
          m_buffer(kReceiveBuffer),
          m_matcher(m_options.patience, m_options.onExchange) {}

    void Start() {
        ReceiveFromClients();
        Tick();
    }

    void Stop();

    std::size_t Clients() const { return m_clients.size(); }

 private:
    /// A client and its own way to the server.
    struct Client {
        Client(net::io_context& context, const udp::endpoint& endpoint)
            : address(endpoint), name(AddressText(endpoint)), server(context), buffer(kReceiveBuffer) {}

        udp::endpoint address;
        std::string name;
        udp::socket server;
        std::vector<char> buffer;
        Clock::time_point lastUsed = Clock::now();
        bool isDeaf = false;  // until the next tick
    };
    using ClientPtr = std::shared_ptr<Client>;

    void ReceiveFromClients();
    void ReceiveFromServer(const ClientPtr& client);
    void TakeCommand(const std::string& command);
    void TakeReply(const ClientPtr& client, const std::string& reply);
    void TakeRefusal(const ClientPtr& client);

    ClientPtr ClientAt(const udp::endpoint& address);
    void Forget(const ClientPtr& client);
    void ForgetIdle();

    void AnswerWithNothing(const ExchangeMatcher::OpenPtr& open);
    void SendLater(const ClientPtr& client, const ExchangeMatcher::OpenPtr& open, Datagram datagram);
    void SendToClient(const udp::endpoint& address, const std::string& datagram);
    void Tick();

    net::io_context& m_context;
    Options m_options;
    udp::socket m_listening;
    net::steady_timer m_tick;
    udp::endpoint m_from;
    std::vector<char> m_buffer;
    ExchangeMatcher m_matcher;
    std::map<udp::endpoint, ClientPtr> m_clients;
    std::list<net::steady_timer> m_delays;  // of datagrams that are sent later
    bool m_bDeaf = false;                   // until the next tick
    bool m_bServerSeen = false;
    bool m_bStopped = false;
};

// On Windows a receive tells that an earlier datagram found nobody. Any other error may come again at once: the next
// tick is early enough.
void Proxy::Impl::ReceiveFromClients() {
    m_bDeaf = false;
    m_listening.async_receive_from(net::buffer(m_buffer), m_from,
                                   [self = shared_from_this()](const error_code& error, std::size_t size) {
                                       if (self->m_bStopped || error == net::error::operation_aborted) {
                                           return;
                                       }
                                       if (!error) {
                                           self->TakeCommand({self->m_buffer.data(), size});
                                       }
                                       if (error && !IsRefusal(error)) {
                                           self->m_bDeaf = true;
                                       } else {
                                           self->ReceiveFromClients();
                                       }
                                   });
}

void Proxy::Impl::ReceiveFromServer(const ClientPtr& client) {
    client->isDeaf = false;
    client->server.async_receive(net::buffer(client->buffer),
                                 [self = shared_from_this(), client](const error_code& error, std::size_t size) {
                                     if (self->m_bStopped || !client->server.is_open()) {
                                         return;
                                     }
                                     if (!error) {
                                         self->TakeReply(client, {client->buffer.data(), size});
                                     } else if (IsRefusal(error)) {
                                         self->TakeRefusal(client);
                                     }
                                     if (error && !IsRefusal(error)) {
                                         client->isDeaf = true;
                                     } else {
                                         self->ReceiveFromServer(client);
                                     }
                                 });
}

void Proxy::Impl::TakeCommand(const std::string& command) {
    if (command == kMakeRoom || command == kWhoIsThere) {
        SendToClient(m_from, {});  // no placeholder; and no command either
        return;
    }
    const double now = m_options.seconds();
    const ClientPtr client = ClientAt(m_from);
    const bool earlierRefused = client->server.is_open() && SendToServer(client->server, command);
    if (earlierRefused) {
        TakeRefusal(client);
    }
    m_matcher.Command(client->name, command, now);
}

void Proxy::Impl::TakeReply(const ClientPtr& client, const std::string& reply) {
    m_bServerSeen = true;
    client->lastUsed = Clock::now();
    const double now = m_options.seconds();
    const auto open = m_matcher.FindFor(client->name, reply);
    if (open == nullptr) {
        SendToClient(client->address, reply);
        m_matcher.Unasked(client->name, reply, now);
        return;
    }
    if (!m_options.onReply) {
        SendToClient(client->address, reply);
        m_matcher.Answered(open, 1, now);
        ExchangeMatcher::Sent(open, reply, now);
        return;
    }
    const Transmission datagrams = m_options.onReply(open->exchange.command.value_or(""), reply);
    m_matcher.Answered(open, datagrams.size(), now);
    for (const Datagram& datagram : datagrams) {
        if (datagram.delayMs > 0) {
            SendLater(client, open, datagram);
        } else {
            SendToClient(client->address, datagram.bytes);
            ExchangeMatcher::Sent(open, datagram.bytes, m_options.seconds());
        }
    }
}

void Proxy::Impl::TakeRefusal(const ClientPtr& client) {
    for (const auto& open : m_matcher.Unanswered(client->name)) {
        SendToClient(client->address, {});
        AnswerWithNothing(open);
    }
}

void Proxy::Impl::AnswerWithNothing(const ExchangeMatcher::OpenPtr& open) {
    const double now = m_options.seconds();
    m_matcher.Answered(open, 1, now);
    ExchangeMatcher::Sent(open, {}, now);
}

/// The client's record; made where it is new, and then perhaps in the place of the one that was silent longest.
Proxy::Impl::ClientPtr Proxy::Impl::ClientAt(const udp::endpoint& address) {
    if (const auto found = m_clients.find(address); found != m_clients.end()) {
        found->second->lastUsed = Clock::now();
        return found->second;
    }
    if (m_clients.size() >= m_options.mostClients) {
        Forget(
            std::ranges::min_element(m_clients, {}, [](const auto& entry) { return entry.second->lastUsed; })->second);
    }
    const auto client = std::make_shared<Client>(m_context, address);
    error_code error;
    std::ignore = client->server.connect(m_options.server, error);  // opens it, too
    if (error) {
        error_code ignored;
        std::ignore = client->server.close(ignored);
        if (m_options.onTrouble) {
            m_options.onTrouble(client->name + " gets no way to " + AddressText(m_options.server) + " (error " +
                                std::to_string(error.value()) + ")");
        }
        return client;  // and tries again with its next command
    }
    m_clients.emplace(address, client);
    ReceiveFromServer(client);
    return client;
}

void Proxy::Impl::Forget(const ClientPtr& client) {
    error_code ignored;
    std::ignore = client->server.close(ignored);
    m_clients.erase(client->address);
}

void Proxy::Impl::ForgetIdle() {
    std::vector<ClientPtr> idle;
    for (const auto& [address, client] : m_clients) {
        if (Clock::now() - client->lastUsed >= m_options.idle) {
            idle.push_back(client);
        }
    }
    std::ranges::for_each(idle, [this](const ClientPtr& client) { Forget(client); });
}

void Proxy::Impl::SendLater(const ClientPtr& client, const ExchangeMatcher::OpenPtr& open, Datagram datagram) {
    const auto timer = m_delays.emplace(m_delays.end(), m_context);
    timer->expires_after(std::chrono::milliseconds(datagram.delayMs));
    timer->async_wait(
        [self = shared_from_this(), client, open, timer, bytes = std::move(datagram.bytes)](const error_code& error) {
            if (self->m_bStopped || error) {
                return;
            }
            self->m_delays.erase(timer);
            self->SendToClient(client->address, bytes);
            ExchangeMatcher::Sent(open, bytes, self->m_options.seconds());
        });
}

void Proxy::Impl::SendToClient(const udp::endpoint& address, const std::string& datagram) {
    error_code ignored;  // a client that has gone is no trouble of ours
    m_listening.send_to(net::buffer(datagram), address, 0, ignored);
}

void Proxy::Impl::Tick() {
    const double now = m_options.seconds();
    if (m_options.startingPatience && !m_bServerSeen) {
        for (const auto& open : m_matcher.Unanswered()) {
            const std::chrono::duration<double> waited(now - open->exchange.seconds);
            const auto client =
                std::ranges::find_if(m_clients, [&](const auto& entry) { return entry.second->name == open->client; });
            if (waited >= *m_options.startingPatience && client != m_clients.end()) {
                SendToClient(client->first, {});
                AnswerWithNothing(open);
            }
        }
    }
    m_matcher.Tick(now);
    ForgetIdle();
    if (m_bDeaf) {
        ReceiveFromClients();
    }
    for (const auto& [address, client] : m_clients) {
        if (client->isDeaf) {
            ReceiveFromServer(client);
        }
    }
    m_tick.expires_after(kTick);
    m_tick.async_wait([self = shared_from_this()](const error_code& error) {
        if (!self->m_bStopped && !error) {
            self->Tick();
        }
    });
}

void Proxy::Impl::Stop() {
    if (std::exchange(m_bStopped, true)) {
        return;
    }
    error_code ignored;
    std::ignore = m_listening.close(ignored);
    for (const auto& [address, client] : m_clients) {
        std::ignore = client->server.close(ignored);
    }
    m_clients.clear();
    m_tick.cancel();
    for (net::steady_timer& delay : m_delays) {
        delay.cancel();
    }
    m_matcher.Finish();
}

Proxy::Proxy(net::io_context& context, udp::socket listening, Options options) {
    if (options.server == listening.local_endpoint()) {
        throw AddressError(AddressText(options.server) + " is the proxy's own port: the server needs another one");
    }
    if (!options.seconds) {
        options.seconds = SinceNow();
    }
    if (!options.onExchange) {
        options.onExchange = [](const std::string&, const Exchange&) {};
    }
    m_impl = std::make_shared<Impl>(context, std::move(listening), std::move(options));
    m_impl->Start();
}

// What is left to throw is want of memory.
Proxy::~Proxy() { m_impl->Stop(); }  // NOLINT(bugprone-exception-escape)

void Proxy::Stop() { m_impl->Stop(); }

std::size_t Proxy::Clients() const { return m_impl->Clients(); }

}  // namespace emulator
