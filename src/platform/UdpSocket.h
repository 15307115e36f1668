#pragma once

#include <cstdint>

/// A datagram socket connected to one port of the IPv4 loopback address.
///
/// Not an owner: the device object closes its socket in Close, not in its destructor. Only Open closes an earlier
/// socket that is still open.
class UdpSocket {
 public:
    /// Starts Windows Sockets, version 2.0. Never balanced by a clean-up: the library does not know who else uses them.
    static bool StartUp() noexcept;

    /// Makes the socket. A failure leaves an invalid one, on which every later call fails.
    void Open() noexcept;

    /// Makes the loopback address at `port` the only peer. No option is set: no time-outs, blocking calls.
    void ConnectLoopback(std::uint16_t port) noexcept;

    /// Sends one datagram. Returns the number of bytes sent, negative on failure.
    int Send(const char* bytes, int length) noexcept;

    /// Receives one datagram of at most `capacity` bytes and blocks until one comes. Returns its length, negative on
    /// failure; a longer datagram is a failure too, although the buffer is filled.
    int Receive(char* bytes, int capacity) noexcept;

    /// Closes the socket. Returns 0 or the system's error code. The number of the socket is kept, so that closing twice
    /// is reported as the system reports it.
    int Close() noexcept;

 private:
    std::uintptr_t m_handle = ~std::uintptr_t{0};  // INVALID_SOCKET
    bool m_bOpen = false;
};
