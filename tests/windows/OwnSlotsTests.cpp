// Where the built library, optimized as it is shipped, calls a slot of its own object, it calls what stands there.

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "Channels.h"
#include "ReplacedSlots.h"
#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "windows/LoadedLibrary.h"

namespace {

constexpr std::size_t kSlots = 15;  // of the device and of a temperature channel

std::int32_t RefuseTarget(CDevApiInterface_Temperature*, double*) { return oko::kFailure; }

std::atomic<int> g_fetched = 0;

std::int32_t NoTemperature(CDevApiInterface*, std::uint32_t, CDevApiInterface_Temperature**) {
    ++g_fetched;
    return oko::kSuccess;
}

TEST(OwnSlotsTests, OfTheBuiltLibrary_AreCalled) {
    const LoadedLibrary library;
    CDevApiInterface& device = library.Device(oko::kSimulatorDevice);
    CDevApiInterface_Temperature& channel = TemperatureOf(device, 0);
    double before = 0.0;
    {
        ReplacedSlots<kSlots> deviceSlots(&device);
        deviceSlots.Replace(10, NoTemperature);
        ASSERT_EQ(device.Init(nullptr, nullptr), oko::kSuccess);
        EXPECT_TRUE(WaitUntil([] { return g_fetched > 0; }));  // by the value thread
        ASSERT_EQ(channel.GetTargetTemperature(&before), oko::kSuccess);
        ReplacedSlots<kSlots> channelSlots(&channel);
        channelSlots.Replace(4, RefuseTarget);
        EXPECT_EQ(channel.SetTargetTemperature(before + 1.0), oko::kSuccess);
    }
    double after = 0.0;
    EXPECT_EQ(channel.GetTargetTemperature(&after), oko::kSuccess);
    EXPECT_EQ(after, before);  // the target was not confirmed, and restored
    device.Close();
}

}  // namespace
