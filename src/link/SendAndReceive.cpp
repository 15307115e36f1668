#include "link/SendAndReceive.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "base/Text.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/RecentCommands.h"
#include "core/UnansweredCommands.h"
#include "link/Reply.h"
#include "platform/Clock.h"
#include "platform/UdpSocket.h"

namespace {

/// A send that was cut short is repeated at most this often, each time with a receive of its own.
constexpr int kMaxRepeats = 4;

/// At most so many datagrams are dropped in a row. Under a flood of them an exchange ends without an answer.
constexpr int kMaxDropped = 64;

/// How long something better is waited for once a reply was held back.
constexpr std::uint32_t kHoldBackMs = 250;

/// The bytes that a receive put into its buffer. Those of a datagram that was too long tell whose answer it is, too.
std::string_view BytesOf(const Received& received, std::span<const char> buffer) noexcept {
    switch (received.outcome) {
        case ReceiveOutcome::Datagram:
            return {buffer.data(), static_cast<std::size_t>(received.length)};
        case ReceiveOutcome::TooLong:
            return {buffer.data(), buffer.size()};
        default:
            return {};
    }
}

/// Drops what already waits before a command is sent: it cannot be its answer.
void DropWaiting(CDevApiInterface_Impl& device, ExchangeNotes& notes) noexcept {
    while (notes.dropped < kMaxDropped && device.m_socket.HasWaiting()) {
        std::array<char, kReplySize> scratch;
        const Received received = device.m_socket.Receive(scratch.data(), static_cast<int>(scratch.size()));
        const std::string_view bytes = BytesOf(received, scratch);
        device.m_unansweredCommands.Take(EchoOf(bytes).value_or(""));
        notes.NoteDropped(bytes);
    }
}

/// Whose answer a datagram is.
enum class Owner {
    ThisCommand,
    LateCommand,     // certainly: it is dropped
    EarlierCommand,  // by its echo; but a server may echo loosely, so it is held back
};

/// What merely does not match is this command's: only an echo to the letter of another one counts against it.
Owner OwnerOf(CDevApiInterface_Impl& device, std::string_view command, std::string_view reply) noexcept {
    const auto echo = EchoOf(reply);
    if (!echo) {
        return Owner::ThisCommand;
    }
    if (*echo == command) {
        device.m_exactEchoes.Add(command);
        return Owner::ThisCommand;
    }
    if (device.m_unansweredCommands.Take(*echo)) {
        return Owner::LateCommand;
    }
    if (device.m_bLooseEchoes || !device.m_recentCommands.HasEarlier(*echo)) {
        return Owner::ThisCommand;
    }
    // A duplicate, where the server is known to echo such commands to the letter. Only with a timeout: without one the
    // call would wait for ever if the server were to change its ways.
    const bool duplicate = device.m_nReplyTimeoutMs != 0 && device.m_exactEchoes.Contains(command);
    return duplicate ? Owner::LateCommand : Owner::EarlierCommand;
}

/// How long a receive may wait.
class ReceiveLimit {
 public:
    /// 0: for ever.
    explicit ReceiveLimit(std::uint32_t milliseconds) noexcept {
        if (milliseconds != 0) {
            Set(milliseconds);
        }
    }

    /// From now on.
    void Set(std::uint32_t milliseconds) noexcept {
        m_bLimited = true;
        m_llEnd = PerformanceCounter() + PerformanceFrequency() * std::int64_t{milliseconds} / 1000;
    }

    /// Waits for a datagram where there is a limit, and only there. False when the time has passed.
    bool Wait(UdpSocket& socket) const noexcept { return !m_bLimited || socket.WaitForDatagram(RemainingMs()); }

 private:
    std::uint32_t RemainingMs() const noexcept {
        const std::int64_t frequency = PerformanceFrequency();
        const std::int64_t ticks = std::max<std::int64_t>(m_llEnd - PerformanceCounter(), 0);
        return static_cast<std::uint32_t>((ticks * 1000 + frequency - 1) / frequency);
    }

    bool m_bLimited = false;
    std::int64_t m_llEnd = 0;  // in ticks of the performance counter
};

/// A reply that echoes an earlier command. It is taken when nothing better comes.
struct HeldReply {
    HeldReply(const Received& outcome, std::string_view text) noexcept : received(outcome), length(text.size()) {
        std::ranges::copy(text, bytes.begin());
    }

