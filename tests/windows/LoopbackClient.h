#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "ServerPort.h"
#include "windows/LoadedLibrary.h"

/// A client of port 60000 that is patient with its reply.
class LoopbackClient {
 public:
    LoopbackClient() {
        WSADATA data{};
        WSAStartup(MAKEWORD(2, 2), &data);
        m_socket = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
        setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&kTestPatienceMs),
                   sizeof kTestPatienceMs);
        const sockaddr_in address = ServerAddress();
        connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    }
    ~LoopbackClient() {
        closesocket(m_socket);
        WSACleanup();
    }
    LoopbackClient(const LoopbackClient&) = delete;
    LoopbackClient& operator=(const LoopbackClient&) = delete;

    void Send(std::string_view datagram) const {
        send(m_socket, datagram.data(), static_cast<int>(datagram.size()), 0);
    }

    /// The reply; "(none)" when none comes.
    std::string Ask(std::string_view datagram) const {
        Send(datagram);
        std::array<char, 100> reply;
        const int length = recv(m_socket, reply.data(), static_cast<int>(reply.size()), 0);
        return length >= 0 ? std::string(reply.data(), static_cast<std::size_t>(length)) : "(none)";
    }

 private:
    SOCKET m_socket = INVALID_SOCKET;
};
