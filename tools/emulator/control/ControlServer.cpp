#include "control/ControlServer.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <boost/system/error_code.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "control/ControlSession.h"
#include "control/RemoteControl.h"
#include "net/UdpServer.h"

namespace emulator {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

/// A browser can be led to send to this port what a foreign page wants; it cannot but begin like this.
bool IsFromBrowser(std::string_view line) { return line.find(" HTTP/1.") != std::string_view::npos; }

}  // namespace

/// One connection. Lives as long as something of it is under way.
class ControlServer::Client : public std::enable_shared_from_this<ControlServer::Client> {
 public:
    Client(tcp::socket socket, std::shared_ptr<std::size_t> clients)
        : m_socket(std::move(socket)), m_clients(std::move(clients)) {
        ++*m_clients;
    }
    ~Client() { --*m_clients; }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void Start(RemoteControl& control) {
        m_session = control.Open([weak = weak_from_this()](const std::string& line) {
            if (const auto self = weak.lock()) {
                self->Tell(line);
            }
        });
        Read();
    }

 private:
    void Read() {
        asio::async_read_until(m_socket, asio::dynamic_buffer(m_input, kLongestLine), '\n',
                               [self = shared_from_this()](error_code error, std::size_t length) {
                                   if (error) {
                                       self->Leave();
                                       return;
                                   }
                                   self->TakeLine(length);
                               });
    }

    void TakeLine(std::size_t length) {
        std::string line = m_input.substr(0, length - 1);
        m_input.erase(0, length);
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        if (IsFromBrowser(line)) {
            Leave();
            return;
        }
        m_session->Take(line);
        if (m_socket.is_open()) {
            Read();
        }
    }

    void Tell(const std::string& line) {
        if (m_output.size() + line.size() > kMostUnread) {
            Leave();
            return;
        }
        m_output.append(line).append("\n");
        Write();
    }

    void Write() {
        if (!m_written.empty() || m_output.empty()) {
            return;
        }
        std::swap(m_written, m_output);
        asio::async_write(m_socket, asio::buffer(m_written),
                          [self = shared_from_this()](error_code error, std::size_t) {
                              self->m_written.clear();
                              if (error) {
                                  self->Leave();
                                  return;
                              }
                              self->Write();
                          });
    }

    void Leave() {
        m_session->Leave();
        error_code ignored;
        std::ignore = m_socket.close(ignored);
    }

    tcp::socket m_socket;
    std::shared_ptr<std::size_t> m_clients;
    std::shared_ptr<ControlSession> m_session;
    std::string m_input;
    std::string m_output;   // what is to be written
    std::string m_written;  // what is being written
};

ControlServer::ControlServer(asio::io_context& context, RemoteControl& control, int port)
    : m_control(control), m_acceptor(context) {
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(port));
    error_code error;
    std::ignore = m_acceptor.open(endpoint.protocol(), error);
#ifndef _WIN32
    // There it would let two programs share the port.
    std::ignore = m_acceptor.set_option(tcp::acceptor::reuse_address(true), error);
#endif
    std::ignore = m_acceptor.bind(endpoint, error);
    if (!error) {
        std::ignore = m_acceptor.listen(asio::socket_base::max_listen_connections, error);
    }
    if (error) {
        throw PortError("port " + std::to_string(port) + " cannot be had for the remote control: " + error.message());
    }
    m_port = m_acceptor.local_endpoint().port();
    Accept();
}

void ControlServer::Accept() {
    m_acceptor.async_accept([this](error_code error, tcp::socket socket) {
        if (error == asio::error::operation_aborted) {
            return;
        }
        if (!error && *m_clients < kMostClients) {
            // cppcheck-suppress accessMoved  ; it is moved once, into the one argument
            std::make_shared<Client>(std::move(socket), m_clients)->Start(m_control);
        }
        Accept();
    });
}

}  // namespace emulator
