#pragma once

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/win32/Windows.h"

/// The loopback address at the server's port.
sockaddr_in ServerAddress();

/// A server with products 9, 12 and 15 that answers every command at once, on a thread of its own.
class Responder {
 public:
    Responder();
    ~Responder();
    Responder(const Responder&) = delete;
    Responder& operator=(const Responder&) = delete;

    /// The commands that came since the last call.
    std::vector<std::string> TakeCommands();

 private:
    void Run();

    SOCKET m_socket;
    std::mutex m_mutex;
    std::vector<std::string> m_commands;
    std::thread m_thread;
};

/// A socket that is connected to the responder, without a library between.
class BareSocket {
 public:
    BareSocket();
    ~BareSocket();
    BareSocket(const BareSocket&) = delete;
    BareSocket& operator=(const BareSocket&) = delete;

    /// Sends a command and receives its reply.
    void Exchange(const std::string& command);

 private:
    SOCKET m_socket;
};
