// What a host may count on from one call to the next; docs/host-integration.md tells of it.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "Fixture.h"
#include "ProductSets.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/CDevApiInterface.h"
#include "oko/CDevApiInterface_GasConcentration.h"
#include "oko/CDevApiInterface_Temperature.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "oko/Settings.h"
#include "ui/DialogEnd.h"

namespace {

class HostLifeTests : public DeviceTest {
 protected:
    /// A device as a host gets it, without a link and without a callback. The server has these products.
    CDevApiInterface& Device(std::uint32_t index, const std::vector<int>& products) {
        ConnectProducts(platform, products);
        platform.server.AnswerPayload("readcurval 9", "36.5");
        platform.server.AnswerPayload("findstat", "-1");
        return MakeDevice(index);
    }

    void SwitchCommunicationLogOn() {
        platform.registry.Set(L"Software\\Vellmark\\Misc", L"LogCommunication", RegistryValue::Dword(1));
    }

    static CDevApiInterface_Temperature* Zone(CDevApiInterface& device) {
        CDevApiInterface_Temperature* zone = nullptr;
        device.GetTemperature(0, &zone);
        return zone;
    }

    static double Read(CDevApiInterface& device) {
        double value = std::nan("");
        return Zone(device)->GetCurrentTemperature(&value) == oko::kSuccess ? value : -1.0;
    }

    static std::vector<std::int32_t> Counts(CDevApiInterface& device) {
        return {device.GetTemperatureCount(), device.GetGasConcentrationCount(), device.GetHumidifierCount()};
    }

    /// The threads that the callback was called on from now on.
    void RecordThreads() {
        HostLog::SetHook([this](std::int32_t, const wchar_t*) {
            const std::scoped_lock lock(m_mutex);
            m_threads.insert(std::this_thread::get_id());
        });
    }

    std::mutex m_mutex;
    std::set<std::thread::id> m_threads;
};

TEST_F(HostLifeTests, WholeLife_TwiceOver_GivesTheSameObjectsAndValues) {
    CDevApiInterface& device = Device(oko::kRealDevice, {9, 12, 15});
    CDevApiInterface_Temperature* const zone = Zone(device);
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        EXPECT_EQ(device.ApplyConnection(L"m_iComPort 3"), oko::kSuccess);
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
        EXPECT_EQ(device.ApplyConfiguration(L""), oko::kSuccess);
        EXPECT_EQ(Counts(device), (std::vector<std::int32_t>{6, 2, 1}));
        EXPECT_EQ(Zone(device), zone);
        EXPECT_EQ(Read(device), 36.5);
        device.Close();
        EXPECT_EQ(Zone(device), zone);
        EXPECT_EQ(Read(device), -1.0);
    }
    EXPECT_EQ(platform.server.OpenSockets(), 0U);
}

TEST_F(HostLifeTests, Init_WithoutALink_Fails) {
    CDevApiInterface& device = Device(oko::kRealDevice, {9});
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    device.ApplyConnection(L"");
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
}

TEST_F(HostLifeTests, FailedInit_OffersNoChannels) {
    CDevApiInterface& device = Device(oko::kRealDevice, {9, 12, 15});
    EXPECT_EQ(Counts(device), (std::vector<std::int32_t>{16, 4, 4}));
    device.ApplyConnection(L"");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    platform.server.Answer("listprod", kReceiveFails);
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(Counts(device), (std::vector<std::int32_t>{0, 0, 0}));
}

TEST_F(HostLifeTests, FailedInit_LeavesTemperatureAndGasAnsweringFromMemory) {
    CDevApiInterface& device = Device(oko::kRealDevice, {9});
    device.ApplyConnection(L"");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(Read(device), 36.5);
    platform.server.Answer("listprod", kReceiveFails);
    platform.server.AnswerPayload("readcurval 9", "39.9");
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(Read(device), 36.5);
    device.Close();
    EXPECT_EQ(Read(device), 36.5);
}

TEST_F(HostLifeTests, FindAndConnect_LeavesTheLinkClosedForApplyConnection) {
    CDevApiInterface& device = Device(oko::kRealDevice, {9});
    ScriptedDialogs::Current().onConnection = [](CDevApiInterface_Impl&) { return DialogEnd::FindAndConnect; };
    std::array<wchar_t, oko::kConnectionTextLength> text{};
    device.ApplyConnection(L"");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(device.ShowConnection(text.data(), 0, nullptr), oko::kSuccess);
    EXPECT_EQ(Read(device), -1.0);
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kFailure);
    device.ApplyConnection(text.data());
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(Read(device), 36.5);
}

TEST_F(HostLifeTests, Callback_RunsOnTheThreadThatCalled) {
    SwitchCommunicationLogOn();
    CDevApiInterface& device = Device(oko::kRealDevice, {9});
    device.ApplyConnection(L"");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    RecordThreads();
    std::thread::id reader;
    std::thread thread([&] {
        reader = std::this_thread::get_id();
        EXPECT_EQ(Read(device), 36.5);
    });
    thread.join();
    EXPECT_EQ(m_threads, std::set<std::thread::id>{reader});
}

TEST_F(HostLifeTests, Callback_IsNeverCalledByTheValueThread) {
    SwitchCommunicationLogOn();
    CDevApiInterface& device = Device(oko::kSimulatorDevice, {});
    RecordThreads();
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    ASSERT_TRUE(platform.clock.WaitForOtherThreadSleeps(20));
    device.Close();
    EXPECT_EQ(m_threads, std::set<std::thread::id>{std::this_thread::get_id()});
}

TEST_F(HostLifeTests, Callback_StaysInUseAfterCloseUntilAnotherOneComes) {
    SwitchCommunicationLogOn();
    CDevApiInterface& device = Device(oko::kRealDevice, {9});
    device.ApplyConnection(L"");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    device.Close();
    HostLog::Reset();
    EXPECT_EQ(Read(device), -1.0);
    EXPECT_EQ(HostLog::Lines(), std::vector<std::wstring>{L"OKO-Lab bold line CommandSend: readcurval 9 -> "});
    device.ApplyConnection(L"");
    ASSERT_EQ(device.Init(nullptr, nullptr), oko::kSuccess);
    HostLog::Reset();
    EXPECT_EQ(Read(device), 36.5);
    EXPECT_TRUE(HostLog::Lines().empty());
}

TEST_F(HostLifeTests, ApplyConfiguration_ThatFindsAnotherAirMode_CallsNobody) {
    CDevApiInterface& device = Device(oko::kRealDevice, {11});
    device.ApplyConnection(L"");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    CDevApiInterface_GasConcentration* gas = nullptr;
    device.GetGasConcentration(0, &gas);
    for (const bool on : {true, false}) {
        platform.server.AnswerPayload("bl-param-read 11 237", on ? "1" : "0");
        EXPECT_EQ(device.ApplyConfiguration(L""), oko::kSuccess);
        EXPECT_EQ(gas->HasFeature(oko::kFeatureAirMode), on);
    }
    EXPECT_EQ(HostLog::AirModeChanges(), 0U);
}

}  // namespace
