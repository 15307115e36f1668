#include "Responder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Pairs.h"

namespace {

constexpr std::string_view kStop = "stop the responder";

/// What commands that begin so are answered; the last row takes everything.
struct Payload {
    std::string_view command;
    std::string_view payload;
};
constexpr std::array<Payload, 12> kPayloads{{
    {"listconprod", "9 12 15"},
    {"comport 9 0 ", "1"},
    {"comport 9 0", "3"},
    {"listdev 12", "0 1"},
    {"listdev", "0"},
    {"bl-param-list 9", "107 108 109 110 115 116 117 119 132 189 192"},
    {"bl-param-list", "206 209 237 238"},
    {"bl-param-read 9 11", "0.0"},
    {"readcurval", "36.512"},
    {"readmax", "60.0"},
    {"readmin", "0.0"},
    {"", "1"},
}};

std::string ReplyTo(std::string_view command) {
    const auto row =
        std::ranges::find_if(kPayloads, [&](const Payload& each) { return command.starts_with(each.command); });
    std::string reply = "0_";
    return reply.append(command).append("_").append(row->payload).append(" \r");
}

SOCKET MakeSocket() {
    WSADATA data{};
    WSAStartup(MAKEWORD(2, 2), &data);
    return socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
}

}  // namespace

sockaddr_in ServerAddress() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(60000);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

Responder::Responder() : m_socket(MakeSocket()) {
    const sockaddr_in address = ServerAddress();
    Require(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
            "somebody else has port 60000");
    m_thread = std::thread([this] { Run(); });
}

Responder::~Responder() {
    BareSocket().Exchange(std::string(kStop));
    m_thread.join();
    closesocket(m_socket);
    WSACleanup();
}

std::vector<std::string> Responder::TakeCommands() {
    const std::scoped_lock lock(m_mutex);
    return std::exchange(m_commands, {});
}

void Responder::Run() {
    for (std::string_view command; command != kStop;) {
        std::array<char, 2048> buffer;
        sockaddr_in peer{};
        int peerLength = sizeof peer;
        const int length = recvfrom(m_socket, buffer.data(), static_cast<int>(buffer.size()), 0,
                                    reinterpret_cast<sockaddr*>(&peer), &peerLength);
        command = {buffer.data(), static_cast<std::size_t>(length > 0 ? length : 0)};
        {
            const std::scoped_lock lock(m_mutex);
            m_commands.emplace_back(command);
        }
        const std::string reply = ReplyTo(command);
        sendto(m_socket, reply.data(), static_cast<int>(reply.size()), 0, reinterpret_cast<sockaddr*>(&peer),
               peerLength);
    }
}

BareSocket::BareSocket() : m_socket(MakeSocket()) {
    const sockaddr_in address = ServerAddress();
    connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

BareSocket::~BareSocket() {
    closesocket(m_socket);
    WSACleanup();
}

void BareSocket::Exchange(const std::string& command) {
    std::array<char, 1023> reply;
    const int length = static_cast<int>(command.size());
    Require(send(m_socket, command.data(), length, 0) == length &&
                recv(m_socket, reply.data(), static_cast<int>(reply.size()), 0) > 0,
            "a bare exchange with the responder failed");
}
