#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "CountingAllocator.h"
#include "Fixture.h"
#include "channels/SharedValues.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Products.h"
#include "oko/CDevApiInterface_GasConcentration.h"
#include "oko/CDevApiInterface_Humidifier.h"
#include "oko/CDevApiInterface_Temperature.h"
#include "oko/LibQuery.h"

namespace {

class DeviceObjectTests : public DeviceTest {};

TEST_F(DeviceObjectTests, Construction_SetsEveryField) {
    for (const std::uint32_t index : {oko::kRealDevice, oko::kSimulatorDevice}) {
        SCOPED_TRACE(index);
        const CDevApiInterface_Impl& device = MakeDevice(index);
        const bool simulator = index == oko::kSimulatorDevice;
        EXPECT_EQ(device.m_iDeviceIndex, index);
        EXPECT_FALSE(device.m_hThread.IsOpen());
        EXPECT_EQ(device.m_pHostData, nullptr);
        EXPECT_EQ(device.m_nTemperatures, 16);
        EXPECT_EQ(device.m_nGasConcentrations, 4);
        EXPECT_EQ(device.m_nHumidifiers, 4);
        EXPECT_EQ(device.m_hNotifyWnd, nullptr);
        EXPECT_TRUE(device.m_bThreadRun);
        EXPECT_EQ(device.HostCallback, nullptr);
        EXPECT_FALSE(device.m_bLogCommunication);
        EXPECT_EQ(device.m_iProgress, 0);
        EXPECT_FALSE(device.m_bConnectingShown);
        EXPECT_FALSE(device.m_bSetupComplete);
        EXPECT_EQ(device.m_hProgressWnd, nullptr);
        EXPECT_EQ(device.m_pszConfigText, nullptr);
        EXPECT_EQ(device.m_nConfigTextSize, 0);
        EXPECT_EQ(device.m_pszConnectionText, nullptr);
        EXPECT_EQ(device.m_nConnectionTextLen, 0);
        EXPECT_EQ(device.m_adSpareTolerances, (std::array<double, 2>{1.0, 1.0}));
        EXPECT_EQ(device.m_iComPort, simulator ? 1 : 0);
        EXPECT_FALSE(device.m_bFindRequested);
        EXPECT_EQ(device.m_nComPorts, 0);
        EXPECT_EQ(device.m_bSimulator, simulator);
        EXPECT_FALSE(device.m_bServerErrorShown);
        EXPECT_TRUE(device.m_products.empty());
        EXPECT_EQ(device.m_bAirMode, 0);
        EXPECT_EQ(device.m_iFirstProduct, 7);
        EXPECT_EQ(device.m_iLastProduct, 17);
        EXPECT_FALSE(device.m_bBusy);
        EXPECT_STREQ(device.m_szSimListconprod.data(), "0_listconprod_9 12 15");
    }
}

TEST_F(DeviceObjectTests, Construction_MakesEveryTemperatureChannel) {
    const CDevApiInterface_Impl& device = MakeDevice(0);
    for (std::size_t i = 0; i < 16; ++i) {
        SCOPED_TRACE(i);
        const auto& channel = *device.m_pTemperature[i];
        EXPECT_EQ(Get(channel.m_address), (ChannelAddress{0, 0}));
        EXPECT_EQ(channel.m_bLogCommunication, 0);
        EXPECT_EQ(channel.m_pDevice, &device);
        EXPECT_EQ(channel.m_iIndex, static_cast<int>(i));
        EXPECT_EQ(channel.m_dCurrent, 20.0);
        EXPECT_EQ(channel.m_dTarget, 37.0);
        EXPECT_EQ(channel.m_dRate, 0.4);
        EXPECT_EQ(channel.m_dToleranceBelow, 0.2);
        EXPECT_EQ(channel.m_dToleranceAbove, 0.2);
        EXPECT_EQ(channel.m_dMin, 20.0);
        EXPECT_EQ(channel.m_dMax, 50.0);
        EXPECT_EQ(channel.m_iState, 0);
        EXPECT_EQ(channel.m_llFrequency, 1'000'000);
        EXPECT_EQ(channel.m_llLastTick, 0);
    }
}

TEST_F(DeviceObjectTests, Construction_MakesEveryGasAndHumidityChannelAndSeedsEachTime) {
    platform.clock.SetTime(1234);
    const CDevApiInterface_Impl& device = MakeDevice(0);
    for (std::size_t i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        const auto& gas = *device.m_pGasConcentration[i];
        EXPECT_EQ(Get(gas.m_address), (ChannelAddress{0, 0}));
        EXPECT_EQ(gas.m_iIndex, static_cast<int>(i));
        EXPECT_EQ(gas.m_dCurrent, 5.0);
        EXPECT_EQ(gas.m_dTarget, 20.0);
        EXPECT_EQ(gas.m_iState, 1);
        EXPECT_EQ(gas.m_dToleranceBelow, 0.5);
        EXPECT_EQ(gas.m_dToleranceAbove, 0.5);
        EXPECT_EQ(gas.m_uStatusCount, 0U);
        EXPECT_EQ(gas.m_bLogCommunication, 0);
        const auto& humidifier = *device.m_pHumidifier[i];
        EXPECT_EQ(Get(humidifier.m_address), (ChannelAddress{0, 0}));
        EXPECT_EQ(humidifier.m_iIndex, static_cast<int>(i));
        EXPECT_EQ(humidifier.m_dCurrent, 55.0);
        EXPECT_EQ(humidifier.m_dTarget, 55.0);
        EXPECT_EQ(humidifier.m_iState, 1);
        EXPECT_EQ(humidifier.m_dToleranceBelow, 0.5);
        EXPECT_EQ(humidifier.m_dToleranceAbove, 2.0);
        EXPECT_EQ(humidifier.m_bEnabled, 1);
    }
    EXPECT_EQ(platform.random.Seeds(), std::vector<unsigned>(8, 1234));
}

TEST_F(DeviceObjectTests, Channel_CopiesTheDevicesLogFlagWhenItIsMade) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    device.m_bLogCommunication = true;
    EXPECT_EQ(CDevApiInterface_Temperature_Impl(device, 0).m_bLogCommunication, 1);
    EXPECT_EQ(CDevApiInterface_GasConcentration_Impl(device, 0).m_bLogCommunication, 1);
    EXPECT_EQ(CDevApiInterface_Humidifier_Impl(device, 0).m_bLogCommunication, 1);
}

