#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/UdpSocket.h"

/// What a receive gets for a command: the bytes of one datagram, or a failure. An empty text is a datagram of length 0.
using ServerReply = std::optional<std::string>;

/// The receive fails (-1) and leaves the buffer alone.
inline constexpr std::nullopt_t kReceiveFails = std::nullopt;

/// The server behind the sockets. Every send to it prepares exactly one reply, also a send that is scripted to be cut
/// short or to fail, because the library receives after every send. A reply longer than the receiver's buffer fills it
/// and fails.
class ScriptedServer {
 public:
    using Handler = std::function<ServerReply(std::string_view command)>;

    /// Answers exactly this command with `reply`, again and again.
    void Answer(std::string_view command, ServerReply reply);

    /// Answers "0_<command>_<payload>" and a carriage return.
    void AnswerPayload(std::string_view command, std::string_view payload);

    /// Answers exactly this command with one reply after the other; the last one stays. No replies: back to the
    /// default.
    void AnswerInTurn(std::string_view command, std::vector<ServerReply> replies);

    /// Answers the commands that have no answer of their own. The handler runs inside the send, on the sending thread
    /// and without a lock of the server's. Without a handler the answer is BuiltInReply.
    void SetDefault(Handler handler);

    /// "0_<command>_1" and a carriage return.
    static std::string BuiltInReply(std::string_view command);

    /// Gives exactly this command no reply at all: a wait for it runs into its timeout, a receive without one fails.
    void StaySilent(std::string_view command);

    /// Answers it again.
    void Speak(std::string_view command);

    /// Puts a datagram before every open socket, now: a reply that comes late, or twice.
    void Deliver(std::string bytes);

    /// What the next sends return; the ones after them return the full length.
    void SendResults(std::vector<int> results);

    std::atomic<bool> failStartUp = false;
    std::atomic<bool> failOpen = false;
    std::atomic<int> waitingChecks = 0;  // how often the library asked whether a datagram waits; no socket call
    std::atomic<int> closeError = 0;     // not 0: what every close gives; the socket stays open

    /// Runs in every socket call before it takes effect, on the calling thread and without a lock of the server's. Set
    /// it before other threads run.
    std::function<void(const std::string& call)> onCall;

    /// The commands that reached the server, in order.
    std::vector<std::string> Commands() const;

    /// The socket calls in order, failed ones too: "startup", "open", "connect 60000", "send listprod", "wait 200",
    /// "receive 64", "close".
    std::vector<std::string> Calls() const;

    /// Forgets both records, not the script.
    void ClearCommands();

    std::size_t OpenSockets() const;

    // For the socket. A handle is never given twice, not even by two platforms.
    bool StartUp();
    std::optional<std::uintptr_t> OpenSocket();
    void Connect(std::uintptr_t handle, std::uint16_t port);
    int Send(std::uintptr_t handle, std::string_view command);
    bool WaitForDatagram(std::uintptr_t handle, std::uint32_t milliseconds);
    Received Receive(std::uintptr_t handle, char* bytes, int capacity);
    bool HasWaiting(std::uintptr_t handle);
    int CloseSocket(std::uintptr_t handle);

 private:
    struct Socket {
        bool connected = false;
        std::deque<ServerReply> replies;
    };

    void Record(const std::string& call);
    std::optional<ServerReply> NextScriptedReply(const std::string& command);

    mutable std::mutex m_mutex;
    std::map<std::string, std::deque<ServerReply>> m_answers;
    std::set<std::string> m_silent;
    Handler m_default;
    std::deque<int> m_sendResults;
    std::map<std::uintptr_t, Socket> m_sockets;
    std::vector<std::string> m_commands;
    std::vector<std::string> m_calls;
};
