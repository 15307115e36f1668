#pragma once

#include <boost/asio/ip/udp.hpp>
#include <boost/system/error_code.hpp>
#include <cstddef>
#include <string_view>

namespace emulator {

constexpr std::size_t kReceiveBuffer = 65'536;  // more than any datagram has

/// Whether the system says that nobody listened for what was sent earlier: a receive or a later send tells it.
bool IsRefusal(const boost::system::error_code& error);

/// Sends to the server that the socket is connected to. True where the system used the occasion to say that nobody
/// listened for an earlier one; this one is sent nevertheless.
bool SendToServer(boost::asio::ip::udp::socket& socket, std::string_view datagram);

}  // namespace emulator
