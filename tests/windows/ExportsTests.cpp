#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "LoadedLibrary.h"
#include "oko/CDevApiInterface.h"
#include "oko/CDevApiInterface_Temperature.h"

namespace {

TEST(ExportsTests, QueryPhysDevice_BothDevices_HaveTheirTexts) {
    const LoadedLibrary library;
    std::array<char, 64> type{};
    std::array<char, 64> name{};
    std::array<wchar_t, 64> wide{};
    std::array<wchar_t, 64> wide2{};
    ASSERT_EQ(library.queryPhysDevice(0, nullptr, type.data(), 64, name.data(), 64, wide.data(), 64, wide2.data(), 64),
              0);
    EXPECT_STREQ(type.data(), "Incubator");
    EXPECT_STREQ(name.data(), "OKO-Lab bold line");
    EXPECT_STREQ(wide.data(), L"OKO-Lab bold line");
    EXPECT_STREQ(wide2.data(), L"OKO-Lab bold line");
    ASSERT_EQ(library.queryPhysDevice(1, nullptr, nullptr, 0, name.data(), 64, wide.data(), 64, nullptr, 0), 0);
    EXPECT_STREQ(name.data(), "OKO-Lab bold line Simulator");
    EXPECT_STREQ(wide.data(), L"OKO-Lab bold line Simulator");
}

TEST(ExportsTests, QueryPhysDevice_SmallBufferAndOtherIndexes) {
    const LoadedLibrary library;
    std::array<char, 6> type{'#', '#', '#', '#', '#', '#'};
    EXPECT_EQ(library.queryPhysDevice(2, nullptr, type.data(), 5, nullptr, 0, nullptr, 0, nullptr, 0), -1);
    EXPECT_EQ(library.queryPhysDevice(0xFFFFFFFF, nullptr, type.data(), 5, nullptr, 0, nullptr, 0, nullptr, 0), -1);
    EXPECT_EQ(type[0], '#');
    EXPECT_EQ(library.queryPhysDevice(0, nullptr, type.data(), 5, nullptr, 0, nullptr, 0, nullptr, 0), 0);
    EXPECT_EQ(std::string(type.data(), 6), "Incub#");
}

TEST(ExportsTests, QueryInterface_GivesOneObjectADevice) {
    const LoadedLibrary library;
    EXPECT_EQ(&library.Device(0), &library.Device(0));
    EXPECT_NE(&library.Device(0), &library.Device(1));
    CDevApiInterface* device = nullptr;
    EXPECT_EQ(library.queryInterface(2, nullptr, &device), -1);
    EXPECT_EQ(library.queryInterface(0, nullptr, nullptr), -1);
    EXPECT_EQ(device, nullptr);
}

TEST(ExportsTests, BadArguments_DoNoHarm) {
    const LoadedLibrary library;
    CDevApiInterface& device = library.Device(1);
    CDevApiInterface_Temperature* temperature = nullptr;
    EXPECT_EQ(device.GetTemperature(16, &temperature), 0);
    EXPECT_EQ(device.GetTemperature(0xFFFFFFFF, &temperature), 0);
    EXPECT_EQ(device.GetTemperature(0, nullptr), 0);
    EXPECT_EQ(temperature, nullptr);
    ASSERT_EQ(device.ApplyConnection(nullptr), 0);
    ASSERT_EQ(device.Init(nullptr, nullptr), 0);
    device.GetTemperature(0, &temperature);
    ASSERT_NE(temperature, nullptr);
    for (const double wanted : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                                -std::numeric_limits<double>::infinity(), 1e308}) {
        EXPECT_EQ(temperature->SetTargetTemperature(wanted), 0) << wanted;
    }
    EXPECT_EQ(temperature->GetCurrentTemperature(nullptr), -1);
    EXPECT_EQ(temperature->GetName(nullptr, 5), -1);
    EXPECT_EQ(device.ApplyConfiguration(nullptr), -1);
    device.Close();
}

}  // namespace
