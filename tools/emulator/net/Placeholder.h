#pragma once

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <string_view>

namespace emulator {

/// Holds a port until the real emulator starts: answers every command with an empty datagram, which says "no answer".
/// Where a system does not report that nobody listens (Wine does not), a client would else wait for ever. Everything
/// happens on the thread that runs `context`, which must not run any more when the placeholder is destroyed.
class Placeholder {
 public:
    /// `onTaken` hears that an emulator has the port. Throws PortError when somebody has it already.
    Placeholder(boost::asio::io_context& context, int port, std::function<void()> onTaken);

    int Port() const { return m_port; }

 private:
    void Receive();
    void Answer(std::string_view datagram);
    void LookAround();
    void WaitForScout();

    std::function<void()> m_onTaken;
    boost::asio::ip::udp::socket m_socket;
    boost::asio::ip::udp::socket m_scout;
    boost::asio::steady_timer m_round;
    int m_port = 0;
    bool m_asked = false;  // for room
    bool m_quiet = true;   // since the last round
    bool m_scouting = false;
    std::array<char, 65'536> m_buffer{};
    std::array<char, 64> m_scouted{};
    boost::asio::ip::udp::endpoint m_peer;
    boost::asio::ip::udp::endpoint m_found;
};

}  // namespace emulator