TEST_F(DeviceObjectTests, UnusedSlots_GiveTheirConstants) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    EXPECT_FALSE(device.Unused2());
    EXPECT_EQ(device.Unused8(), 0);
}

TEST_F(DeviceObjectTests, GetChannel_BelowTheBound_GivesAChannelWhateverTheCounts) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    device.m_nTemperatures = device.m_nGasConcentrations = device.m_nHumidifiers = 0;
    CDevApiInterface_Temperature* temperature = nullptr;
    CDevApiInterface_GasConcentration* gas = nullptr;
    CDevApiInterface_Humidifier* humidifier = nullptr;
    EXPECT_EQ(device.GetTemperature(15, &temperature), 0);
    EXPECT_EQ(device.GetGasConcentration(3, &gas), 0);
    EXPECT_EQ(device.GetHumidifier(3, &humidifier), 0);
    EXPECT_EQ(temperature, device.m_pTemperature[15]);
    EXPECT_EQ(gas, device.m_pGasConcentration[3]);
    EXPECT_EQ(humidifier, device.m_pHumidifier[3]);
    EXPECT_EQ(device.GetTemperatureCount(), 0);
}

TEST_F(DeviceObjectTests, GetChannel_AtTheBoundOrMissing_LeavesThePointer) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    device.m_pTemperature[5]->DeletingDestructor(1);
    auto* const mark = reinterpret_cast<CDevApiInterface_Temperature*>(&device);
    for (const std::uint32_t index : {5U, 16U, 17U, 0x80000000U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(index);
        CDevApiInterface_Temperature* channel = mark;
        EXPECT_EQ(device.GetTemperature(index, &channel), 0);
        EXPECT_EQ(channel, mark);
    }
    CDevApiInterface_GasConcentration* gas = nullptr;
    CDevApiInterface_Humidifier* humidifier = nullptr;
    EXPECT_EQ(device.GetGasConcentration(4, &gas), 0);
    EXPECT_EQ(device.GetHumidifier(4, &humidifier), 0);
    EXPECT_EQ(gas, nullptr);
    EXPECT_EQ(humidifier, nullptr);
    EXPECT_EQ(device.GetTemperature(0, nullptr), 0);
    EXPECT_EQ(device.GetGasConcentration(0, nullptr), 0);
    EXPECT_EQ(device.GetHumidifier(0, nullptr), 0);
}

