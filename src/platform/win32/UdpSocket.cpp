#include "platform/UdpSocket.h"

#include <cstdint>
#include <tuple>

#include "platform/win32/Windows.h"

bool UdpSocket::StartUp() noexcept {
    WSADATA data{};
    return WSAStartup(MAKEWORD(2, 0), &data) == 0;
}

void UdpSocket::Open() noexcept {
    if (m_bOpen) {
        closesocket(m_handle);
    }
    m_handle = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    m_bOpen = m_handle != INVALID_SOCKET;
}

void UdpSocket::ConnectLoopback(std::uint16_t port) noexcept {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = inet_addr("127.0.0.1");
    // A failure shows itself at the first exchange.
    std::ignore = connect(m_handle, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

int UdpSocket::Send(const char* bytes, int length) noexcept { return send(m_handle, bytes, length, 0); }

bool UdpSocket::WaitForDatagram(std::uint32_t milliseconds) noexcept {
    fd_set readable{1, {m_handle}};
    timeval timeout{static_cast<long>(milliseconds / 1000), static_cast<long>(milliseconds % 1000 * 1000)};
    // A failure is left to the receive.
    return select(0, &readable, nullptr, nullptr, &timeout) != 0;
}

Received UdpSocket::Receive(char* bytes, int capacity) noexcept {
    const int length = recv(m_handle, bytes, capacity, 0);
    if (length >= 0) {
        return {ReceiveOutcome::Datagram, length};
    }
    return {WSAGetLastError() == WSAEMSGSIZE ? ReceiveOutcome::TooLong : ReceiveOutcome::Failed, length};
}

bool UdpSocket::HasWaiting() noexcept {
    u_long bytes = 0;
    return ioctlsocket(m_handle, FIONREAD, &bytes) == 0 && bytes > 0;
}

int UdpSocket::Close() noexcept {
    if (closesocket(m_handle) == SOCKET_ERROR) {
        return WSAGetLastError();
    }
    m_bOpen = false;
    return 0;
}
