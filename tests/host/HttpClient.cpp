#include "HttpClient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "../Patience.h"

HttpClient::HttpClient(std::uint16_t port) : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const timeval limit{kPatience.count(), 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    ::setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
    if (::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(std::exchange(m_socket, -1));
    }
}

HttpClient::~HttpClient() {
    if (m_socket >= 0) {
        ::close(m_socket);
    }
}

HttpClient::HttpClient(HttpClient&& other) noexcept
    : m_socket(std::exchange(other.m_socket, -1)), m_received(std::move(other.m_received)) {}

bool HttpClient::Send(const std::string& text) {
    return ::send(m_socket, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
}

bool HttpClient::ReadMore() {
    std::array<char, 65536> bytes{};
    const ssize_t count = ::recv(m_socket, bytes.data(), bytes.size(), 0);
    if (count > 0) {
        m_received.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}

std::string HttpClient::ReadUntil(const std::string& text) {
    std::size_t at = m_received.find(text);
    while (at == std::string::npos) {
        const std::size_t searched = m_received.size() - std::min(m_received.size(), text.size());
        if (!ReadMore()) {
            return std::exchange(m_received, {});
        }
        at = m_received.find(text, searched);
    }
    const std::size_t end = at + text.size();
    std::string read = m_received.substr(0, end);
    m_received.erase(0, end);
    return read;
}

HttpClient::Reply HttpClient::Read(bool isHead) {
    Reply reply;
    reply.head = ReadUntil("\r\n\r\n");
    if (!reply.head.starts_with("HTTP/1.1 ")) {
        return reply;
    }
    reply.status = std::atoi(reply.head.c_str() + 9);
    const std::string name = "\r\nContent-Length: ";
    const std::size_t at = reply.head.find(name);
    const std::size_t length =
        isHead || at == std::string::npos ? 0 : std::strtoul(reply.head.c_str() + at + name.size(), nullptr, 10);
    while (m_received.size() < length && ReadMore()) {
    }
    reply.body = m_received.substr(0, length);
    m_received.erase(0, length);
    return reply;
}

bool HttpClient::IsClosed() {
    std::array<char, 65536> bytes{};
    ssize_t count = 1;
    while (count > 0) {
        count = ::recv(m_socket, bytes.data(), bytes.size(), 0);
    }
    return count == 0 || errno == ECONNRESET;
}

std::string Wire(const std::string& method, const std::string& target, const std::string& headers,
                 const std::string& body) {
    const std::string length = body.empty() ? "" : "Content-Length: " + std::to_string(body.size()) + "\r\n";
    return method + " " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + headers + length + "\r\n" + body;
}
