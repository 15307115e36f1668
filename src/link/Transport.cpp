// The link to the server: one text command and one reply at a time over UDP.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>

#include "base/Numbers.h"
#include "base/Text.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/LinkOptions.h"
#include "link/CommandLog.h"
#include "link/Commands.h"
#include "link/SendAndReceive.h"
#include "link/Switches.h"
#include "platform/UdpSocket.h"

namespace {

constexpr std::uint16_t kServerPort = 60000;

constexpr std::wstring_view kLogPrefix = L"OKO-Lab bold line CommandSend:";

constexpr const wchar_t* kTimedOutText = L"OKO-Lab bold line CommandSend: no answer within the time of ReplyTimeout.";
constexpr const wchar_t* kLooseEchoesText =
    L"OKO-Lab bold line CommandSend: the server does not echo commands to the letter; late replies are not recognised "
    L"any more.";

constexpr int kNotASocket = 10038;  // WSAENOTSOCK, what closing a link that is not open gives

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

/// "OKO-Lab bold line CommandSend: late replies dropped: 2, the last one: 0_readcurval 9_36.5"
void LogDropped(CDevApiInterface_Impl& device, const ExchangeNotes& notes) noexcept {
    LogLine line(kLogPrefix);
    line.Append(L" late replies dropped: ");
    line.AppendBytes(FormatInteger(notes.dropped).view());
    line.Append(L", the last one: ").AppendBytes(notes.lastDropped.view());
    device.Log(line.c_str());
}

/// What was odd about an exchange, while the communication log is on.
void LogNotes(CDevApiInterface_Impl& device, const ExchangeNotes& notes, ReceiveOutcome outcome) noexcept {
    if (!device.m_bLogCommunication) {
        return;
    }
    if (notes.dropped > 0) {
        LogDropped(device, notes);
    }
    if (notes.foundLooseEchoes) {
        device.Log(kLooseEchoesText);
    }
    if (outcome == ReceiveOutcome::TimedOut) {
        device.Log(kTimedOutText);
    }
}

/// Opens the link, or opens it afresh; nothing of an earlier one can be answered any more. Under the socket lock.
void OpenLink(CDevApiInterface_Impl& device) noexcept {
    device.m_socket.Open();
    device.m_socket.ConnectLoopback(kServerPort);
    device.m_recentCommands = {};
    device.m_unansweredCommands.Clear();
    device.m_exactEchoes.Clear();
    device.m_bLooseEchoes = false;
}

}  // namespace

std::uint32_t CDevApiInterface_Impl::ConnectSocket(const LinkOptions& options) noexcept {
    // At each link, not at Init alone: a search needs it, too, and comes before the first Init.
    const std::uint32_t registryTimeoutMs = ReadSwitches().replyTimeoutMs;
    const std::scoped_lock lock(m_csSocket);
    m_textTimeoutMs = options.replyTimeoutMs;
    m_bWatchOnly = options.watchOnly && !m_bSimulator;
    // kept: docs/oddities.md#endless-wait
    m_nReplyTimeoutMs = m_textTimeoutMs.value_or(registryTimeoutMs);
    // kept: docs/oddities.md#silent-connect
    if (!UdpSocket::StartUp()) {
        return m_nLink;
    }
    OpenLink(*this);
    return ++m_nLink;
}

void CDevApiInterface_Impl::SetReplyTimeout(std::uint32_t milliseconds) noexcept {
    const std::scoped_lock lock(m_csSocket);
    m_nReplyTimeoutMs = m_textTimeoutMs.value_or(milliseconds);
}

Received CDevApiInterface_Impl::SendOverLink(std::string_view command, std::span<char> reply,
                                             std::optional<std::uint32_t> link) noexcept {
    if (m_bSimulator) {
        int length = kNoAnswer;
        CommandSendSim(command.data(), static_cast<int>(command.size()), reply.data(), static_cast<int>(reply.size()),
                       &length);
        return {ReceiveOutcome::Datagram, length};
    }
    ExchangeNotes notes;
    Received received{};
    {
        const std::scoped_lock lock(m_csSocket);
        if ((link && *link != m_nLink) || (m_bWatchOnly && !IsReadingCommand(command))) {
            return {ReceiveOutcome::Failed, kNoAnswer};
        }
        received = SendAndReceive(*this, command, reply, notes);
    }
    // Outside the lock: the host may call back into a channel from its log.
    LogNotes(*this, notes, received.outcome);
    LogExchangeAndEndReply(*this, kLogPrefix, command.data(), reply.data(), received.length);
    return received;
}

void CDevApiInterface_Impl::CommandSend(const char* command, int commandLength, char* reply, int replySize,
                                        int* replyLength) noexcept {
    const Received received = SendOverLink({command, static_cast<std::size_t>(commandLength)},
                                           {reply, static_cast<std::size_t>(replySize)}, std::nullopt);
    if (replyLength != nullptr) {
        *replyLength = received.length;
    }
}

void CDevApiInterface_Impl::DisconnectSocket(std::optional<std::uint32_t> link) noexcept {
    int error = kNotASocket;
    {
        const std::scoped_lock lock(m_csSocket);
        if (link && *link != m_nLink) {
            return;  // somebody else has opened another one, or closes this one
        }
        ++m_nLink;
        if (m_socket.IsOpen()) {
            error = m_socket.Close();
        }
    }
    const wchar_t* const text = CloseText(error);
    if (text != nullptr && m_bLogCommunication) {
        Log(text);
    }
}
