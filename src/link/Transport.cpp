// The link to the server: one text command and one reply at a time over UDP.

#include <algorithm>
#include <array>
#include <mutex>

#include "core/CDevApiInterface_Impl.h"
#include "link/CommandLog.h"

namespace {

constexpr std::uint16_t kServerPort = 60000;

/// A send that was cut short is repeated at most this often, each time with a receive of its own.
constexpr int kMaxRepeats = 4;

/// What the log says of the errors that closesocket is known to give; the others are not mentioned.
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

/// Sends the command and receives a reply, again and again while the send is cut short. The receive follows whatever
/// the send did, and each one overwrites the reply. Returns the length of the last reply.
int Exchange(UdpSocket& socket, const char* command, int commandLength, char* reply, int replySize) noexcept {
    int sent = socket.Send(command, commandLength);
    int received = socket.Receive(reply, replySize);
    for (int repeats = 0; sent < commandLength && repeats < kMaxRepeats; ++repeats) {
        sent = socket.Send(command, commandLength);
        received = socket.Receive(reply, replySize);
    }
    return received;
}

}  // namespace

void CDevApiInterface_Impl::ConnectSocket() noexcept {
    if (!UdpSocket::StartUp()) {
        return;
    }
    m_socket.Open();
    m_socket.ConnectLoopback(kServerPort);
}

void CDevApiInterface_Impl::CommandSend(const char* command, int commandLength, char* reply, int replySize,
                                        int* replyLength) noexcept {
    if (m_bSimulator) {
        CommandSendSim(command, commandLength, reply, replySize, replyLength);
        return;
    }

    int received = 0;
    {
        const std::scoped_lock lock(m_csSocket);
        received = Exchange(m_socket, command, commandLength, reply, replySize);
        if (replyLength != nullptr) {
            *replyLength = received;
        }
    }
    // Outside the lock: the host may call back into a channel from its log.
    LogExchange(*this, L"OKO-Lab bold line CommandSend:", command, reply, received);
}

void CDevApiInterface_Impl::DisconnectSocket() noexcept {
    const wchar_t* const text = CloseText(m_socket.Close());
    if (text != nullptr && m_bLogCommunication) {
        Log(text);
    }
}
