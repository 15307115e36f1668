#pragma once

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "protocol/Answer.h"

namespace emulator {

/// The port cannot be had; the text is for the user.
class PortError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// What is sent for a command.
using CommandHandler = std::function<Transmission(const std::string& command)>;

/// Answers datagrams on a port of the loopback address. Everything happens on the thread that runs `context`, which
/// must not run any more when the server is destroyed.
class UdpServer {
 public:
    /// `handler` must not throw.
    UdpServer(boost::asio::io_context& context, CommandHandler handler);

    /// Takes the port; 0: a free one. A placeholder there is asked to make room, which may take seconds. Throws
    /// PortError when somebody else has it.
    void Open(int port);

    /// Gives the port up: nobody answers. Replies that were to come late do not come.
    void Close();

    bool IsOpen() const { return m_socket.is_open(); }

    /// The port while it is open.
    int Port() const;

 private:
    void Receive();
    void Take(std::string_view datagram);
    void Send(const std::string& datagram, const boost::asio::ip::udp::endpoint& peer);
    void SendLater(const Datagram& datagram, const boost::asio::ip::udp::endpoint& peer);

    boost::asio::io_context& m_context;
    CommandHandler m_handler;
    boost::asio::ip::udp::socket m_socket;
    int m_openings = 0;  // a late reply belongs to the opening that its command came in
    std::array<char, 65'536> m_buffer{};
    boost::asio::ip::udp::endpoint m_peer;
    std::string m_command;  // kept for its memory
};

/// A socket that has the port of the loopback address; 0: a free one. A placeholder there is asked to make room, which
/// may take seconds. Throws PortError when somebody else has it.
boost::asio::ip::udp::socket TakePort(boost::asio::io_context& context, int port);

/// Whether somebody has the port now, on this computer's own address or on all of its addresses.
bool IsPortTaken(boost::asio::io_context& context, int port);

}  // namespace emulator
