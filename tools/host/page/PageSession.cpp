#include "page/PageSession.h"

#include <algorithm>
#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/field.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/status.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/verb.hpp>
#include <boost/beast/http/write.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "page/Access.h"
#include "page/Request.h"
#include "page/Router.h"
#include "page/ServerLimits.h"

namespace {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using beast::error_code;
using net::ip::tcp;

beast::string_view View(std::string_view text) { return {text.data(), text.size()}; }

template <typename Message>
void SetHeaders(Message& message, const Headers& headers) {
    for (const auto& [name, value] : kSecurityHeaders) {
        message.set(View(name), View(value));
    }
    for (const auto& [name, value] : headers) {
        message.set(name, value);
    }
}

Request RequestOf(const http::request<http::string_body>& message) {
    Request request;
    request.method = std::string(message.method_string());
    request.target = std::string(message.target());
    request.body = message.body();
    for (const auto& field : message) {
        request.headers.emplace_back(std::string(field.name_string()), std::string(field.value()));
    }
    return request;
}

class HttpSession : public PageSession, public std::enable_shared_from_this<HttpSession> {
 public:
    HttpSession(tcp::socket socket, Owner& owner)
        : m_stream(std::move(socket)),
          m_owner(owner),
          m_limits(owner.Limits()),
          m_buffer(m_limits.headerBytes + m_limits.bodyBytes) {}

    ~HttpSession() override { m_owner.UnsentBytes() -= std::exchange(m_nUnsent, 0); }

    void Start() override { Read(); }

    void TurnAway(const struct Reply& reply) override {
        m_isLast = true;
        Reply(reply);
    }

    void Reply(const struct Reply& reply) override;
    void BeginStream() override;
    void Send(const Frame& frame) override;

    void Finish() override {
        m_isLast = true;
        if (m_phase == Phase::Waiting || (m_phase == Phase::Streaming && m_sending.empty())) {
            Close();
        }
    }

    void Close() override {
        if (std::exchange(m_phase, Phase::Closed) == Phase::Closed) {
            return;
        }
        error_code ignored;
        std::ignore = m_stream.socket().shutdown(tcp::socket::shutdown_both, ignored);
        m_stream.close();
        m_owner.Forget(shared_from_this());
    }

    bool IsIdle() const override { return m_phase == Phase::Waiting || m_phase == Phase::Lingering; }
    std::chrono::steady_clock::time_point IdleSince() const override { return m_since; }

 private:
    enum class Phase { Waiting, Answering, Streaming, Lingering, Closed };

    /// A handler that keeps the connection alive until it is called; what goes wrong in it costs this connection alone.
    template <typename Handler>
    auto Safely(Handler handler) {
        return [self = shared_from_this(), handler](const error_code& error, std::size_t bytes) {
            try {
                if (self->m_phase != Phase::Closed) {
                    handler(*self, error, bytes);
                }
            } catch (const std::exception&) {
                self->Close();
            }
        };
    }

    void Read();
    void HandleRequest(const error_code& error);
    void Write(http::response<http::string_body> response);
    void AfterReply();
    void Linger();
    void ReadAndForget();
    void SendQueue();
    void SendRest(std::size_t sent);
    std::vector<net::const_buffer> BuffersFrom(std::size_t skipped) const;

