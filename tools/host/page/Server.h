#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "keep/Keeper.h"
#include "page/Access.h"
#include "page/Router.h"
#include "page/ServerLimits.h"

/// Serves the page over HTTP, on one thread of its own. What it is told is copied and what it cannot do harms nobody
/// else: no exception leaves it, and a client that fails is dropped.
class Server {
 public:
    struct Options {
        std::string address = "127.0.0.1";
        std::uint16_t port = 0;  // 0: a free one
        AccessRules access;
        ServerLimits limits;
    };

    /// Asks the device for a target. Called on the server's thread, and must return at once; the answer is given with
    /// TargetDone. An answer that comes later than the limit is ignored.
    using SetTarget = std::function<void(std::uint64_t request, const TargetWanted& wanted)>;

    Server(Options options, const Keeper& keeper, SetTarget setTarget);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Why it cannot listen, for the user; nothing when it does.
    std::optional<std::string> Start();

    /// Says what is still to be said and ends. Does not wait for clients that do not listen.
    void Stop();

    /// The port that it listens on; once it does.
    std::uint16_t Port() const noexcept;

    /// The keeper has news: they are told to all streams. From any thread, and does not wait for a client; of snapshots
    /// that come faster than they can be sent, the newest is told.
    void Wake();

    /// From any thread.
    void TargetDone(std::uint64_t request, const TargetResult& result);

 private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};
