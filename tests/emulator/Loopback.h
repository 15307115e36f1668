#pragma once

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "../Patience.h"
#include "net/Room.h"

/// Programs that speak over the loopback address, on free ports and all in the test's own thread.

namespace emulator {

/// Runs until the condition holds. False when it does not come to hold.
inline bool RunUntil(boost::asio::io_context& context, const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    context.restart();
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        context.run_one_for(std::chrono::milliseconds(20));
    }
    return true;
}

/// A socket that keeps what it gets, and who sent it.
class Peer {
 public:
    struct Got {
        boost::asio::ip::udp::endpoint from;
        std::string bytes;
    };

    explicit Peer(boost::asio::io_context& context) : m_socket(context, Loopback(0)) { Receive(); }

    boost::asio::ip::udp::endpoint Address() const { return m_socket.local_endpoint(); }

    void Send(const std::string& bytes, const boost::asio::ip::udp::endpoint& to) {
        boost::system::error_code ignored;
        m_socket.send_to(boost::asio::buffer(bytes), to, 0, ignored);
    }

    void Close() { m_socket.close(); }

    std::vector<Got> got;
    std::function<void(const Got&)> onGot = [](const Got&) {};

    std::vector<std::string> Bytes() const {
        std::vector<std::string> bytes;
        for (const Got& one : got) {
            bytes.push_back(one.bytes);
        }
        return bytes;
    }

 private:
    void Receive() {
        m_socket.async_receive_from(boost::asio::buffer(m_buffer), m_from,
                                    [this](const boost::system::error_code& error, std::size_t size) {
                                        if (!m_socket.is_open()) {
                                            return;
                                        }
                                        if (!error) {
                                            got.push_back({m_from, {m_buffer.data(), size}});
                                            onGot(Got(got.back()));
                                        }
                                        Receive();
                                    });
    }

    boost::asio::ip::udp::socket m_socket;
    boost::asio::ip::udp::endpoint m_from;
    std::array<char, 65'536> m_buffer{};
};

/// A port on which nobody listens.
inline boost::asio::ip::udp::endpoint NobodyThere(boost::asio::io_context& context) {
    return boost::asio::ip::udp::socket(context, Loopback(0)).local_endpoint();
}

}  // namespace emulator