    beast::tcp_stream m_stream;
    Owner& m_owner;
    const ServerLimits& m_limits;
    beast::flat_buffer m_buffer;
    std::optional<http::request_parser<http::string_body>> m_parser;
    std::optional<http::response<http::string_body>> m_response;
    Phase m_phase = Phase::Waiting;
    std::chrono::steady_clock::time_point m_since = std::chrono::steady_clock::now();
    bool m_isHead = false;
    bool m_isLast = false;      // no request is read after this one
    std::size_t m_nUnsent = 0;  // what this one has in the owner's sum
    std::vector<Frame> m_queue;
    std::vector<Frame> m_sending;
    std::size_t m_nQueued = 0;  // bytes of both
    std::array<char, 256> m_unwanted{};
};

void HttpSession::Read() {
    m_phase = Phase::Waiting;
    m_since = std::chrono::steady_clock::now();
    m_isHead = false;
    m_parser.emplace();
    m_parser->header_limit(static_cast<std::uint32_t>(m_limits.headerBytes));
    m_parser->body_limit(m_limits.bodyBytes);
    // One limit for the whole request: a client that sends a byte now and then does not get a new one with each.
    m_stream.expires_after(m_limits.requestTime);
    http::async_read(m_stream, m_buffer, *m_parser, Safely([](HttpSession& self, const error_code& error, std::size_t) {
                         self.HandleRequest(error);
                     }));
}

void HttpSession::HandleRequest(const error_code& error) {
    if (!error && m_parser) {
        m_phase = Phase::Answering;
        m_isHead = m_parser->get().method() == http::verb::head;
        m_isLast = m_isLast || !m_parser->get().keep_alive() || m_parser->get().version() < 11;
        m_owner.Answer(shared_from_this(), RequestOf(m_parser->get()));
        return;
    }
    const bool isHttp = error.category() == make_error_code(http::error::bad_version).category();
    if (!isHttp || error == http::error::end_of_stream || error == http::error::partial_message) {
        Close();
    } else if (error == http::error::body_limit) {
        TurnAway(ErrorReply(413, "the body is too long"));
    } else if (error == http::error::header_limit || error == http::error::buffer_overflow) {
        TurnAway(ErrorReply(431, "the headers are too long"));
    } else {
        TurnAway(ErrorReply(400, "this is no HTTP request"));
    }
}

void HttpSession::Reply(const struct Reply& reply) {
    if (m_phase == Phase::Closed) {
        return;
    }
    if (reply.status == 200 && m_owner.UnsentBytes() + reply.body.size() > m_limits.unsentBytes) {
        Reply(ErrorReply(503, "too much is being sent to others; try again"));
        return;
    }
    http::response<http::string_body> response;
    response.version(11);
    response.result(static_cast<unsigned>(reply.status));
    response.set(http::field::content_type, reply.contentType);
    SetHeaders(response, reply.headers);
    response.content_length(reply.body.size());
    if (!m_isHead) {
        response.body() = reply.body;
    }
    Write(std::move(response));
}

void HttpSession::Write(http::response<http::string_body> response) {
    m_phase = Phase::Answering;
    m_nUnsent = response.body().size();
    m_owner.UnsentBytes() += m_nUnsent;
    response.keep_alive(!m_isLast);
    m_response = std::move(response);
    m_stream.expires_after(m_limits.sendTime);
    http::async_write(m_stream, *m_response, Safely([](HttpSession& self, const error_code& error, std::size_t) {
                          if (error) {
                              self.Close();
                          } else {
                              self.AfterReply();
                          }
                      }));
}

void HttpSession::AfterReply() {
    m_response.reset();
    m_owner.UnsentBytes() -= std::exchange(m_nUnsent, 0);
    if (m_isLast) {
        Linger();
    } else {
        Read();
    }
}

/// What the client still sends is read, as long as it is not too much: a connection that is closed with something
/// unread takes the reply with it.
void HttpSession::Linger() {
    m_phase = Phase::Lingering;
    m_since = std::chrono::steady_clock::now();
    error_code ignored;
    std::ignore = m_stream.socket().shutdown(tcp::socket::shutdown_send, ignored);
    m_stream.expires_after(m_limits.lingerTime);
    ReadAndForget();
}

void HttpSession::ReadAndForget() {
    m_stream.async_read_some(net::buffer(m_unwanted),
                             Safely([](HttpSession& self, const error_code& error, std::size_t) {
                                 if (error) {
                                     self.Close();
                                 } else {
                                     self.ReadAndForget();
                                 }
                             }));
}

void HttpSession::BeginStream() {
    http::response<http::empty_body> response;
    response.version(11);
    response.result(http::status::ok);
    response.set(http::field::content_type, "text/event-stream; charset=utf-8");
    SetHeaders(response, {{"Cache-Control", "no-store"}, {"X-Accel-Buffering", "no"}});
    response.keep_alive(false);
    std::ostringstream text;
    text << response.base();
    m_phase = Phase::Streaming;
    m_isLast = false;
    // The end of the connection is what is waited for; only what is sent has a time limit.
    m_stream.expires_never();
    ReadAndForget();
    Send(std::make_shared<const std::string>(text.str()));
}

void HttpSession::Send(const Frame& frame) {
    if (m_phase != Phase::Streaming) {
        return;
    }
    m_queue.push_back(frame);
    m_nQueued += frame->size();
    if (m_nQueued > m_limits.streamBytes) {
        Close();
    } else if (m_sending.empty()) {
        SendQueue();
    }
}

void HttpSession::SendQueue() {
    m_sending = std::exchange(m_queue, {});
    // Nearly always the system takes all of it at once; waiting for that would cost far more than the sending.
    error_code error;
    std::ignore = m_stream.socket().non_blocking(true, error);
    const std::size_t sent = m_stream.socket().write_some(BuffersFrom(0), error);
    if (error == net::error::would_block || !error) {
        m_nQueued -= sent;
        SendRest(sent);
    } else {
        Close();
    }
}

void HttpSession::SendRest(std::size_t sent) {
    const std::vector<net::const_buffer> buffers = BuffersFrom(sent);
    if (buffers.empty()) {
        m_sending.clear();
        if (m_isLast) {
            Close();
        }
        return;
    }
    m_stream.expires_after(m_limits.sendTime);
    net::async_write(m_stream, buffers, Safely([](HttpSession& self, const error_code& error, std::size_t bytes) {
                         self.m_sending.clear();
                         self.m_nQueued -= bytes;
                         if (error || (self.m_queue.empty() && self.m_isLast)) {
                             self.Close();
                         } else if (!self.m_queue.empty()) {
                             self.SendQueue();
                         }
                     }));
}

/// What is being sent, without so many bytes at its beginning.
std::vector<net::const_buffer> HttpSession::BuffersFrom(std::size_t skipped) const {
    std::vector<net::const_buffer> buffers;
    for (const Frame& frame : m_sending) {
        const net::const_buffer rest = net::buffer(*frame) + skipped;
        skipped -= std::min(skipped, frame->size());
        if (rest.size() > 0) {
            buffers.push_back(rest);
        }
    }
    return buffers;
}

}  // namespace

std::shared_ptr<PageSession> MakeSession(tcp::socket socket, PageSession::Owner& owner) {
    return std::make_shared<HttpSession>(std::move(socket), owner);
}
