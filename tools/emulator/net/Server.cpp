#include "net/Server.h"

#include <winsock2.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "protocol/Answer.h"

namespace emulator {

namespace {

// What an emulator says to a placeholder, and what only a placeholder answers.
constexpr std::string_view kMakeRoom = "oko-control-emulator: make room";
constexpr std::string_view kRoomMade = "oko-control-emulator: room made";

// With this a placeholder finds out who gets what is sent to the port: itself, or already the server that asked.
constexpr std::string_view kWhoIsThere = "oko-control-emulator: who is there?";

constexpr long kPollMicroseconds = 50'000;
constexpr std::chrono::seconds kAskingPatience{10};  // a placeholder on a busy machine takes its time

/// Owner of a datagram socket.
class Socket {
 public:
    Socket() : m_socket(socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP)) {}
    ~Socket() { closesocket(m_socket); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    SOCKET Get() const { return m_socket; }

 private:
    SOCKET m_socket;
};

/// Owner of the use of Windows Sockets.
class SocketsInUse {
 public:
    SocketsInUse() {
        WSADATA data{};
        WSAStartup(MAKEWORD(2, 2), &data);
    }
    ~SocketsInUse() { WSACleanup(); }
    SocketsInUse(const SocketsInUse&) = delete;
    SocketsInUse& operator=(const SocketsInUse&) = delete;
};

sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<u_short>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

bool Bind(const Socket& socket, int port) {
    const sockaddr_in address = Loopback(port);
    return bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

void ShareAddress(const Socket& socket) {
    const BOOL yes = TRUE;
    setsockopt(socket.Get(), SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&yes), sizeof yes);
}

void SendTo(const Socket& socket, std::string_view datagram, const sockaddr_in& peer) {
    sendto(socket.Get(), datagram.data(), static_cast<int>(datagram.size()), 0,
           reinterpret_cast<const sockaddr*>(&peer), sizeof peer);
}

/// A datagram and where it came from.
struct Received {
    std::string datagram;
    sockaddr_in peer;
};

/// Waits a moment for a datagram.
std::optional<Received> ReceiveFrom(const Socket& socket) {
    fd_set readable{};
    FD_SET(socket.Get(), &readable);
    timeval wait{0, kPollMicroseconds};
    if (select(0, &readable, nullptr, nullptr, &wait) <= 0) {
        return std::nullopt;
    }
    std::array<char, 65536> buffer;
    Received received{};
    int peerLength = sizeof received.peer;
    const int length = recvfrom(socket.Get(), buffer.data(), static_cast<int>(buffer.size()), 0,
                                reinterpret_cast<sockaddr*>(&received.peer), &peerLength);
    if (length < 0) {
        return std::nullopt;  // on Windows a receive reports that an earlier reply found nobody; that is not our
                              // trouble
    }
    received.datagram.assign(buffer.data(), static_cast<std::size_t>(length));
    return received;
}

/// Asks whoever has the port to make room. False when it is no placeholder.
bool AskForRoom(int port) {
    const Socket socket;
    SendTo(socket, kMakeRoom, Loopback(port));
    const auto end = std::chrono::steady_clock::now() + kAskingPatience;
    while (std::chrono::steady_clock::now() < end) {
        if (const auto reply = ReceiveFrom(socket)) {
            return reply->datagram == kRoomMade;
        }
    }
    return false;
}

/// Hands each datagram to `take` until `stop` gives true.
void ReceiveUntil(const Socket& socket, const std::function<bool()>& stop,
                  const std::function<void(const Received&)>& take) {
    while (!stop()) {
        if (const auto received = ReceiveFrom(socket)) {
            take(*received);
        }
    }
}

/// Answers a command with nothing, and whoever asks for room with yes.
void AnswerAsPlaceholder(const Socket& socket, const Received& received) {
    if (received.datagram != kWhoIsThere) {
        SendTo(socket, received.datagram == kMakeRoom ? kRoomMade : std::string_view(), received.peer);
    }
}

/// Waits, but no longer than the server is to run.
void Delay(int milliseconds, const std::function<bool()>& stop) {
    constexpr int kSliceMs = 50;
    for (int left = milliseconds; left > 0 && !stop(); left -= kSliceMs) {
        Sleep(static_cast<DWORD>(std::min(left, kSliceMs)));
    }
}

[[noreturn]] void FailInUse(int port) {
    throw PortError("port " + std::to_string(port) + " is in use: another server is running");
}

}  // namespace

void Serve(int port, const CommandHandler& handler, const std::function<void()>& onReady,
           const std::function<bool()>& stop) {
    const SocketsInUse sockets;
    const Socket socket;
    if (!Bind(socket, port)) {
        if (!AskForRoom(port)) {
            FailInUse(port);
        }
        // The placeholder answers until this socket does, so that no command falls between the two.
        ShareAddress(socket);
        if (!Bind(socket, port)) {
            FailInUse(port);
        }
    }
    onReady();
    ReceiveUntil(socket, stop, [&](const Received& received) {
        if (received.datagram == kMakeRoom || received.datagram == kWhoIsThere) {
            SendTo(socket, {}, received.peer);  // no placeholder; and no command either
            return;
        }
        const Transmission transmission = handler(received.datagram);
        Delay(transmission.delayMs, stop);
        for (const std::string& datagram : transmission.datagrams) {
            SendTo(socket, datagram, received.peer);
        }
    });
}

void HoldPort(int port, const std::function<void()>& onReady, const std::function<bool()>& stop) {
    const SocketsInUse sockets;
    const Socket socket;
    ShareAddress(socket);
    if (!Bind(socket, port)) {
        FailInUse(port);
    }
    onReady();
    // Whoever asked for room may be slow to take it, or never come to it: only what comes back tells.
    const Socket scout;
    bool asked = false;
    bool taken = false;
    while (!taken && !stop()) {
        if (const auto received = ReceiveFrom(socket)) {
            asked = asked || received->datagram == kMakeRoom;
            AnswerAsPlaceholder(socket, *received);
        } else if (asked) {
            SendTo(scout, kWhoIsThere, Loopback(port));
            taken = ReceiveFrom(scout).has_value();
        }
    }
    // What came before the port had a new owner.
    while (const auto received = taken ? ReceiveFrom(socket) : std::nullopt) {
        AnswerAsPlaceholder(socket, *received);
    }
}

}  // namespace emulator
