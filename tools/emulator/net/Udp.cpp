#include "net/Udp.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/system/error_code.hpp>
#include <string_view>

namespace emulator {

namespace net = boost::asio;

bool IsRefusal(const boost::system::error_code& error) {
    return error == net::error::connection_refused || error == net::error::connection_reset ||
           error == net::error::host_unreachable || error == net::error::network_unreachable;
}

bool SendToServer(net::ip::udp::socket& socket, std::string_view datagram) {
    boost::system::error_code error;
    socket.send(net::buffer(datagram), 0, error);
    if (!IsRefusal(error)) {
        return false;
    }
    // Linux tells of the earlier refusal in place of sending. Whatever comes now is this datagram's own fate.
    socket.send(net::buffer(datagram), 0, error);
    return true;
}

}  // namespace emulator
