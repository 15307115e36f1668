// The real device against a server on a real socket.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Channels.h"
#include "LoadedLibrary.h"
#include "LoopbackServer.h"

namespace {

/// A server with one heater, product 9, whose current value and set point a test chooses.
class TransportTests : public testing::Test {
 protected:
    TransportTests()
        : m_server([this](std::string_view command) { return Answer(command); }), m_device(m_library.Device(0)) {
        HostRecord::Current() = {};
        m_device.ApplyConnection(L"m_iComPort 3");
        EXPECT_EQ(m_device.Init(HostRecord::Callback, nullptr), 0);
        m_channel = &TemperatureOf(m_device, 0);
    }
    ~TransportTests() override { m_device.Close(); }

    std::string Answer(std::string_view command) {
        if (command == "listconprod") {
            return LoopbackServer::Reply(command, "9");
        }
        if (command == "comport 9 0") {
            return LoopbackServer::Reply(command, "3");
        }
        if (command == "listdev 9") {
            return LoopbackServer::Reply(command, "0");
        }
        if (command == "readmax 9 0") {
            return LoopbackServer::Reply(command, "60");
        }
        if (command == "readcurval 9") {
            const std::scoped_lock lock(m_mutex);
            return m_currentReply;
        }
        return LoopbackServer::Reply(command, "1");
    }

    void ReplyToCurrent(std::string reply) {
        const std::scoped_lock lock(m_mutex);
        m_currentReply = std::move(reply);
    }

    /// The current value, or -1 for a failure.
    double Current() {
        double value = -7.0;
        return m_channel->GetCurrentTemperature(&value) == 0 ? value : -1.0;
    }

    std::mutex m_mutex;
    std::string m_currentReply = "0_readcurval 9_36.512 \r";
    LoopbackServer m_server;
    LoadedLibrary m_library;
    CDevApiInterface& m_device;
    CDevApiInterface_Temperature* m_channel = nullptr;
};

TEST_F(TransportTests, Init_SendsItsCommandsByteForByte) {
    std::vector<std::string> commands = m_server.Commands();
    ASSERT_GT(commands.size(), 40U);
    commands.resize(3);
    EXPECT_EQ(commands, (std::vector<std::string>{"listprod", "mode 7 0", "mode 8 0"}));
    const std::vector<std::string> all = m_server.Commands();
    EXPECT_NE(std::ranges::find(all, "comport 13 1 3"), all.end());
    EXPECT_EQ(m_device.GetTemperatureCount(), 1);
}

TEST_F(TransportTests, Channel_ReadsAndSets) {
    EXPECT_EQ(Current(), 36.512);
    EXPECT_EQ(m_channel->SetTargetTemperature(37.26), 0);
    const std::vector<std::string> commands = m_server.Commands();
    EXPECT_NE(std::ranges::find(commands, "writesetpoint 9 0 37.3"), commands.end());
}

TEST_F(TransportTests, Reply_OfExactly64Bytes_IsRead) {
    const std::string start = "0_readcurval 9_21.25 ";
    ReplyToCurrent(start + std::string(64 - start.size(), 'x'));
    EXPECT_EQ(Current(), 21.25);
}

TEST_F(TransportTests, Reply_LongerThanTheBuffer_Fails) {
    ReplyToCurrent("0_readcurval 9_21.25 " + std::string(100, 'x'));
    EXPECT_EQ(Current(), -1.0);
    ReplyToCurrent("0_readcurval 9_21.25 \r");
    EXPECT_EQ(Current(), 21.25);
}

TEST_F(TransportTests, EmptyDatagram_Fails) {
    ReplyToCurrent("");
    EXPECT_EQ(Current(), -1.0);
}

TEST_F(TransportTests, GermanHost_WireAndValuesKeepTheDecimalPoint) {
    ASSERT_NE(std::setlocale(LC_ALL, "German"), nullptr);
    std::array<char, 16> comma{};
    std::snprintf(comma.data(), comma.size(), "%0.1f", 37.5);
    // The run-time that the library shares with this program, not the compiler's own printf.
    using Printf = int (*)(char*, const char*, ...);
    const auto sharedSprintf =
        reinterpret_cast<Printf>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"msvcrt.dll"), "sprintf")));
    sharedSprintf(comma.data(), "%0.1f", 37.5);
    ASSERT_STREQ(comma.data(), "37,5");  // else this test would prove nothing
    EXPECT_EQ(m_channel->SetTargetTemperature(37.5), 0);
    EXPECT_EQ(Current(), 36.512);
    EXPECT_EQ(m_device.ApplyConfiguration(L"dIncubatorBelow 1.25 | dIncubatorAbove 2.5"), 0);
    std::setlocale(LC_ALL, "C");
    double below = 0.0;
    double above = 0.0;
    m_channel->GetTolerance(&below, &above);
    EXPECT_EQ(below, 1.25);
    EXPECT_EQ(above, 2.5);
    const std::vector<std::string> commands = m_server.Commands();
    EXPECT_NE(std::ranges::find(commands, "writesetpoint 9 0 37.5"), commands.end());
    EXPECT_NE(std::ranges::find(commands, "alarm 9 1.2"), commands.end());
}

}  // namespace
