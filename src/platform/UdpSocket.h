#pragma once

#include <cstdint>

/// How a receive ended.
enum class ReceiveOutcome {
    Datagram,
    TooLong,   // a datagram longer than the buffer: the buffer is filled, the rest is lost
    TimedOut,  // no reply came in time; never the outcome of Receive itself, which waits for ever
    Failed
};

/// `length`: bytes received, 0 for an empty datagram; negative for every other outcome than Datagram.
struct Received {
    ReceiveOutcome outcome;
    int length;
};

/// A datagram socket connected to one port of the IPv4 loopback address.
///
/// Not an owner: the device object closes its socket in Close, not in its destructor. Only Open closes an earlier
/// socket that is still open. The system gives the number of a closed socket to the next one that anybody in the
/// process opens: Send, Receive, HasWaiting and Close are for an open socket only, and IsOpen tells. No locks: the
/// device object's m_csSocket guards it.
class UdpSocket {
 public:
    /// Starts Windows Sockets, version 2.0. Never balanced by a clean-up: the library does not know who else uses them.
    static bool StartUp() noexcept;

    /// Makes the socket. After a failure it is not open.
    void Open() noexcept;

    bool IsOpen() const noexcept { return m_bOpen; }

    /// Makes the loopback address at `port` the only peer. No option is set: no timeouts, blocking calls.
    void ConnectLoopback(std::uint16_t port) noexcept;

    /// Sends one datagram. Returns the number of bytes sent, negative on failure.
    int Send(const char* bytes, int length) noexcept;

    /// Waits until Receive would not block, because a datagram or an error is there, at most so long. False when the
    /// time has passed. The receive itself gets no timeout: a socket must not be used again after one has expired.
    bool WaitForDatagram(std::uint32_t milliseconds) noexcept;

    /// Receives one datagram of at most `capacity` bytes and blocks until one comes.
    Received Receive(char* bytes, int capacity) noexcept;

    /// Whether a datagram with content waits to be received. Does not block. Systems do not tell of an empty one.
    bool HasWaiting() noexcept;

    /// Closes the socket. Returns 0 or the system's error code; after an error it counts as open still. The number of
    /// the socket is kept.
    int Close() noexcept;

 private:
    std::uintptr_t m_handle = ~std::uintptr_t{0};  // INVALID_SOCKET
    bool m_bOpen = false;
};
