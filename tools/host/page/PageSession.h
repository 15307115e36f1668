#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "page/Request.h"
#include "page/ServerLimits.h"

/// One client's connection. All of it happens on the server's thread.
class PageSession {
 public:
    /// What a connection asks of its server.
    class Owner {
     public:
        virtual ~Owner() = default;
        virtual const ServerLimits& Limits() const = 0;

        /// A request has come: Reply or BeginStream is to be called, now or later.
        virtual void Answer(const std::shared_ptr<PageSession>& session, const Request& request) = 0;

        /// Of all replies that are being sent now.
        virtual std::size_t& UnsentBytes() = 0;

        /// The connection is over.
        virtual void Forget(const std::shared_ptr<PageSession>& session) = 0;
    };

    /// A piece of a stream; all readers of the same piece share it.
    using Frame = std::shared_ptr<const std::string>;

    virtual ~PageSession() = default;

    virtual void Start() = 0;

    /// Answers without having read a request, and ends.
    virtual void TurnAway(const struct Reply& reply) = 0;

    virtual void Reply(const struct Reply& reply) = 0;
    virtual void BeginStream() = 0;

    /// Sends a piece after those before it. Who is too far behind is dropped.
    virtual void Send(const Frame& frame) = 0;

    /// Ends after what is still to be sent.
    virtual void Finish() = 0;

    /// Ends at once.
    virtual void Close() = 0;

    /// Whether it gives up nothing when it is closed: it waits for a request, or for its client to go.
    virtual bool IsIdle() const = 0;
    virtual std::chrono::steady_clock::time_point IdleSince() const = 0;
};

std::shared_ptr<PageSession> MakeSession(boost::asio::ip::tcp::socket socket, PageSession::Owner& owner);
