#include "net/UdpServer.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "net/Room.h"
#include "protocol/Answer.h"

namespace emulator {

namespace {

namespace asio = boost::asio;
using asio::ip::udp;
using boost::system::error_code;

constexpr std::chrono::seconds kAskingPatience{10};  // a placeholder on a busy machine takes its time

[[noreturn]] void FailInUse(int port) {
    throw PortError("port " + std::to_string(port) + " is in use: another server is running");
}

bool Bind(udp::socket& socket, int port) {
    error_code error;
    std::ignore = socket.bind(Loopback(port), error);
    return !error;
}

/// Asks whoever has the port to make room. False when it is no placeholder.
bool AskForRoom(int port) {
    asio::io_context context;
    udp::socket socket(context, udp::v4());
    error_code ignored;
    socket.send_to(asio::buffer(kMakeRoom), Loopback(port), 0, ignored);
    std::string reply(kRoomMade.size() + 1, '\0');
    udp::endpoint peer;
    std::optional<std::size_t> length;
    socket.async_receive_from(asio::buffer(reply), peer, [&](error_code error, std::size_t got) {
        if (!error) {
            length = got;
        }
    });
    context.run_for(kAskingPatience);
    return length && std::string_view(reply).substr(0, *length) == kRoomMade;
}

}  // namespace

UdpServer::UdpServer(asio::io_context& context, CommandHandler handler)
    : m_context(context), m_handler(std::move(handler)), m_socket(context) {}

void UdpServer::Open(int port) {
    m_socket = TakePort(m_context, port);
    ++m_openings;
    Receive();
}

void UdpServer::Close() {
    error_code ignored;
    std::ignore = m_socket.close(ignored);
}

int UdpServer::Port() const {
    error_code error;
    return m_socket.local_endpoint(error).port();
}

void UdpServer::Receive() {
    m_socket.async_receive_from(asio::buffer(m_buffer), m_peer,
                                [this, opening = m_openings](error_code error, std::size_t length) {
                                    if (!m_socket.is_open() || opening != m_openings) {
                                        return;
                                    }
                                    // On Windows a receive reports that an earlier reply found nobody; that is not our
                                    // trouble.
                                    if (!error) {
                                        Take({m_buffer.data(), length});
                                    }
                                    Receive();
                                });
}

void UdpServer::Take(std::string_view datagram) {
    if (datagram == kMakeRoom || datagram == kWhoIsThere) {
        Send({}, m_peer);  // no placeholder; and no command either
        return;
    }
    m_command = datagram;
    const udp::endpoint peer = m_peer;
    for (const Datagram& reply : m_handler(m_command)) {
        if (reply.delayMs > 0) {
            SendLater(reply, peer);
        } else {
            Send(reply.bytes, peer);
        }
    }
}

void UdpServer::Send(const std::string& datagram, const udp::endpoint& peer) {
    error_code ignored;  // the peer may be gone
    m_socket.send_to(asio::buffer(datagram.data(), std::min(datagram.size(), kLongestDatagram)), peer, 0, ignored);
}

void UdpServer::SendLater(const Datagram& datagram, const udp::endpoint& peer) {
    const auto timer = std::make_shared<asio::steady_timer>(m_context, std::chrono::milliseconds(datagram.delayMs));
    timer->async_wait([this, timer, peer, bytes = datagram.bytes, opening = m_openings](error_code error) {
        if (!error && m_socket.is_open() && opening == m_openings) {
            Send(bytes, peer);
        }
    });
}

udp::socket TakePort(asio::io_context& context, int port) {
    udp::socket socket(context, udp::v4());
    if (Bind(socket, port)) {
        return socket;
    }
    if (!AskForRoom(port)) {
        FailInUse(port);
    }
    // The placeholder answers until this socket does, so that no command falls between the two.
    socket.set_option(udp::socket::reuse_address(true));
    if (!Bind(socket, port)) {
        FailInUse(port);
    }
    return socket;
}

bool IsPortTaken(asio::io_context& context, int port) {
    // Windows gives one address to a program although another one has all addresses.
    for (const asio::ip::address& address :
         {asio::ip::address(asio::ip::address_v4::loopback()), asio::ip::address(asio::ip::address_v4::any())}) {
        udp::socket socket(context, udp::v4());
        error_code error;
        std::ignore = socket.bind({address, static_cast<std::uint16_t>(port)}, error);
        if (error) {
            return true;
        }
    }
    return false;
}

}  // namespace emulator
