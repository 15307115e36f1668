// What the library does with a port that nobody listens on: each exchange fails at once, and nothing waits for an
// answer that cannot come.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "Fixture.h"
#include "LoopbackSocket.h"
#include "ProductSets.h"
#include "ServerPort.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/Result.h"

namespace {

constexpr const wchar_t* kProgramKey =
    L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\OKO-Control";
constexpr const wchar_t* kFolder = L"C:\\OKO-Control\\";

class RefusedPortTests : public DeviceTest {
 protected:
    RefusedPortTests() { RedirectLinks(port.Number()); }
    ~RefusedPortTests() override { RedirectLinks(0); }

    /// Sends "status" and gives the length of the reply.
    static int AskForStatus(CDevApiInterface_Impl& device) {
        constexpr const char* kCommand = "status";
        std::array<char, 65> reply{};
        int length = 0;
        device.CommandSend(kCommand, static_cast<int>(std::strlen(kCommand)), reply.data(), 64, &length);
        return length;
    }

    void InstallServer() {
        platform.registry.Set(kProgramKey, L"DisplayName", RegistryValue::Text(L"OKO-Control Server"));
        platform.registry.Set(kProgramKey, L"InstallLocation", RegistryValue::Text(kFolder));
        platform.files.Answer(std::wstring(kFolder) + L"*", {{L"OKO-Control.exe"}});
    }

    ServerPort port;
};

TEST_F(RefusedPortTests, CommandSend_GivesMinus1EachTime) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bLogCommunication = true;
    EXPECT_EQ(AskForStatus(device), -1);
    EXPECT_EQ(AskForStatus(device), -1);
    EXPECT_EQ(HostLog::Lines(), std::vector<std::wstring>(2, L"OKO-Lab bold line CommandSend: status -> "));
    device.Close();
}

TEST_F(RefusedPortTests, CommandSend_WithAReplyTimeout_DoesNotWaitForIt) {
    CDevApiInterface_Impl& device = RealDevice();
    device.SetReplyTimeout(3'600'000);
    EXPECT_EQ(AskForStatus(device), -1);
    EXPECT_FALSE(device.m_unansweredCommands.Take("status"));  // no answer is on its way
    device.Close();
}

TEST_F(RefusedPortTests, ChannelSlots_FailAndKeepTheirValues) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_products = {ProductWith(11, {237})};
    AssignOneOfEach(device);
    double value = 1.5;
    EXPECT_EQ(device.m_pTemperature[0]->GetCurrentTemperature(&value), oko::kFailure);
    EXPECT_EQ(device.m_pTemperature[0]->SetTargetTemperature(30.0), oko::kFailure);
    EXPECT_EQ(device.m_pGasConcentration[0]->GetCurrentGasConcentration(&value), oko::kFailure);
    EXPECT_EQ(device.m_pGasConcentration[1]->GetTargetGasConcentration(&value), oko::kFailure);
    EXPECT_EQ(device.m_pHumidifier[0]->SetTargetHumidity(70.0), oko::kFailure);
    EXPECT_EQ(device.m_pHumidifier[0]->GetTargetHumidity(&value), oko::kFailure);
    EXPECT_EQ(value, 1.5);
    EXPECT_EQ(device.m_pTemperature[0]->m_dTarget, 37.0);
    EXPECT_EQ(device.m_pHumidifier[0]->m_dTarget, 55.0);
    EXPECT_TRUE(HostLog::Lines().empty());
    device.Close();
}

TEST_F(RefusedPortTests, Init_WithoutAnInstalledServer_TellsThatThereIsNoAnswer) {
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(HostLog::Lines(), (std::vector<std::wstring>{L"OKO-Lab bold line Init()", L"Starting server first.",
                                                           L"System cannot find OKO-Control."}));
    EXPECT_EQ(platform.windows.ErrorBoxes(),
              (std::vector<RecordedWindows::ErrorBox>{{L"No Answer from server.", L"OKO-Control server error."}}));
    EXPECT_TRUE(device.m_bBusy);
    device.Close();
}

TEST_F(RefusedPortTests, Init_WhoseServerNeverComes_PollsItTwentyTimes) {
    InstallServer();
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(HostLog::Lines().back(), L"Server not started.");
    EXPECT_EQ(platform.clock.Sleeps(), std::vector<std::uint32_t>(20, 500));
    EXPECT_EQ(platform.windows.ErrorBoxes().size(), 1U);
    device.Close();
}

TEST_F(RefusedPortTests, Init_WhoseServerOpensItsPort_GoesOnOverTheSameLink) {
    InstallServer();
    platform.shell.onOpen = [this](const RecordedShell::Launch&) { port.Open(); };
    CDevApiInterface_Impl& device = RealDevice();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(HostLog::Lines().back(), L"Server started on 0 loops (0.000000 seconds)");
    EXPECT_TRUE(platform.windows.ErrorBoxes().empty());
    EXPECT_FALSE(device.m_bBusy);
    device.Close();
}

TEST_F(RefusedPortTests, ServerThatGoesAndComesBack_FailsTheReadsInBetween) {
    CDevApiInterface_Impl& device = RealDevice();
    AssignOneOfEach(device);
    double value = 0.0;
    port.Open();
    EXPECT_EQ(device.m_pTemperature[0]->GetCurrentTemperature(&value), oko::kSuccess);
    port.Close();
    EXPECT_EQ(device.m_pTemperature[0]->GetCurrentTemperature(&value), oko::kFailure);
    EXPECT_EQ(device.m_pTemperature[0]->GetCurrentTemperature(&value), oko::kFailure);
    port.Open();
    EXPECT_EQ(device.m_pTemperature[0]->GetCurrentTemperature(&value), oko::kSuccess);
    EXPECT_EQ(value, 1.0);
    device.Close();
}

TEST_F(RefusedPortTests, Close_ClosesTheLinkWithoutAnAnswer) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_products = {ProductWith(9), ProductWith(12)};
    device.m_bLogCommunication = true;
    device.Close();
    EXPECT_EQ(HostLog::Lines(),
              (std::vector<std::wstring>{
                  L"OKO-Lab bold line CommandSend: start 0 -> ", L"OKO-Lab bold line CommandSend: connect 9 0 -> ",
                  L"OKO-Lab bold line CommandSend: connect 12 0 -> ",
                  L"CDevApiInterface_Impl::DisconnectSocket: The socket has been successfully closed."}));
    EXPECT_FALSE(device.m_socket.IsOpen());
}

}  // namespace
