#pragma once

#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

/// A server on a port of its own that answers each command "0_<command>_<number of the command>" and a carriage return,
/// but only when `behind` further commands have come: the clock plays no part.
class SlowServer {
 public:
    explicit SlowServer(std::size_t behind);
    ~SlowServer();
    SlowServer(const SlowServer&) = delete;
    SlowServer& operator=(const SlowServer&) = delete;

    std::uint16_t Port() const noexcept { return m_port; }

    /// Answers what is due by the new number at once.
    void SetBehind(std::size_t behind);

    /// How many of its replies met a port that nobody listens on any more.
    int RefusedReplies() const;

 private:
    struct Command {
        std::string text;
        sockaddr_in client;
    };

    void Run();
    void AnswerWhatIsDue();

    int m_socket;
    std::uint16_t m_port = 0;
    std::mutex m_mutex;
    std::deque<Command> m_waiting;
    std::size_t m_behind;
    int m_answered = 0;
    std::thread m_thread;
};
