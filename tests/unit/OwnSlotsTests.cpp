// Where the library calls a slot of its own object, it calls what stands in that slot.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Fixture.h"
#include "ProductSets.h"
#include "ReplacedSlots.h"
#include "fakes/Dialogs.h"
#include "fakes/ScriptedPlatform.h"
#include "link/LinkOperation.h"
#include "oko/CDevApiInterface.h"
#include "oko/Settings.h"
#include "ui/ConfigurationFields.h"
#include "ui/DialogEnd.h"
#include "ui/resources/ResourceIds.h"

namespace {

constexpr std::size_t kDeviceSlots = 15;
constexpr std::size_t kTemperatureSlots = 15;

class OwnSlotsTests : public DeviceTest {};

std::int32_t RefuseTarget(CDevApiInterface_Temperature*, double*) { return oko::kFailure; }

TEST_F(OwnSlotsTests, SetTarget_ReadsBackThroughTheChannelsSlot4) {
    CDevApiInterface_Impl& device = RealDevice();
    auto& channel = Ready(*device.m_pTemperature[0], 9, 0);
    ReplacedSlots<kTemperatureSlots> slots(&channel);
    slots.Replace(4, RefuseTarget);
    EXPECT_EQ(channel.SetTargetTemperature(30.0), 0);
    EXPECT_EQ(platform.server.Commands(),
              (std::vector<std::string>{"writesetpoint 9 0 30.0", "writesetpoint 9 0 37.0"}));
    EXPECT_EQ(channel.m_dTarget, 37.0);
}

/// How often each of the device's slots 9 to 14 was called.
std::array<std::atomic<int>, kDeviceSlots> g_calls;

std::int32_t CountOne(std::size_t slot) {
    ++g_calls[slot];
    return 1;
}
std::int32_t OneTemperature(CDevApiInterface*) { return CountOne(9); }
std::int32_t OneGas(CDevApiInterface*) { return CountOne(11); }
std::int32_t OneHumidifier(CDevApiInterface*) { return CountOne(13); }
std::int32_t NoTemperature(CDevApiInterface*, std::uint32_t, CDevApiInterface_Temperature**) { return CountOne(10); }
std::int32_t NoGas(CDevApiInterface*, std::uint32_t, CDevApiInterface_GasConcentration**) { return CountOne(12); }
std::int32_t NoHumidifier(CDevApiInterface*, std::uint32_t, CDevApiInterface_Humidifier**) { return CountOne(14); }

TEST_F(OwnSlotsTests, ValueThread_ReachesTheChannelsThroughTheDevicesSlots) {
    CDevApiInterface_Impl& device = Simulator();
    ReplacedSlots<kDeviceSlots> slots(&device);
    slots.Replace(9, OneTemperature);
    slots.Replace(10, NoTemperature);
    slots.Replace(11, OneGas);
    slots.Replace(12, NoGas);
    slots.Replace(13, OneHumidifier);
    slots.Replace(14, NoHumidifier);
    for (auto& calls : g_calls) {
        calls = 0;
    }
    const double before = device.m_pTemperature[0]->m_dCurrent;
    device.StartValueThread(device);
    EXPECT_TRUE(platform.clock.WaitForOtherThreadSleeps(3));
    device.StopValueThread();
    for (const std::size_t counted : {9U, 11U, 13U}) {
        EXPECT_EQ(g_calls[counted], 1) << counted;
    }
    for (const std::size_t fetched : {10U, 12U, 14U}) {
        EXPECT_GE(g_calls[fetched], 3) << fetched;
    }
    EXPECT_EQ(device.m_pTemperature[0]->m_dCurrent, before);  // no channel was given out, none was moved
}

std::wstring g_applied;

std::int32_t KeepText(CDevApiInterface*, const wchar_t* text) {
    g_applied = text;
    return oko::kSuccess;
}

TEST_F(OwnSlotsTests, ConfigurationDialog_AppliesItsTextThroughTheDevicesSlot5) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.ClearCommands();
    ScriptedDialogs::Current().onConfiguration = [](CDevApiInterface_Impl&) { return DialogEnd::Ok; };
    ReplacedSlots<kDeviceSlots> slots(&device);
    slots.Replace(5, KeepText);
    g_applied.clear();
    std::wstring text(oko::kConfigurationTextLength, L'\0');
    EXPECT_EQ(device.ShowConfiguration(text.data(), oko::kConfigurationTextLength, nullptr), 0);
    EXPECT_EQ(g_applied, text.c_str());
    EXPECT_FALSE(g_applied.empty());
    EXPECT_TRUE(platform.server.Calls().empty());
}

std::int32_t NoHumidifiers(CDevApiInterface*) { return 0; }

TEST_F(OwnSlotsTests, ConfigurationDialog_CountsHumidifiersThroughTheDevicesSlot13) {
    CDevApiInterface_Impl& device = RealDevice();
    AssignOneOfEach(device);
    device.m_products = {ProductWith(15)};
    device.m_nHumidifiers = 1;
    ReplacedSlots<kDeviceSlots> slots(&device);
    slots.Replace(13, NoHumidifiers);
    const ConfigurationView view = DescribeConfiguration(device);
    EXPECT_FALSE(view.fields[6].enabled);  // humidity, below
    const auto field = [](int id) { return std::wstring(id == IDC_HUMIDITY_BELOW ? L"" : L"0.5"); };
    EXPECT_TRUE(TakeConfiguration(device, field, false));  // the empty humidity field is not read
}

}  // namespace
