// Channel reads and writes allocate nothing while the communication log is off: a host that polls for days must not
// wear its heap. The simulator's road is the library's own from end to end; the real device's differs only in the
// socket.

#include <gtest/gtest.h>

#include <vector>

#include "CountingAllocator.h"
#include "Fixture.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "oko/CDevApiInterface_GasConcentration.h"
#include "oko/CDevApiInterface_Humidifier.h"
#include "oko/CDevApiInterface_Temperature.h"

namespace {

class AllocationTests : public DeviceTest {
 protected:
    /// How often `use` allocates.
    template <class Use>
    static int Count(Use use) {
        StartCountingAllocations();
        use();
        return StopCountingAllocations();
    }

    static void UseEveryChannel(CDevApiInterface_Impl& device) {
        double value = 0.0;
        for (CDevApiInterface_Temperature* const channel : device.m_pTemperature) {
            channel->GetCurrentTemperature(&value);
            channel->GetTargetTemperature(&value);
            channel->SetTargetTemperature(30.0);
        }
        for (CDevApiInterface_GasConcentration* const channel : device.m_pGasConcentration) {
            channel->GetCurrentGasConcentration(&value);
            channel->GetTargetGasConcentration(&value);
        }
        for (CDevApiInterface_Humidifier* const channel : device.m_pHumidifier) {
            channel->GetCurrentHumidity(&value);
            channel->GetTargetHumidity(&value);
        }
    }
};

TEST_F(AllocationTests, TheCounter_Counts) {
    std::vector<int> numbers;
    EXPECT_EQ(Count([&] { numbers.resize(1000); }), 1);
}

TEST_F(AllocationTests, ChannelReadsAndWrites_AllocateNothing) {
    CDevApiInterface_Impl& device = Simulator();
    device.Init(HostLog::Callback, nullptr);
    device.StopValueThread();
    EXPECT_EQ(Count([&] { UseEveryChannel(device); }), 0);
}

TEST_F(AllocationTests, WritesThatPostNotices_AllocateNothingOfTheirOwn) {
    CDevApiInterface_Impl& device = Simulator();
    device.Init(HostLog::Callback, nullptr);
    device.StopValueThread();
    // The first notice makes the stand-in's record of its window; the ones after it only count.
    device.m_pGasConcentration[0]->SetTargetGasConcentration(5.0);
    EXPECT_EQ(Count([&] {
                  device.m_pGasConcentration[0]->SetTargetGasConcentration(6.0);
                  device.m_pHumidifier[0]->SetTargetHumidity(60.0);
              }),
              0);
}

}  // namespace
