#include "net/Address.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/system/error_code.hpp>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "text/Number.h"
#include "text/Parsed.h"
#include "text/Words.h"

namespace emulator {

namespace {

using boost::asio::ip::udp;

/// The two sides of the colon before the port; no port where there is none.
struct Sides {
    std::string_view host;
    std::string_view port;
    bool hasPort = false;
};

Sides SidesOf(std::string_view text) {
    if (text.starts_with('[')) {
        const std::size_t end = text.find(']');
        const std::string_view rest = end == std::string_view::npos ? "" : text.substr(end + 1);
        if (end == std::string_view::npos || (!rest.empty() && rest.front() != ':')) {
            return {text, {}, false};
        }
        return {text.substr(1, end - 1), rest.substr(rest.empty() ? 0 : 1), !rest.empty()};
    }
    const std::size_t colon = text.find(':');
    const bool isBareIpv6 = colon != std::string_view::npos && text.find(':', colon + 1) != std::string_view::npos;
    if (colon == std::string_view::npos || isBareIpv6) {
        return {text, {}, false};
    }
    return {text.substr(0, colon), text.substr(colon + 1), true};
}

}  // namespace

Parsed<ServerAddress> ParseServerAddress(std::string_view text) {
    constexpr int kLastPort = 65535;
    const Sides sides = SidesOf(text);
    ServerAddress address;
    if (!sides.host.empty()) {
        address.host = sides.host;
    }
    if (address.host.find_first_of(" \t/[]") != std::string::npos || text.empty()) {
        return Parsed<ServerAddress>::Error(InQuotes(text) + " is no server: write HOST:PORT, such as 127.0.0.1:60001");
    }
    if (sides.hasPort) {
        const auto port = ReadExactly<int>(sides.port);
        if (!port || *port < 1 || *port > kLastPort) {
            return Parsed<ServerAddress>::Error(InQuotes(text) + " has no port from 1 to 65535 behind its colon");
        }
        address.port = static_cast<std::uint16_t>(*port);
    }
    return Parsed<ServerAddress>::Of(address);
}

std::string AddressText(const udp::endpoint& endpoint) {
    const std::string host = endpoint.address().to_string();
    return (endpoint.address().is_v6() ? "[" + host + "]" : host) + ":" + std::to_string(endpoint.port());
}

udp::endpoint FindServer(const ServerAddress& address) {
    boost::asio::io_context context;
    udp::resolver resolver(context);
    boost::system::error_code error;
    const auto found =
        resolver.resolve(address.host, std::to_string(address.port), udp::resolver::numeric_service, error);
    if (error || found.empty()) {
        throw AddressError("no computer named " + InQuotes(address.host) + " is known");
    }
    for (const auto& entry : found) {
        if (entry.endpoint().address().is_v4()) {
            return entry.endpoint();
        }
    }
    return found.begin()->endpoint();
}

}  // namespace emulator
