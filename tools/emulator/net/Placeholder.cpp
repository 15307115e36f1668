#include "net/Placeholder.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "net/Room.h"
#include "net/UdpServer.h"

namespace emulator {

namespace {

namespace asio = boost::asio;
using asio::ip::udp;
using boost::system::error_code;

constexpr std::chrono::milliseconds kRound{50};

}  // namespace

Placeholder::Placeholder(asio::io_context& context, int port, std::function<void()> onTaken)
    : m_onTaken(std::move(onTaken)), m_socket(context, udp::v4()), m_scout(context, udp::v4()), m_round(context) {
    m_socket.set_option(udp::socket::reuse_address(true));
    error_code error;
    std::ignore = m_socket.bind(Loopback(port), error);
    if (error) {
        throw PortError("port " + std::to_string(port) + " is in use: another server is running");
    }
    m_port = m_socket.local_endpoint().port();
    Receive();
    LookAround();
}

void Placeholder::Receive() {
    m_socket.async_receive_from(asio::buffer(m_buffer), m_peer, [this](error_code error, std::size_t length) {
        if (!error) {
            Answer({m_buffer.data(), length});
        }
        Receive();
    });
}

void Placeholder::Answer(std::string_view datagram) {
    m_quiet = false;
    if (datagram == kWhoIsThere) {
        return;
    }
    m_asked = m_asked || datagram == kMakeRoom;
    error_code ignored;
    m_socket.send_to(asio::buffer(datagram == kMakeRoom ? kRoomMade : std::string_view()), m_peer, 0, ignored);
}

void Placeholder::LookAround() {
    // Whoever asked for room may be slow to take it, or never come to it: only what comes back tells.
    m_round.expires_after(kRound);
    m_round.async_wait([this](error_code error) {
        if (error) {
            return;
        }
        if (m_asked && std::exchange(m_quiet, true)) {
            m_scout.send_to(asio::buffer(kWhoIsThere), Loopback(m_port), 0, error);
            if (!std::exchange(m_scouting, true)) {
                WaitForScout();  // not before a first datagram gave the socket its port
            }
        }
        LookAround();
    });
}

void Placeholder::WaitForScout() {
    m_scout.async_receive_from(asio::buffer(m_scouted), m_found, [this](error_code error, std::size_t) {
        if (error) {
            WaitForScout();
            return;
        }
        // What came before the port had a new owner.
        std::ignore = m_socket.non_blocking(true, error);
        for (;;) {
            const std::size_t length = m_socket.receive_from(asio::buffer(m_buffer), m_peer, 0, error);
            if (error) {
                break;
            }
            Answer({m_buffer.data(), length});
        }
        m_onTaken();
    });
}

}  // namespace emulator
