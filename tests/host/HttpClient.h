#pragma once

#include <cstdint>
#include <string>

/// A connection to a server on this computer, for the tests: says what it is told to, byte by byte, and gives up after
/// a time that no working server takes.
class HttpClient {
 public:
    explicit HttpClient(std::uint16_t port);
    ~HttpClient();
    HttpClient(HttpClient&& other) noexcept;
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    bool IsConnected() const { return m_socket >= 0; }
    int Socket() const { return m_socket; }

    /// False when the server has closed the connection.
    bool Send(const std::string& text);

    struct Reply {
        int status = 0;  // 0: none came
        std::string head;
        std::string body;
    };
    /// One reply with a length; to HEAD one without its body.
    Reply Read(bool isHead = false);

    /// All that comes up to and with that text; less when the connection ends first.
    std::string ReadUntil(const std::string& text);

    /// Whether the server closes the connection, after whatever it still has to say.
    bool IsClosed();

 private:
    bool ReadMore();

    int m_socket = -1;
    std::string m_received;
};

/// A request as it goes over the wire, to this computer.
std::string Wire(const std::string& method, const std::string& target, const std::string& headers = "",
                 const std::string& body = "");
