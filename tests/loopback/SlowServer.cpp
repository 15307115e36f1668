#include "SlowServer.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include "LoopbackAddress.h"

namespace {

constexpr std::string_view kEndOfServer = "end";

}  // namespace

SlowServer::SlowServer(std::size_t behind) : m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)), m_behind(behind) {
    CheckCall(m_socket, "socket");
    constexpr int kOn = 1;
    CheckCall(setsockopt(m_socket, SOL_IP, IP_RECVERR, &kOn, sizeof kOn), "setsockopt");
    sockaddr_in address = LoopbackAddress(0);
    socklen_t size = sizeof address;
    CheckCall(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), size), "bind");
    CheckCall(getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size), "getsockname");
    m_port = ntohs(address.sin_port);
    m_thread = std::thread(&SlowServer::Run, this);
}

SlowServer::~SlowServer() {
    const sockaddr_in address = LoopbackAddress(m_port);
    const int stranger = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sendto(stranger, kEndOfServer.data(), kEndOfServer.size(), 0, reinterpret_cast<const sockaddr*>(&address),
           sizeof address);
    m_thread.join();
    close(stranger);
    close(m_socket);
}

void SlowServer::SetBehind(std::size_t behind) {
    const std::scoped_lock lock(m_mutex);
    m_behind = behind;
    AnswerWhatIsDue();
}

int SlowServer::RefusedReplies() const {
    int refused = 0;
    for (;; ++refused) {
        msghdr message{};
        if (recvmsg(m_socket, &message, MSG_ERRQUEUE | MSG_DONTWAIT) < 0) {
            return refused;
        }
    }
}

void SlowServer::Run() {
    for (;;) {
        std::array<char, 256> bytes;
        sockaddr_in client{};
        socklen_t size = sizeof client;
        const ssize_t length =
            recvfrom(m_socket, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&client), &size);
        if (length < 0) {
            continue;  // a reply of ours was refused
        }
        const std::string command(bytes.data(), static_cast<std::size_t>(length));
        if (command == kEndOfServer) {
            return;
        }
        const std::scoped_lock lock(m_mutex);
        m_waiting.push_back({command, client});
        AnswerWhatIsDue();
    }
}

/// Under the lock.
void SlowServer::AnswerWhatIsDue() {
    for (; m_waiting.size() > m_behind; m_waiting.pop_front()) {
        const std::string reply = "0_" + m_waiting.front().text + "_" + std::to_string(++m_answered) + "\r";
        const auto* const client = reinterpret_cast<const sockaddr*>(&m_waiting.front().client);
        sendto(m_socket, reply.data(), reply.size(), 0, client, sizeof(sockaddr_in));
    }
}