    Received received;
    std::array<char, kListReplySize> bytes;
    std::size_t length;
};

/// It was an earlier command's after all.
void Drop(const std::optional<HeldReply>& held, ExchangeNotes& notes) noexcept {
    if (held) {
        notes.NoteDropped({held->bytes.data(), held->length});
    }
}

/// The reply may come yet, too late or behind a flood. Where there is no timeout nothing of the kind is known: what is
/// remembered there would cost a server that echoes loosely its replies.
void RememberUnanswered(CDevApiInterface_Impl& device, std::string_view command) noexcept {
    if (device.m_nReplyTimeoutMs != 0) {
        device.m_unansweredCommands.Add(command);
    }
}

/// The time for a reply has passed.
Received EndOfWait(CDevApiInterface_Impl& device, std::string_view command, const std::optional<HeldReply>& held,
                   std::span<char> reply, ExchangeNotes& notes) noexcept {
    if (!held) {
        RememberUnanswered(device, command);
        return {ReceiveOutcome::TimedOut, kNoAnswer};
    }
    if (!device.m_exactEchoes.Contains(command)) {
        // The server echoes loosely. Nothing is held back any more, or each such reply would cost the wait.
        device.m_bLooseEchoes = true;
        notes.foundLooseEchoes = true;
    }
    std::copy_n(held->bytes.begin(), held->length, reply.begin());
    return held->received;
}

/// Receives until the answer to `command` comes.
Received ReceiveAnswer(CDevApiInterface_Impl& device, std::string_view command, std::span<char> reply,
                       ExchangeNotes& notes) noexcept {
    const std::uint32_t timeoutMs = device.m_nReplyTimeoutMs;
    ReceiveLimit limit(timeoutMs);
    std::optional<HeldReply> held;
    for (int i = 0; i < kMaxDropped; ++i) {
        if (!limit.Wait(device.m_socket)) {
            return EndOfWait(device, command, held, reply, notes);
        }
        const Received received = device.m_socket.Receive(reply.data(), static_cast<int>(reply.size()));
        const std::string_view bytes = BytesOf(received, reply);
        const Owner owner = OwnerOf(device, command, bytes);
        // A failure is nobody's reply: what is held back is better.
        if (owner == Owner::ThisCommand && (!held || received.outcome != ReceiveOutcome::Failed)) {
            Drop(held, notes);
            return received;
        }
        if (owner == Owner::LateCommand) {
            notes.NoteDropped(bytes);
        } else if (owner == Owner::EarlierCommand) {
            if (!held) {
                limit.Set(timeoutMs != 0 ? std::min(timeoutMs, kHoldBackMs) : kHoldBackMs);
            }
            Drop(held, notes);
            // The last of several: a duplicate comes before a reply that was just asked for.
            held.emplace(received, bytes);
        }
        std::ranges::fill(reply, '\0');  // readers of a reply rely on zeros behind it
    }
    RememberUnanswered(device, command);
    return {ReceiveOutcome::Failed, kNoAnswer};
}

}  // namespace

void ExchangeNotes::NoteDropped(std::string_view reply) noexcept {
    ++dropped;
    lastDropped = BoundedText<char, kReplySize + 1>(reply.substr(0, reply.find(kReplyEnd)));
}

// kept: docs/oddities.md#receive-after-a-failed-send
Received SendAndReceive(CDevApiInterface_Impl& device, std::string_view command, std::span<char> reply,
                        ExchangeNotes& notes) noexcept {
    UdpSocket& socket = device.m_socket;
    if (!socket.IsOpen()) {
        return {ReceiveOutcome::Failed, kNoAnswer};
    }
    const auto length = static_cast<int>(command.size());
    DropWaiting(device, notes);
    device.m_recentCommands.Add(command);
    int sent = socket.Send(command.data(), length);
    Received received = ReceiveAnswer(device, command, reply, notes);
    for (int repeats = 0; sent < length && repeats < kMaxRepeats; ++repeats) {
        sent = socket.Send(command.data(), length);
        received = ReceiveAnswer(device, command, reply, notes);
    }
    return received;
}
