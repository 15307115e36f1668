#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "ServerPort.h"

/// A server on port 60000 of the loopback address, on a thread of its own.
class LoopbackServer {
 public:
    /// Gives the reply to a command; an empty one is sent as an empty datagram.
    using Handler = std::function<std::string(std::string_view command)>;

    explicit LoopbackServer(Handler handler) : m_handler(std::move(handler)) {
        ExpectFreeServerPort();
        WSADATA data{};
        WSAStartup(MAKEWORD(2, 2), &data);
        m_socket = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
        if (!BindToServerPort(m_socket)) {
            // Not a mere failure: the library would wait for ever for a server that is not there.
            throw std::runtime_error("port " + std::to_string(kServerPort) + " belongs to " + ServerPortOwners());
        }
        m_thread = std::thread([this] { Run(); });
    }

    ~LoopbackServer() {
        if (m_thread.joinable()) {
            // A datagram of its own wakes the thread up.
            const SOCKET waker = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
            const sockaddr_in address = ServerAddress();
            sendto(waker, kStop.data(), static_cast<int>(kStop.size()), 0, reinterpret_cast<const sockaddr*>(&address),
                   sizeof address);
            m_thread.join();
            closesocket(waker);
        }
        closesocket(m_socket);
        WSACleanup();
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::vector<std::string> Commands() {
        const std::scoped_lock lock(m_mutex);
        return m_commands;
    }

    /// The reply that most commands get.
    static std::string Reply(std::string_view command, std::string_view payload) {
        return "0_" + std::string(command) + "_" + std::string(payload) + "\r";
    }

 private:
    static constexpr std::string_view kStop = "stop the test server";

    void Run() {
        for (;;) {
            std::array<char, 2048> buffer;
            sockaddr_in peer{};
            int peerLength = sizeof peer;
            const int length = recvfrom(m_socket, buffer.data(), static_cast<int>(buffer.size()), 0,
                                        reinterpret_cast<sockaddr*>(&peer), &peerLength);
            if (length < 0) {
                continue;
            }
            const std::string_view command(buffer.data(), static_cast<std::size_t>(length));
            if (command == kStop) {
                return;
            }
            {
                const std::scoped_lock lock(m_mutex);
                m_commands.emplace_back(command);
            }
            const std::string reply = m_handler(command);
            sendto(m_socket, reply.data(), static_cast<int>(reply.size()), 0, reinterpret_cast<sockaddr*>(&peer),
                   peerLength);
        }
    }

    Handler m_handler;
    SOCKET m_socket = INVALID_SOCKET;
    std::mutex m_mutex;
    std::vector<std::string> m_commands;
    std::thread m_thread;
};
