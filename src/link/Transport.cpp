// The link to the server: one text command and one reply at a time over UDP.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <string_view>

#include "base/Numbers.h"
#include "base/Text.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/RecentCommands.h"
#include "link/CommandLog.h"
#include "link/Reply.h"
#include "platform/UdpSocket.h"

namespace {

constexpr std::uint16_t kServerPort = 60000;

constexpr std::wstring_view kLogPrefix = L"OKO-Lab bold line CommandSend:";

constexpr int kNoAnswer = -1;       // what an exchange without one reports as its length
constexpr int kNotASocket = 10038;  // WSAENOTSOCK, what closing a link that is not open gives

/// A send that was cut short is repeated at most this often, each time with a receive of its own.
constexpr int kMaxRepeats = 4;

/// What the log says of the errors that closesocket is known to give.
// kept: docs/oddities.md#unmentioned-close-errors
struct CloseErrorText {
    int error;
    const wchar_t* text;
};
constexpr std::array<CloseErrorText, 6> kCloseErrorTexts{{
    {10004,
     L"CDevApiInterface_Impl::DisconnectSocket: The (blocking) Windows Socket 1.1 call was cancelled through "
     L"WSACancelBlockingCall."},
    {10035,
     L"CDevApiInterface_Impl::DisconnectSocket: The socket is marked as nonblocking, but the l_onoff member of the "
     L"linger structure is set to nonzero and the l_linger member of the linger structure is set to a nonzero "
     L"timeout value."},
    {10036,
     L"CDevApiInterface_Impl::DisconnectSocket: A blocking Windows Sockets 1.1 call is in progress, or the service "
     L"provider is still processing a callback function."},
    {10038, L"CDevApiInterface_Impl::DisconnectSocket: The descriptor is not a socket."},
    {10050, L"CDevApiInterface_Impl::DisconnectSocket: The network subsystem has failed."},
    {10093,
     L"CDevApiInterface_Impl::DisconnectSocket: A successful WSAStartup call must occur before using closesocket."},
}};
constexpr const wchar_t* kClosedText =
    L"CDevApiInterface_Impl::DisconnectSocket: The socket has been successfully closed.";

const wchar_t* CloseText(int error) noexcept {
    if (error == 0) {
        return kClosedText;
    }
    const auto found = std::ranges::find(kCloseErrorTexts, error, &CloseErrorText::error);
    return found != kCloseErrorTexts.end() ? found->text : nullptr;
}

/// At most so many datagrams are dropped in a row. Under a flood of them an exchange ends without an answer.
constexpr int kMaxDropped = 64;

/// The replies that an exchange dropped because they answer earlier commands.
struct DroppedReplies {
    int count = 0;
    BoundedText<char, kReplySize + 1> last;

