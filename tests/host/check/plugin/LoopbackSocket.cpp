// The library's socket over the real one of this system, and what a careless library would make of what it receives.

#include "LoopbackSocket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "Defect.h"
#include "platform/UdpSocket.h"

namespace {

std::string g_command;  // that was sent last
std::uint16_t g_redirectedTo = 0;
bool g_bDropped = false;

/// What a library that does not look closely takes a reply for.
std::string Careless(std::string reply, std::string_view action, const std::string& text) {
    const std::size_t first = reply.find('_');
    const std::size_t second = first == std::string::npos ? first : reply.find('_', first + 1);
    if (action == "as") {
        return text + "\r";
    }
    if (action == "loose" && second != std::string::npos) {
        return reply.substr(0, first + 1) + g_command + reply.substr(second);
    }
    if (action == "mend" && !reply.ends_with('\r')) {
        return reply + "\r";
    }
    if (action == "ok" && !reply.empty()) {
        reply.front() = '0';
        return reply;
    }
    if (action == "filled" && (reply.empty() || second == std::string::npos || second + 2 >= reply.size())) {
        return "0_" + g_command + "_1\r";
    }
    if (action == "plain" && second != std::string::npos && second + 1 < reply.size() &&
        (reply[second + 1] < '0' || reply[second + 1] > '9')) {
        return reply.substr(0, second + 1) + "7\r";
    }
    return reply;
}

}  // namespace

void RedirectLinks(std::uint16_t port) noexcept { g_redirectedTo = port; }

bool UdpSocket::StartUp() noexcept { return true; }

void UdpSocket::Open() noexcept {
    if (m_bOpen) {
        close(static_cast<int>(m_handle));
    }
    const int number = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    m_handle = static_cast<std::uintptr_t>(number);
    m_bOpen = number >= 0;
    if (TheDefect().where == "leak") {
        [[maybe_unused]] const int forgotten = dup(number);
    }
}

void UdpSocket::ConnectLoopback(std::uint16_t port) noexcept {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(g_redirectedTo != 0 ? g_redirectedTo : port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    [[maybe_unused]] const int connected =
        connect(static_cast<int>(m_handle), reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

bool UdpSocket::WaitForDatagram(std::uint32_t milliseconds) noexcept {
    if (g_bDropped) {
        return true;
    }
    pollfd socket{static_cast<int>(m_handle), POLLIN, 0};
    constexpr std::uint32_t kLongestPoll = INT_MAX;
    return poll(&socket, 1, static_cast<int>(std::min(milliseconds, kLongestPoll))) != 0;
}

int UdpSocket::Send(const char* bytes, int length) noexcept {
    g_command.assign(bytes, static_cast<std::size_t>(length));
    const Defect& defect = TheDefect();
    std::string text = g_command;
    g_bDropped = false;
    if (defect.where == "send" && FitsCommand(g_command, defect.pattern)) {
        if (defect.action == "drop") {
            g_bDropped = true;
            return length;
        }
        if (defect.action == "twice") {
            send(static_cast<int>(m_handle), text.data(), text.size(), 0);
            std::array<char, 2048> first{};
            recv(static_cast<int>(m_handle), first.data(), first.size(), 0);
        } else if (defect.action == "as") {
            text = defect.text;
        }
    }
    return send(static_cast<int>(m_handle), text.data(), text.size(), 0) < 0 ? -1 : length;
}

Received UdpSocket::Receive(char* bytes, int capacity) noexcept {
    if (g_bDropped) {
        return {ReceiveOutcome::Datagram, 0};
    }
    std::array<char, 65536> buffer;
    const ssize_t length = recv(static_cast<int>(m_handle), buffer.data(), buffer.size(), 0);
    if (length < 0) {
        // A port that nobody listens on is ECONNREFUSED here and error 10054 on Windows: both fail at once.
        return {ReceiveOutcome::Failed, -1};
    }
    std::string reply(buffer.data(), static_cast<std::size_t>(length));
    const Defect& defect = TheDefect();
    const bool stale = defect.where == "stale";
    const bool careless = stale || (defect.where == "receive" && FitsCommand(g_command, defect.pattern));
    if (careless) {
        reply = Careless(std::move(reply), stale ? "loose" : defect.action, defect.text);
    }
    if (careless && defect.action == "long" && reply.size() > static_cast<std::size_t>(capacity)) {
        reply.resize(static_cast<std::size_t>(capacity));
    }
    const auto taken = std::min(reply.size(), static_cast<std::size_t>(capacity));
    std::copy_n(reply.data(), taken, bytes);
    return reply.size() <= static_cast<std::size_t>(capacity)
               ? Received{ReceiveOutcome::Datagram, static_cast<int>(taken)}
               : Received{ReceiveOutcome::TooLong, -1};
}

bool UdpSocket::HasWaiting() noexcept {
    int bytes = 0;
    return TheDefect().where != "stale" && ioctl(static_cast<int>(m_handle), FIONREAD, &bytes) == 0 && bytes > 0;
}

int UdpSocket::Close() noexcept {
    if (close(static_cast<int>(m_handle)) != 0) {
        return errno;
    }
    m_bOpen = false;
    return 0;
}
