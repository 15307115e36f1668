// The placeholder that stands for a silent port, and how it hands the port over: no command may go unanswered, however
// busy the machine is.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "EmulatorProcess.h"
#include "LoopbackClient.h"
#include "windows/ChildProcess.h"
#include "windows/LoadedLibrary.h"
#include "windows/ServerPort.h"

namespace {

constexpr std::string_view kMakeRoom = "oko-control-emulator: make room";
constexpr std::string_view kRoomMade = "oko-control-emulator: room made";

TEST(PlaceholderTests, PlaceholderThatMakesRoom_StillAnswersWhoeverComesFirst) {
    const EmulatorProcess placeholder(L"--placeholder");
    const LoopbackClient client;
    EXPECT_EQ(client.Ask("listprod"), "");
    EXPECT_EQ(client.Ask("oko-control-emulator: make room"), "oko-control-emulator: room made");
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(client.Ask("listprod"), "") << i;  // more probes than the handover has time slices
    }
}

TEST(PlaceholderTests, RoomThatIsTakenLateOrNever_IsKeptByThePlaceholder) {
    const EmulatorProcess placeholder(L"--placeholder");
    const LoopbackClient client;
    EXPECT_EQ(client.Ask(kMakeRoom), kRoomMade);
    Sleep(2000);  // as an asker that a busy machine keeps from the port
    EXPECT_EQ(client.Ask("listprod"), "");
}

TEST(PlaceholderTests, HandoverToAnEmulator_LeavesNoCommandUnanswered) {
    const EmulatorProcess placeholder(L"--placeholder");
    const LoopbackClient client;
    const ChildProcess emulator(L"oko-control-emulator.exe", L"--quiet --until-eof --scenario product-9");
    std::string reply;
    EXPECT_TRUE(WaitUntil([&] {
        reply = client.Ask("listprod");
        return !reply.empty();
    }));
    EXPECT_TRUE(reply.starts_with("0_listprod_")) << reply;
    EXPECT_TRUE(WaitUntil([&] { return placeholder.HasEnded(); }));
    EXPECT_TRUE(client.Ask("listprod").starts_with("0_listprod_"));
}

/// A socket on the server's port that lets others share it, as the placeholder's does.
class SharedPort {
 public:
    SharedPort() {
        WSADATA data{};
        WSAStartup(MAKEWORD(2, 2), &data);
        m_socket = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
        const BOOL yes = TRUE;
        setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&yes), sizeof yes);
        EXPECT_TRUE(BindToServerPort(m_socket));
    }
    ~SharedPort() {
        closesocket(m_socket);
        WSACleanup();
    }
    SharedPort(const SharedPort&) = delete;
    SharedPort& operator=(const SharedPort&) = delete;

    /// Waits for a datagram, and gives it an answer some time later.
    std::string AnswerLate(std::string_view answer, DWORD delayMs) const {
        std::array<char, 100> datagram;
        sockaddr_in peer{};
        int peerLength = sizeof peer;
        const int length = recvfrom(m_socket, datagram.data(), static_cast<int>(datagram.size()), 0,
                                    reinterpret_cast<sockaddr*>(&peer), &peerLength);
        Sleep(delayMs);
        sendto(m_socket, answer.data(), static_cast<int>(answer.size()), 0, reinterpret_cast<const sockaddr*>(&peer),
               peerLength);
        return {datagram.data(), static_cast<std::size_t>(std::max(length, 0))};
    }

 private:
    SOCKET m_socket = INVALID_SOCKET;
};

TEST(PlaceholderTests, AskerThatWaitsForItsRoom_IsPatient) {
    ExpectFreeServerPort();
    const SharedPort port;
    const ChildProcess emulator(L"oko-control-emulator.exe", L"--quiet --until-eof --scenario product-9");
    EXPECT_EQ(port.AnswerLate(kRoomMade, 2000), kMakeRoom);
    EXPECT_TRUE(WaitUntil([&] { return emulator.HasWritten("answering on ") || emulator.HasEnded(); }));
    EXPECT_FALSE(emulator.HasEnded()) << emulator.Output();
}

}  // namespace
