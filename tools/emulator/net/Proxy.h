#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "protocol/Answer.h"
#include "transcript/ExchangeMatcher.h"

namespace emulator {

/// Stands between clients and a real server: passes every datagram on as it is, each way at once, and tells of the
/// exchanges. The questions of a placeholder are the only ones that it answers itself. Each client has a socket of its
/// own to the server, so that replies find it. Nobody listening on the server's port is passed on as an empty datagram,
/// which counts as no answer: a client would else wait for ever.
class Proxy {
 public:
    struct Options {
        boost::asio::ip::udp::endpoint server;

        /// Hears of each exchange when it is over, with what the client got: in the order in which they began.
        ExchangeMatcher::OnFinished onExchange;

        /// What the client gets for the server's reply; without it, the reply.
        std::function<Transmission(const std::string& command, const std::string& reply)> onReply;

        /// Hears with a sentence when a client cannot be given a socket.
        std::function<void(const std::string& sentence)> onTrouble;

        /// The time that exchanges are given; without it, seconds since the proxy was made.
        std::function<double()> seconds;

        /// Until the server has answered for the first time, a command without a reply gets an empty datagram after so
        /// long: for a server that is being started, on a system that does not tell that nobody listens yet.
        std::optional<std::chrono::milliseconds> startingPatience;

        ExchangeMatcher::Patience patience;
        std::chrono::milliseconds idle = std::chrono::minutes(5);  // a client that is silent so long is forgotten
        std::size_t mostClients = 256;                             // then the one that was silent longest is
    };

    /// `listening` has the port that clients know (TakePort gives it). Throws AddressError where the server is to
    /// have the same one.
    Proxy(boost::asio::io_context& context, boost::asio::ip::udp::socket listening, Options options);
    ~Proxy();
    Proxy(const Proxy&) = delete;
    Proxy& operator=(const Proxy&) = delete;

    /// Closes the sockets and tells of what is still open. The context then has nothing more to do for the proxy.
    void Stop();

    std::size_t Clients() const;

 private:
    class Impl;
    std::shared_ptr<Impl> m_impl;
};

}  // namespace emulator
