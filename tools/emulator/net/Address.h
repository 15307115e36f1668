#pragma once

#include <boost/asio/ip/udp.hpp>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "text/Parsed.h"

namespace emulator {

/// Where a server is, as people write it.
struct ServerAddress {
    std::string host = "127.0.0.1";
    std::uint16_t port = 60000;
};

/// "HOST:PORT", "HOST", "[::1]:PORT" or ":PORT"; what is left out is the library's server on this computer.
Parsed<ServerAddress> ParseServerAddress(std::string_view text);

/// "127.0.0.1:60000", "[::1]:60000".
std::string AddressText(const boost::asio::ip::udp::endpoint& endpoint);

/// A server's name is not known; the text is for the user.
class AddressError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Looks a name up, once; an IPv4 address is preferred, for that is what servers on this computer listen on. Throws
/// AddressError.
boost::asio::ip::udp::endpoint FindServer(const ServerAddress& address);

}  // namespace emulator
