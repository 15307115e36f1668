#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Fixture.h"
#include "Patience.h"
#include "core/CommandText.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/Exchange.h"
#include "oko/LibQuery.h"

namespace {

class TransportTests : public DeviceTest {
 protected:
    /// One exchange as a caller makes it; gives the length.
    int Exchange(CDevApiInterface_Impl& device, const std::string& command, int capacity = 64) {
        m_reply.fill('\0');
        int length = 12345;
        device.CommandSend(command.c_str(), static_cast<int>(command.size()), m_reply.data(), capacity, &length);
        return length;
    }

    std::array<char, 1024> m_reply{};
};

TEST_F(TransportTests, ConnectSocket_OpensAndConnectsToPort60000) {
    MakeDevice(oko::kRealDevice).ConnectSocket();
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"startup", "open", "connect 60000"}));
}

TEST_F(TransportTests, ConnectSocket_StartUpFails_MakesNoSocket) {
    platform.server.failStartUp = true;
    MakeDevice(oko::kRealDevice).ConnectSocket();
    EXPECT_EQ(platform.server.Calls(), std::vector<std::string>{"startup"});
}

TEST_F(TransportTests, ConnectSocket_NoSocket_ExchangesFailLater) {
    platform.server.failOpen = true;
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(Exchange(device, "listprod"), -1);
}

TEST_F(TransportTests, ConnectSocket_Twice_LeavesOneSocketOpen) {
    CDevApiInterface_Impl& device = RealDevice();
    device.ConnectSocket();
    EXPECT_EQ(platform.server.OpenSockets(), 1U);
    EXPECT_GT(Exchange(device, "listprod"), 0);
}

TEST_F(TransportTests, LinkThatIsNotOpen_GivesNoAnswerAndTouchesNoSocket) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bLogCommunication = true;
    device.DisconnectSocket();
    HostLog::Reset();
    platform.server.ClearCommands();
    EXPECT_EQ(Exchange(device, "readcurval 9"), -1);
    device.DisconnectSocket();
    device.Close();
    EXPECT_EQ(platform.server.Calls(), std::vector<std::string>{});
    EXPECT_EQ(HostLog::Lines()[1], L"CDevApiInterface_Impl::DisconnectSocket: The descriptor is not a socket.");
    // A device whose link was never opened, too.
    EXPECT_EQ(Exchange(MakeDevice(oko::kRealDevice), "readcurval 9"), -1);
    EXPECT_EQ(platform.server.Calls(), std::vector<std::string>{});
}

TEST_F(TransportTests, LinkOpenedOrClosedByAnotherThread_WaitsForTheExchangeUnderWay) {
    for (const bool opens : {true, false}) {
        SCOPED_TRACE(opens ? "opened" : "closed");
        CDevApiInterface_Impl& device = RealDevice();
        std::atomic<bool> waits = false;
        std::atomic<bool> changed = false;
        platform.locks.onWait = [&waits] { waits = true; };
        std::thread other;
        platform.server.SetDefault([&](std::string_view command) -> ServerReply {
            other = std::thread([&] {
                if (opens) {
                    device.ConnectSocket();
                } else {
                    device.DisconnectSocket();
                }
                changed = true;
            });
            EXPECT_TRUE(Await([&] { return waits || changed; }));
            EXPECT_FALSE(changed);
            return ScriptedServer::BuiltInReply(command);
        });
        EXPECT_GT(Exchange(device, "readcurval 9"), 0);
        other.join();
        platform.locks.onWait = nullptr;
        platform.server.SetDefault({});
        EXPECT_EQ(platform.server.OpenSockets(), opens ? 1U : 0U);
        device.DisconnectSocket();
        m_pDevice.reset();
    }
}

TEST_F(TransportTests, CommandSend_SendsTheTextWithoutItsTerminatorAndReceives) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.Answer("listprod", "0_listprod_7\r");
    platform.server.ClearCommands();
    EXPECT_EQ(Exchange(device, "listprod"), 13);
    EXPECT_STREQ(m_reply.data(), "0_listprod_7\r");
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"send listprod", "receive 64"}));
}

TEST_F(TransportTests, CommandSend_NullLength_StillExchanges) {
    CDevApiInterface_Impl& device = RealDevice();
    device.CommandSend("listprod", 8, m_reply.data(), 64, nullptr);
    EXPECT_STREQ(m_reply.data(), "0_listprod_1\r");
}

