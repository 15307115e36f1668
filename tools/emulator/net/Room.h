#pragma once

#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/udp.hpp>
#include <cstdint>
#include <string_view>

/// What an emulator and the placeholder of its port say to each other.

namespace emulator {

inline constexpr std::string_view kMakeRoom = "oko-control-emulator: make room";
inline constexpr std::string_view kRoomMade = "oko-control-emulator: room made";  // only a placeholder answers so

/// With this a placeholder finds out who gets what is sent to the port: itself, or already the server that asked.
inline constexpr std::string_view kWhoIsThere = "oko-control-emulator: who is there?";

/// A port of this machine for itself.
inline boost::asio::ip::udp::endpoint Loopback(int port) {
    return {boost::asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(port)};
}

}  // namespace emulator