TEST_F(DeviceObjectTests, DeletedChannel_LeavesItsArrayAndIsNotDeletedAgain) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    CDevApiInterface_Temperature* const temperature = device.m_pTemperature[3];
    EXPECT_EQ(temperature->DeletingDestructor(1), temperature);
    device.m_pGasConcentration[3]->DeletingDestructor(1);
    device.m_pHumidifier[0]->DeletingDestructor(1);
    EXPECT_EQ(device.m_pTemperature[3], nullptr);
    EXPECT_EQ(device.m_pGasConcentration[3], nullptr);
    EXPECT_EQ(device.m_pHumidifier[0], nullptr);
}

TEST_F(DeviceObjectTests, DeletingDestructor_WithoutTheBit_LeavesTheMemory) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    alignas(CDevApiInterface_Temperature_Impl) std::array<std::byte, sizeof(CDevApiInterface_Temperature_Impl)> memory;
    auto* const channel = new (memory.data()) CDevApiInterface_Temperature_Impl(device, 7);
    device.m_pTemperature[7]->DeletingDestructor(1);
    EXPECT_EQ(channel->DeletingDestructor(0), memory.data());
}

TEST_F(DeviceObjectTests, ApplyConnection_TakesThePortAndOpensTheSocket) {
    struct Case {
        const wchar_t* text;
        int port;
    };
    for (const Case& row : {Case{L"m_iComPort 3", 3}, Case{L"", 9}, Case{nullptr, 9}, Case{L"nonsense", 9}}) {
        SCOPED_TRACE(testing::PrintToString(row.text));
        CDevApiInterface_Impl& device = MakeDevice(0);
        device.m_iComPort = 9;
        platform.server.ClearCommands();
        EXPECT_EQ(device.ApplyConnection(row.text), 0);
        EXPECT_EQ(device.m_iComPort, row.port);
        EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"startup", "open", "connect 60000"}));
    }
}

TEST_F(DeviceObjectTests, ApplyConnection_OfTheSimulator_OpensTheSocketToo) {
    EXPECT_EQ(MakeDevice(oko::kSimulatorDevice).ApplyConnection(L"m_iComPort 3"), 0);
    EXPECT_EQ(platform.server.Calls(), (std::vector<std::string>{"startup", "open", "connect 60000"}));
}

TEST_F(DeviceObjectTests, ApplyConnection_WithAProgressWindow_Reports5) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    device.ApplyConnection(L"");
    EXPECT_EQ(device.m_iProgress, 0);
    int window = 0;
    device.m_hProgressWnd = &window;
    device.ApplyConnection(L"");
    EXPECT_EQ(device.m_iProgress, 5);
    EXPECT_EQ(platform.windows.Percents(&window), std::vector<int>{5});
}

TEST_F(DeviceObjectTests, Destruction_FreesTemperaturesThenGasesThenHumidifiers) {
    const CDevApiInterface_Impl& device = RealDevice();
    std::vector<const void*> channels;
    const auto add = [&channels](const auto& slots) {
        for (const auto& slot : slots) {
            channels.push_back(slot.Get());
        }
    };
    add(device.m_pTemperature);
    add(device.m_pGasConcentration);
    add(device.m_pHumidifier);
    StartNotingFrees();
    m_pDevice.reset();
    std::vector<const void*> freed = StopNotingFrees();
    std::erase_if(freed, [&](const void* memory) { return std::ranges::find(channels, memory) == channels.end(); });
    EXPECT_EQ(freed, channels);
}

TEST_F(DeviceObjectTests, ApplyConnection_Reports5BeforeItReadsTheTextAndOpensTheSocket) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    int window = 0;
    device.m_hProgressWnd = &window;
    device.m_iComPort = 9;
    std::vector<std::string> steps;
    const auto note = [&](const std::string& step) {
        steps.push_back(step + " at port " + std::to_string(device.m_iComPort));
    };
    platform.windows.onEvent = note;
    platform.server.onCall = note;
    device.ApplyConnection(L"m_iComPort 3");
    platform.windows.onEvent = {};
    platform.server.onCall = {};
    EXPECT_EQ(steps, (std::vector<std::string>{"5 % at port 9", "startup at port 3", "open at port 3",
                                               "connect 60000 at port 3"}));
}

TEST_F(DeviceObjectTests, Destruction_LeavesTheSocketOpen) {
    RealDevice();
    m_pDevice.reset();
    EXPECT_EQ(platform.server.OpenSockets(), 1U);
}

}  // namespace
