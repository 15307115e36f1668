#pragma once

#include <cstdint>
#include <thread>

/// A port of the loopback address that this process holds. It refuses everybody until it is opened.
class ServerPort {
 public:
    ServerPort();
    ~ServerPort();
    ServerPort(const ServerPort&) = delete;
    ServerPort& operator=(const ServerPort&) = delete;

    std::uint16_t Number() const noexcept { return m_number; }

    /// Answers every command with "0_<command>_1" and a carriage return, on a thread of its own.
    void Open();

    /// Refuses again.
    void Close();

 private:
    int m_reserved;
    int m_server = -1;
    std::uint16_t m_number = 0;
    std::thread m_thread;
};