    void Note(std::string_view reply) noexcept {
        ++count;
        last = BoundedText<char, kReplySize + 1>(reply.substr(0, reply.find(kReplyEnd)));
    }
};

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
void DropWaiting(UdpSocket& socket, DroppedReplies& dropped) noexcept {
    while (dropped.count < kMaxDropped && socket.HasWaiting()) {
        std::array<char, kReplySize> scratch;
        dropped.Note(BytesOf(socket.Receive(scratch.data(), static_cast<int>(scratch.size())), scratch));
    }
}

/// An answer that came twice or late.
bool IsAnswerToEarlier(const RecentCommands& recent, std::string_view reply) noexcept {
    const auto echo = EchoOf(reply);
    return echo && recent.HasEarlier(*echo);
}

/// Receives until something comes that is not the answer to an earlier command. Under the socket lock.
Received ReceiveAnswer(CDevApiInterface_Impl& device, std::span<char> reply, DroppedReplies& dropped) noexcept {
    for (int i = 0; i < kMaxDropped; ++i) {
        const Received received = device.m_socket.Receive(reply.data(), static_cast<int>(reply.size()));
        if (received.outcome == ReceiveOutcome::TimedOut) {
            device.m_bReopenLink = true;  // the answer may come yet, and must not meet the next command
        }
        const std::string_view bytes = BytesOf(received, reply);
        if (!IsAnswerToEarlier(device.m_recentCommands, bytes)) {
            return received;
        }
        dropped.Note(bytes);
        std::ranges::fill(reply, '\0');  // readers of a reply rely on zeros behind it
    }
    return {ReceiveOutcome::Failed, kNoAnswer};
}

/// Sends the command and receives a reply, again and again while the send is cut short. Each receive overwrites the
/// reply. Gives the last one. Under the socket lock.
// kept: docs/oddities.md#receive-after-a-failed-send
Received Exchange(CDevApiInterface_Impl& device, std::string_view command, std::span<char> reply,
                  DroppedReplies& dropped) noexcept {
    UdpSocket& socket = device.m_socket;
    if (!socket.IsOpen()) {
        return {ReceiveOutcome::Failed, kNoAnswer};
    }
    const auto length = static_cast<int>(command.size());
    DropWaiting(socket, dropped);
    device.m_recentCommands.Add(command);
    int sent = socket.Send(command.data(), length);
    Received received = ReceiveAnswer(device, reply, dropped);
    for (int repeats = 0; sent < length && repeats < kMaxRepeats; ++repeats) {
        sent = socket.Send(command.data(), length);
        received = ReceiveAnswer(device, reply, dropped);
    }
    return received;
}

/// Opens the link, or opens it afresh. Under the socket lock.
void OpenLink(CDevApiInterface_Impl& device) noexcept {
    device.m_socket.Open();
    device.m_socket.ConnectLoopback(kServerPort);
    // kept: docs/oddities.md#endless-wait
    if (device.m_nReplyTimeoutMs != 0 && device.m_socket.IsOpen()) {
        device.m_socket.SetReceiveTimeout(device.m_nReplyTimeoutMs);
    }
}

/// "OKO-Lab bold line CommandSend: late replies dropped: 2, the last one: 0_readcurval 9_36.5"
void LogDropped(CDevApiInterface_Impl& device, const DroppedReplies& dropped) noexcept {
    LogLine line(kLogPrefix);
    line.Append(L" late replies dropped: ");
    line.AppendBytes(FormatInteger(dropped.count).view()).Append(L", the last one: ").AppendBytes(dropped.last.view());
    device.Log(line.c_str());
}

}  // namespace

void CDevApiInterface_Impl::ConnectSocket() noexcept {
    // kept: docs/oddities.md#silent-connect
    if (!UdpSocket::StartUp()) {
        return;
    }
    const std::scoped_lock lock(m_csSocket);
    OpenLink(*this);
    m_bReopenLink = false;
}

void CDevApiInterface_Impl::SetReplyTimeout(std::uint32_t milliseconds) noexcept {
    const std::scoped_lock lock(m_csSocket);
    const bool changes = milliseconds != m_nReplyTimeoutMs;
    m_nReplyTimeoutMs = milliseconds;
    if (changes && m_socket.IsOpen()) {
        m_socket.SetReceiveTimeout(milliseconds);
    }
}

void CDevApiInterface_Impl::CommandSend(const char* command, int commandLength, char* reply, int replySize,
                                        int* replyLength) noexcept {
    if (m_bSimulator) {
        CommandSendSim(command, commandLength, reply, replySize, replyLength);
        return;
    }

    DroppedReplies dropped;
    Received received{};
    {
        const std::scoped_lock lock(m_csSocket);
        if (m_bReopenLink) {
            OpenLink(*this);
            m_bReopenLink = !m_socket.IsOpen();
        }
        received = Exchange(*this, {command, static_cast<std::size_t>(commandLength)},
                            {reply, static_cast<std::size_t>(replySize)}, dropped);
        if (replyLength != nullptr) {
            *replyLength = received.length;
        }
    }
    // Outside the lock: the host may call back into a channel from its log.
    if (dropped.count > 0 && m_bLogCommunication) {
        LogDropped(*this, dropped);
    }
    if (received.outcome == ReceiveOutcome::TimedOut && m_bLogCommunication) {
        Log(L"OKO-Lab bold line CommandSend: no answer within the time of ReplyTimeout.");
    }
    LogExchangeAndEndReply(*this, kLogPrefix, command, reply, received.length);
}

void CDevApiInterface_Impl::DisconnectSocket() noexcept {
    int error = kNotASocket;
    {
        const std::scoped_lock lock(m_csSocket);
        m_bReopenLink = false;
        if (m_socket.IsOpen()) {
            error = m_socket.Close();
        }
    }
    const wchar_t* const text = CloseText(error);
    if (text != nullptr && m_bLogCommunication) {
        Log(text);
    }
}
