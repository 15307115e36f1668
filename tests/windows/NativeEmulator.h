#pragma once

#include <gtest/gtest.h>
#include <winsock2.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

/// The emulator of the system that Wine runs on, in place of the one for Windows: tests/windows/NativeEmulator.py
/// starts it, and this is a connection to that. What the emulator writes comes over it, and it ends with it.
class NativeEmulator {
 public:
    /// Where NativeEmulator.py listens; 0 when it does not run, and the emulator for Windows is to be used.
    static int LauncherPort() {
        const char* const port = std::getenv("OKO_NATIVE_EMULATOR_PORT");
        return port != nullptr ? std::atoi(port) : 0;
    }

    explicit NativeEmulator(const std::wstring& options) {
        WSADATA data{};
        WSAStartup(MAKEWORD(2, 2), &data);
        m_socket = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<u_short>(LauncherPort()));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        Write(std::string(options.begin(), options.end()) + "\n");
        m_reader = std::thread([this] { Read(); });
    }
    ~NativeEmulator() {
        shutdown(m_socket, SD_SEND);  // it has ended when nothing more comes
        m_reader.join();
        closesocket(m_socket);
        WSACleanup();
    }
    NativeEmulator(const NativeEmulator&) = delete;
    NativeEmulator& operator=(const NativeEmulator&) = delete;

    /// Gives it these bytes as input.
    void Write(std::string_view bytes) const {
        EXPECT_EQ(send(m_socket, bytes.data(), static_cast<int>(bytes.size()), 0), static_cast<int>(bytes.size()));
    }

    std::string Output() const {
        const std::scoped_lock lock(m_mutex);
        return m_output;
    }

    bool HasEnded() const {
        const std::scoped_lock lock(m_mutex);
        return m_bEnded;
    }

 private:
    void Read() {
        std::array<char, 4096> buffer;
        int length = 0;
        do {
            length = recv(m_socket, buffer.data(), static_cast<int>(buffer.size()), 0);
            const std::scoped_lock lock(m_mutex);
            m_output.append(buffer.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
            m_bEnded = length <= 0;
        } while (length > 0);
    }

    SOCKET m_socket = INVALID_SOCKET;
    mutable std::mutex m_mutex;
    std::string m_output;
    bool m_bEnded = false;
    std::thread m_reader;
};
