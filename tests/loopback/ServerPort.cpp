#include "ServerPort.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "LoopbackAddress.h"

namespace {

constexpr std::string_view kEnd = "end";

int MakeSocket() {
    const int number = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    CheckCall(number, "socket");
    return number;
}

/// A socket that is bound to `port`, which others of this kind may hold too; 0: to any that is free.
int Bind(std::uint16_t port) {
    const int number = MakeSocket();
    constexpr int kOn = 1;
    CheckCall(setsockopt(number, SOL_SOCKET, SO_REUSEADDR, &kOn, sizeof kOn), "setsockopt");
    const sockaddr_in address = LoopbackAddress(port);
    CheckCall(bind(number, reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
    return number;
}

void Answer(int server) {
    std::array<char, 256> bytes;
    for (;;) {
        sockaddr_in client{};
        socklen_t size = sizeof client;
        const ssize_t length =
            recvfrom(server, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&client), &size);
        const std::string command(bytes.data(), static_cast<std::size_t>(length < 0 ? 0 : length));
        if (length < 0 || command == kEnd) {
            return;
        }
        const std::string reply = "0_" + command + "_1\r";
        sendto(server, reply.data(), reply.size(), 0, reinterpret_cast<const sockaddr*>(&client), size);
    }
}

}  // namespace

ServerPort::ServerPort() : m_reserved(Bind(0)) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    CheckCall(getsockname(m_reserved, reinterpret_cast<sockaddr*>(&address), &size), "getsockname");
    m_number = ntohs(address.sin_port);
    // A socket that takes datagrams of one peer only, here its own, refuses those of all others.
    CheckCall(connect(m_reserved, reinterpret_cast<const sockaddr*>(&address), size), "connect");
}

ServerPort::~ServerPort() {
    Close();
    close(m_reserved);
}

void ServerPort::Open() {
    m_server = Bind(m_number);
    m_thread = std::thread(Answer, m_server);
}

void ServerPort::Close() {
    if (!m_thread.joinable()) {
        return;
    }
    const sockaddr_in address = LoopbackAddress(m_number);
    const int stranger = MakeSocket();  // what the port sends to itself goes to the socket that holds it
    sendto(stranger, kEnd.data(), kEnd.size(), 0, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    m_thread.join();
    close(stranger);
    close(m_server);
}
