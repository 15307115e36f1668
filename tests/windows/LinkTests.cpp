// The link on real sockets: closed ones, whose numbers the system gives to others, and servers that keep silent.

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string_view>
#include <thread>
#include <vector>

#include "Channels.h"
#include "LoopbackServer.h"
#include "RegistryNames.h"
#include "oko/CDevApiInterface.h"
#include "windows/LoadedLibrary.h"

namespace {

/// A pair of sockets of the host's own, connected to each other.
class HostSockets {
 public:
    HostSockets() {
        m_own = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);  // first: this one is to get the free number
        m_peer = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(m_peer, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        int length = sizeof address;
        getsockname(m_peer, reinterpret_cast<sockaddr*>(&address), &length);
        connect(m_own, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        for (const SOCKET each : {m_own, m_peer}) {
            // Whoever receives from the wrong socket fails, and does not hang.
            constexpr DWORD kPatienceMs = 500;
            setsockopt(each, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&kPatienceMs), sizeof kPatienceMs);
        }
    }
    ~HostSockets() {
        closesocket(m_own);
        closesocket(m_peer);
    }
    HostSockets(const HostSockets&) = delete;
    HostSockets& operator=(const HostSockets&) = delete;

    SOCKET Own() const { return m_own; }

    bool PeerGotNothing() const {
        u_long waiting = 0;
        return ioctlsocket(m_peer, FIONREAD, &waiting) == 0 && waiting == 0;
    }
    bool IsOpen() const { return send(m_own, "x", 1, 0) == 1; }

 private:
    SOCKET m_peer;
    SOCKET m_own;
};

TEST(LinkTests, SocketOfTheHostWithAClosedLinksNumber_IsLeftAlone) {
    WSADATA data{};
    WSAStartup(MAKEWORD(2, 2), &data);
    {
        LoadedLibrary library;
        CDevApiInterface& device = library.Device(0);
        const LoopbackServer server([](std::string_view command) { return LoopbackServer::Reply(command, "1"); });

        // The number that the link gets: the next free one.
        const SOCKET probe = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
        closesocket(probe);
        device.ApplyConnection(L"");
        device.Close();

        std::vector<std::unique_ptr<HostSockets>> sockets;
        bool reused = false;
        for (int i = 0; i < 8; ++i) {
            sockets.push_back(std::make_unique<HostSockets>());
            reused = reused || sockets.back()->Own() == probe;
        }
        RecordProperty("numberReused", reused ? 1 : 0);
        double value = -7.0;
        EXPECT_EQ(TemperatureOf(device, 0).GetCurrentTemperature(&value), -1);
        EXPECT_EQ(value, -7.0);
        device.Close();
        for (const auto& pair : sockets) {
            EXPECT_TRUE(pair->PeerGotNothing()) << pair->Own();
            EXPECT_TRUE(pair->IsOpen()) << pair->Own();
        }
    }
    WSACleanup();
}

/// A real device with a reply time-out and a server that can fall silent for a while.
class ReplyTimeoutTests : public testing::Test {
 protected:
    static constexpr DWORD kTimeoutMs = 150;

    ReplyTimeoutTests()
        : m_server([this](std::string_view command) { return Answer(command); }), m_device(m_library.Device(0)) {
        HostRecord::Current() = {};
        EXPECT_EQ(
            RegSetKeyValueW(HKEY_LOCAL_MACHINE, kMiscKey, kTimeoutValue, REG_DWORD, &kTimeoutMs, sizeof kTimeoutMs),
            ERROR_SUCCESS);
        // On a busy machine an answer may come too late without any fault: until none of them did.
        EXPECT_TRUE(WaitUntil([this] {
            m_device.Close();
            m_device.ApplyConnection(L"m_iComPort 3");
            return m_device.Init(HostRecord::Callback, nullptr) == 0 && m_device.GetTemperatureCount() == 5;
        }));
        m_base = &TemperatureOf(m_device, 0);
        m_lid = &TemperatureOf(m_device, 1);
    }
    ~ReplyTimeoutTests() override {
        m_device.Close();
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Vellmark");
    }

    std::string Answer(std::string_view command) {
        if (m_silentMs > 0) {
            for (DWORD slept = 0; slept < m_silentMs; slept += 10) {
                Sleep(10);
            }
        }
        if (command == "listconprod") {
            return LoopbackServer::Reply(command, "7");
        }
        return LoopbackServer::Reply(command, command == "readcurval 7" ? "37.0" : "38.0");
    }

    std::atomic<DWORD> m_silentMs = 0;
    LoopbackServer m_server;
    LoadedLibrary m_library;
    CDevApiInterface& m_device;
    CDevApiInterface_Temperature* m_base = nullptr;
    CDevApiInterface_Temperature* m_lid = nullptr;
};

TEST_F(ReplyTimeoutTests, LateReply_IsNoAnswerAndNotTheNextCommandsEither) {
    ASSERT_EQ(m_device.GetTemperatureCount(), 5);
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        double value = -7.0;
        m_silentMs = 3 * kTimeoutMs;
        EXPECT_EQ(m_base->GetCurrentTemperature(&value), -1);
        EXPECT_EQ(value, -7.0);
        m_silentMs = 0;
        // The late reply is on its way while this waits for its own; the server takes one after the other.
        EXPECT_TRUE(WaitUntil([&] { return m_lid->GetCurrentTemperature(&value) == 0; }));
        EXPECT_EQ(value, 38.0);
        EXPECT_TRUE(WaitUntil([&] { return m_base->GetCurrentTemperature(&value) == 0; }));
        EXPECT_EQ(value, 37.0);
    }
}

TEST_F(ReplyTimeoutTests, CloseOfASecondThread_GetsThroughASilentServer) {
    m_silentMs = 60'000;
    std::atomic<bool> ended = false;
    std::atomic<int> reads = 0;
    std::thread poller([&] {
        for (; !ended; ++reads) {
            double value = 0.0;
            m_base->GetCurrentTemperature(&value);
        }
    });
    // It is the poller that has the link when Close asks for it.
    EXPECT_TRUE(WaitUntil([&] { return reads > 0; }));
    m_device.Close();
    ended = true;
    poller.join();
    double value = 0.0;
    EXPECT_EQ(m_base->GetCurrentTemperature(&value), -1);
    m_silentMs = 0;
}

}  // namespace