TEST_F(TransportTests, CommandSend_ShortSends_AreRepeatedFourTimesAtMost) {
    for (std::size_t shortSends = 0; shortSends <= 6; ++shortSends) {
        SCOPED_TRACE(shortSends);
        CDevApiInterface_Impl& device = RealDevice();
        platform.server.AnswerInTurn("listprod", {"first\r", "second\r", "third\r", "fourth\r", "fifth\r", "sixth\r"});
        platform.server.SendResults(std::vector<int>(shortSends, 3));
        platform.server.ClearCommands();
        const int length = Exchange(device, "listprod");
        const std::size_t sends = std::min<std::size_t>(shortSends, 4) + 1;
        EXPECT_EQ(platform.server.Commands(), std::vector<std::string>(sends, "listprod"));
        EXPECT_EQ(platform.server.Calls().size(), 2 * sends);
        const std::array<const char*, 5> replies{"first\r", "second\r", "third\r", "fourth\r", "fifth\r"};
        EXPECT_EQ(std::string_view(m_reply.data(), static_cast<std::size_t>(length)), replies.at(sends - 1));
        platform.server.SendResults({});
        m_pDevice.reset();
    }
}

TEST_F(TransportTests, CommandSend_FailedSends_AreRepeatedToo) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.SendResults({-1, -1});
    platform.server.ClearCommands();
    EXPECT_GT(Exchange(device, "status"), 0);
    EXPECT_EQ(platform.server.Commands().size(), 3U);
}

TEST_F(TransportTests, CommandSend_FailedReceive_IsNotRepeated) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.Answer("status", kReceiveFails);
    platform.server.ClearCommands();
    EXPECT_EQ(Exchange(device, "status"), -1);
    EXPECT_EQ(platform.server.Commands().size(), 1U);
}

TEST_F(TransportTests, CommandSend_LogOff_WritesNoLineAndNoTerminator) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.Answer("status", "0_status_");
    m_reply.fill('#');
    int length = 0;
    device.CommandSend("status", 6, m_reply.data(), 64, &length);
    EXPECT_EQ(m_reply[9], '#');
    EXPECT_TRUE(HostLog::Lines().empty());
}

TEST_F(TransportTests, CommandSend_LogOn_WritesTheLineAndTheTerminator) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bLogCommunication = true;
    platform.server.Answer("status", "0_status_\xB0 \r");
    m_reply.fill('#');
    int length = 0;
    device.CommandSend("status", 6, m_reply.data(), 64, &length);
    EXPECT_EQ(m_reply[12], '\0');
    EXPECT_EQ(HostLog::Lines(),
              std::vector<std::wstring>{L"OKO-Lab bold line CommandSend: status -> 0_status_\u00B0 \r"});
}

TEST_F(TransportTests, CommandSend_LogOnAndReceiveFailed_LogsAnEmptyReply) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bLogCommunication = true;
    platform.server.Answer("status", kReceiveFails);
    EXPECT_EQ(Exchange(device, "status"), -1);
    EXPECT_EQ(HostLog::Lines(), std::vector<std::wstring>{L"OKO-Lab bold line CommandSend: status -> "});
}

TEST_F(TransportTests, CommandSend_LogOnWithoutCallback_StillWritesTheTerminator) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bLogCommunication = true;
    device.HostCallback = nullptr;
    platform.server.Answer("status", "0_status_");
    m_reply.fill('#');
    int length = 0;
    device.CommandSend("status", 6, m_reply.data(), 64, &length);
    EXPECT_EQ(std::string(m_reply.data(), 11), std::string("0_status_\0#", 11));
}

TEST_F(TransportTests, Ask_ReplyThatFillsTheBuffer_IsWholeAndTerminatedInTheSpareByte) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bLogCommunication = true;
    for (const int capacity : {kReplySize, kListReplySize}) {
        SCOPED_TRACE(capacity);
        const std::string full(static_cast<std::size_t>(capacity), 'x');
        platform.server.Answer("status", full);
        const Reply reply = Ask(device, FormatCommand(command::kStatus), capacity);
        EXPECT_EQ(reply.m_nLength, capacity);
        EXPECT_STREQ(reply.c_str(), full.c_str());
    }
    EXPECT_EQ(HostLog::Lines().back().size(), 511U);
}

