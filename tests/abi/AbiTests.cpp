// Every slot of every interface, called through the Microsoft object layout.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "Caller.h"
#include "Channels.h"
#include "oko/CDevApiInterface_Temperature.h"
#include "windows/LoadedLibrary.h"

namespace {

class AbiTests : public testing::Test {
 protected:
    AbiTests() {
        HostRecord::Current() = {};
        EXPECT_EQ(CallInit(Device(), &OnCallback, nullptr), 0);
    }
    ~AbiTests() override { CallClose(Device()); }

    static void OnCallback(int code, const wchar_t* text) { HostRecord::Callback(code, text); }

    void* Device() const { return &m_library.Device(1); }

    /// Temperature channel 0, gas channel 1, humidity channel 0 as the caller got them.
    std::array<void*, 3> Channels() const {
        std::array<void*, 3> channels{};
        SlotResults results{};
        CallDeviceSlots(Device(), &results, channels.data());
        return channels;
    }

    LoadedLibrary m_library;
};

TEST_F(AbiTests, Init_CallsBackThroughThePlainFunction) {
    ASSERT_FALSE(HostRecord::Current().lines.empty());
    EXPECT_EQ(HostRecord::Current().lines.front(), L"OKO-Lab bold line Init()");
}

TEST_F(AbiTests, Device_EverySlotIsInItsPlace) {
    std::array<void*, 3> channels{};
    SlotResults results{};
    CallDeviceSlots(Device(), &results, channels.data());
    EXPECT_EQ(results.results[2], 0);
    EXPECT_EQ(results.results[5], 0);
    EXPECT_EQ(results.results[6], 0);
    EXPECT_EQ(results.results[7], 0);
    EXPECT_EQ(results.results[8], 0);
    EXPECT_EQ(results.results[9], 10);
    EXPECT_EQ(results.results[11], 2);
    EXPECT_EQ(results.results[13], 1);

    CDevApiInterface_Temperature& temperature = TemperatureOf(m_library.Device(1), 0);
    EXPECT_EQ(channels, (std::array<void*, 3>{&temperature, &GasConcentrationOf(m_library.Device(1), 1),
                                              &HumidifierOf(m_library.Device(1), 0)}));
    double below = 0.0;
    double above = 0.0;
    temperature.GetTolerance(&below, &above);
    EXPECT_EQ(below, 0.75);
    EXPECT_EQ(above, 0.25);
}

TEST_F(AbiTests, Temperature_EverySlotIsInItsPlace) {
    SlotResults results{};
    std::array<double, 8> numbers{};
    CallTemperatureSlots(Channels()[0], &results, numbers.data());
    const std::array<int, 14> expected{0, L'H', 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0};
    for (std::size_t slot = 0; slot < expected.size(); ++slot) {
        EXPECT_EQ(results.results[slot], expected[slot]) << "slot " << slot;
    }
    EXPECT_EQ(numbers[0], 31.5);
    EXPECT_GE(numbers[1], 20.0);
    EXPECT_LT(numbers[1], 31.5);
    EXPECT_EQ(numbers[2], 0.2);
    EXPECT_EQ(numbers[3], 1.5);
    EXPECT_EQ(numbers[4], 2.5);
    EXPECT_EQ(numbers[5], 0.0);
    EXPECT_EQ(numbers[6], 60.0);
}

TEST_F(AbiTests, GasAndHumidity_EverySlotIsInItsPlace) {
    const std::array<void*, 3> channels = Channels();
    struct Case {
        void (*call)(void*, SlotResults*, double*);
        void* channel;
        int firstLetter;
        double target;
    };
    for (const Case& row :
         {Case{CallGasSlots, channels[1], L'O', 60.0}, Case{CallHumiditySlots, channels[2], L'H', 62.5}}) {
        SCOPED_TRACE(static_cast<char>(row.firstLetter));
        SlotResults results{};
        std::array<double, 8> numbers{};
        row.call(row.channel, &results, numbers.data());
        EXPECT_EQ(results.results[1], row.firstLetter);
        for (const int slot : {0, 2, 3, 4, 5, 7, 8, 9}) {
            EXPECT_EQ(results.results[slot], 0) << "slot " << slot;
        }
        EXPECT_EQ(results.results[6], 1);
        EXPECT_EQ(numbers[0], row.target);
        EXPECT_GT(numbers[1], 1.0);
        EXPECT_EQ(numbers[2], 3.5);
        EXPECT_EQ(numbers[3], 4.5);
    }
}

TEST_F(AbiTests, DeletingDestructor_FreesTheChannelOnce) {
    const std::array<void*, 3> channels = Channels();
    CallClose(Device());  // no value thread may see them go
    DeleteTemperature(channels[0]);
    DeleteGas(channels[1]);
    DeleteHumidity(channels[2]);
    EXPECT_EQ(Channels(), (std::array<void*, 3>{}));
}

}  // namespace
