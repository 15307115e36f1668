#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cstddef>
#include <memory>

#include "control/RemoteControl.h"

namespace emulator {

/// Takes those who control on a TCP port of the loopback address. Everything happens on the thread that runs `context`,
/// which must not run any more when the server is destroyed.
class ControlServer {
 public:
    /// 0 takes a free port. Throws PortError when somebody has it.
    ControlServer(boost::asio::io_context& context, RemoteControl& control, int port);

    int Port() const { return m_port; }

    static constexpr std::size_t kMostClients = 32;
    static constexpr std::size_t kLongestLine = 65'536;
    static constexpr std::size_t kMostUnread = 4'000'000;  // bytes for one who does not read

 private:
    class Client;

    void Accept();

    RemoteControl& m_control;
    boost::asio::ip::tcp::acceptor m_acceptor;
    std::shared_ptr<std::size_t> m_clients = std::make_shared<std::size_t>(0);
    int m_port = 0;
};

}  // namespace emulator