TEST_F(TransportTests, Ask_DatagramLongerThanTheBuffer_IsNoAnswer) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bLogCommunication = true;
    platform.server.Answer("status", std::string(65, 'x'));
    const Reply reply = Ask(device, FormatCommand(command::kStatus));
    EXPECT_EQ(reply.m_nLength, -1);
    EXPECT_FALSE(reply.IsAnswer());
}

TEST_F(TransportTests, Ask_CutCommand_IsNotSent) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.ClearCommands();
    const Reply reply = Ask(device, FormatCommand(command::kWriteTemperature, {9, 0, 1e300}));
    EXPECT_EQ(reply.m_nLength, -1);
    EXPECT_TRUE(platform.server.Calls().empty());
}

TEST_F(TransportTests, LogCallback_MayExchangeItself) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bLogCommunication = true;
    bool nested = false;
    std::thread other;
    HostLog::SetHook([&](std::int32_t, const wchar_t*) {
        if (nested) {
            return;
        }
        nested = true;
        // From another thread: the socket lock must not be held here.
        other = std::thread([&] { Tell(device, FormatCommand(command::kListProd)); });
        other.join();
    });
    Tell(device, FormatCommand(command::kStatus));
    EXPECT_EQ(HostLog::Lines().size(), 2U);
}

TEST_F(TransportTests, TwoThreads_NeverTakeEachOthersReply) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.SetDefault([](std::string_view command) -> ServerReply { return std::string(command); });
    std::atomic<int> wrong = 0;
    const auto exchange = [&](int product) {
        for (int i = 0; i < 300; ++i) {
            const CommandText command = FormatCommand(command::kListDev, {product});
            wrong += Ask(device, command).bytes() == command.view() ? 0 : 1;
        }
    };
    std::thread other(exchange, 8);
    exchange(9);
    other.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(TransportTests, Simulator_NeverUsesTheSocket) {
    CDevApiInterface_Impl& device = Simulator();
    device.ConnectSocket();
    platform.server.ClearCommands();
    EXPECT_GT(Exchange(device, "listprod"), 0);
    EXPECT_TRUE(platform.server.Calls().empty());
}

TEST_F(TransportTests, DisconnectSocket_EveryOutcome_IsLoggedByItsText) {
    struct Case {
        int error;
        const wchar_t* text;  // null: nothing
    };
    const std::vector<Case> cases{
        {0, L"CDevApiInterface_Impl::DisconnectSocket: The socket has been successfully closed."},
        {10004,
         L"CDevApiInterface_Impl::DisconnectSocket: The (blocking) Windows Socket 1.1 call was cancelled through "
         L"WSACancelBlockingCall."},
        {10035,
         L"CDevApiInterface_Impl::DisconnectSocket: The socket is marked as nonblocking, but the l_onoff member of the "
         L"linger structure is set to nonzero and the l_linger member of the linger structure is set to a nonzero "
         L"timeout value."},
        {10036,
         L"CDevApiInterface_Impl::DisconnectSocket: A blocking Windows Sockets 1.1 call is in progress, or the service "
         L"provider is still processing a callback function."},
        {10038, L"CDevApiInterface_Impl::DisconnectSocket: The descriptor is not a socket."},
        {10050, L"CDevApiInterface_Impl::DisconnectSocket: The network subsystem has failed."},
        {10093,
         L"CDevApiInterface_Impl::DisconnectSocket: A successful WSAStartup call must occur before using closesocket."},
        {10003, nullptr},
        {10094, nullptr},
        {10022, nullptr},
        {6, nullptr},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.error);
        HostLog::Reset();
        CDevApiInterface_Impl& device = RealDevice();
        platform.server.closeError = row.error;
        device.DisconnectSocket();
        EXPECT_TRUE(HostLog::Lines().empty());  // the log is off

        device.m_bLogCommunication = true;
        device.ConnectSocket();
        device.DisconnectSocket();
        EXPECT_EQ(HostLog::Lines(),
                  row.text != nullptr ? std::vector<std::wstring>{row.text} : std::vector<std::wstring>{});
        device.HostCallback = nullptr;
        device.DisconnectSocket();
        platform.server.closeError = 0;
        m_pDevice.reset();
    }
}

TEST_F(TransportTests, DisconnectSocket_Twice_SaysThatItIsNoSocket) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bLogCommunication = true;
    device.DisconnectSocket();
    device.DisconnectSocket();
    EXPECT_EQ(HostLog::Lines().back(), L"CDevApiInterface_Impl::DisconnectSocket: The descriptor is not a socket.");
}

}  // namespace
