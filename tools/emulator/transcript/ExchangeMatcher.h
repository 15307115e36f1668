#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "transcript/Transcript.h"

namespace emulator {

/// Puts commands and replies together that pass by, where nothing but the echo and the time tells which belong
/// together. A reply belongs to its client's youngest open exchange whose command it echoes, else to the youngest.
/// Times are seconds, and only arguments.
class ExchangeMatcher {
 public:
    /// An exchange is over when its client's next command comes after a reply, or with the end of these.
    struct Patience {
        double afterReply = 1.0;     // s after the last reply
        double withoutReply = 30.0;  // s after the command
    };

    /// Hears of the exchanges in the order in which they began.
    using OnFinished = std::function<void(const std::string& client, const Exchange& exchange)>;

    /// An exchange that is not over, for those who ask about it.
    struct Open {
        std::string client;
        Exchange exchange;
        double last = 0.0;  // when something last happened to it
        std::size_t unsent = 0;
        bool isAnswered = false;  // by the server, whatever became of the reply on its way
        bool isOver = false;
    };
    using OpenPtr = std::shared_ptr<Open>;

    ExchangeMatcher(Patience patience, OnFinished onFinished);

    void Command(const std::string& client, std::string command, double now);

    /// The exchange of a reply that the server gave; null where the client has none open: nobody asked for it.
    OpenPtr FindFor(const std::string& client, std::string_view reply) const;

    /// The server has answered, and so many datagrams will be sent to the client for it.
    void Answered(const OpenPtr& open, std::size_t datagrams, double now);

    /// One of them was sent.
    static void Sent(const OpenPtr& open, std::string datagram, double now);

    /// The client got what nobody asked for.
    void Unasked(const std::string& client, std::string datagram, double now);

    /// The open exchanges that the server has not answered, the oldest first; of one client, or all.
    std::vector<OpenPtr> Unanswered(const std::string& client) const;
    std::vector<OpenPtr> Unanswered() const;

    /// Ends what has waited long enough.
    void Tick(double now);

    /// Ends everything.
    void Finish();

 private:
    struct Client {
        std::deque<OpenPtr> open;  // the oldest first
        std::size_t answered = 0;  // of these
    };

    void EndAnswered(const std::string& client);
    void End(const OpenPtr& open);
    void HandOver();

    Patience m_patience;
    OnFinished m_onFinished;
    std::deque<OpenPtr> m_inOrder;            // what was not yet handed over
    std::map<std::string, Client> m_clients;  // that have something open
};

}  // namespace emulator
