#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

/// A port of the loopback address; 0: any that is free.
inline sockaddr_in LoopbackAddress(std::uint16_t port) noexcept {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// Throws what the system says of a call that has failed.
inline void CheckCall(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}
