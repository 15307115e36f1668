#include "core/Exports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Fixture.h"
#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "platform/Module.h"

namespace {

class ExportsTests : public DeviceTest {
 protected:
    ExportsTests() { AttachModule(&platform); }
    ~ExportsTests() override { DetachModule(); }
};

TEST_F(ExportsTests, QueryPhysDevice_BothDevices_HaveTheirTexts) {
    const std::array<std::string, 2> names{"OKO-Lab bold line", "OKO-Lab bold line Simulator"};
    for (std::uint32_t index = 0; index < 2; ++index) {
        SCOPED_TRACE(index);
        std::array<char, 64> type{};
        std::array<char, 64> name{};
        std::array<wchar_t, 64> wide{};
        std::array<wchar_t, 64> wide2{};
        EXPECT_EQ(
            LibQueryPhysDevice(index, nullptr, type.data(), 64, name.data(), 64, wide.data(), 64, wide2.data(), 64), 0);
        EXPECT_STREQ(type.data(), "Incubator");
        EXPECT_EQ(name.data(), names[index]);
        EXPECT_EQ(std::wstring(wide.data()), std::wstring(names[index].begin(), names[index].end()));
        EXPECT_EQ(std::wstring(wide2.data()), wide.data());
    }
}

TEST_F(ExportsTests, QueryPhysDevice_SmallBuffer_IsFilledWithoutATerminator) {
    std::array<char, 6> type{'#', '#', '#', '#', '#', '#'};
    std::array<wchar_t, 3> wide{L'#', L'#', L'#'};
    EXPECT_EQ(LibQueryPhysDevice(0, nullptr, type.data(), 5, nullptr, 0, wide.data(), 2, nullptr, 0), 0);
    EXPECT_EQ(std::string(type.data(), 6), "Incub#");
    EXPECT_EQ(std::wstring(wide.data(), 3), L"OK#");
}

TEST_F(ExportsTests, QueryPhysDevice_LargeBuffer_IsFilledUpWithZeros) {
    std::array<char, 32> type;
    type.fill('#');
    LibQueryPhysDevice(0, nullptr, type.data(), 31, nullptr, 0, nullptr, 0, nullptr, 0);
    EXPECT_EQ(std::string(type.data() + 9, 22), std::string(22, '\0'));
    EXPECT_EQ(type[31], '#');
}

TEST_F(ExportsTests, QueryPhysDevice_EveryText_FitsTheLengthThatHostsAreTold) {
    for (const std::uint32_t index : {oko::kRealDevice, oko::kSimulatorDevice}) {
        SCOPED_TRACE(index);
        std::array<char, oko::kDeviceTextLength> type;
        std::array<wchar_t, oko::kDeviceTextLength> name;
        type.fill('#');
        name.fill(L'#');
        LibQueryPhysDevice(index, nullptr, type.data(), oko::kDeviceTextLength, nullptr, 0, name.data(),
                           oko::kDeviceTextLength, nullptr, 0);
        EXPECT_EQ(type.back(), '\0');
        EXPECT_EQ(name.back(), L'\0');
    }
}

TEST_F(ExportsTests, QueryPhysDevice_NullAndEmptyBuffers_AreLeftOut) {
    std::array<char, 2> buffer{'#', '#'};
    EXPECT_EQ(LibQueryPhysDevice(0, nullptr, nullptr, 9, nullptr, 9, nullptr, 9, nullptr, 9), 0);
    EXPECT_EQ(LibQueryPhysDevice(1, nullptr, buffer.data(), 0, buffer.data(), -1, nullptr, 0, nullptr, 0), 0);
    EXPECT_EQ(buffer[0], '#');
}

TEST_F(ExportsTests, QueryPhysDevice_OtherIndexes_FailAndTouchNothing) {
    for (const std::uint32_t index : {2U, 0x80000000U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(index);
        std::array<char, 4> type{'#', '#', '#', '#'};
        EXPECT_EQ(LibQueryPhysDevice(index, nullptr, type.data(), 4, nullptr, 0, nullptr, 0, nullptr, 0), -1);
        EXPECT_EQ(type[0], '#');
    }
}

TEST_F(ExportsTests, QueryInterface_GivesTheSameObjectEachTime) {
    CDevApiInterface* real = nullptr;
    CDevApiInterface* again = nullptr;
    CDevApiInterface* simulator = nullptr;
    EXPECT_EQ(LibQueryInterface(0, nullptr, &real), 0);
    EXPECT_EQ(LibQueryInterface(0, nullptr, &again), 0);
    EXPECT_EQ(LibQueryInterface(1, nullptr, &simulator), 0);
    EXPECT_EQ(real, again);
    EXPECT_NE(real, simulator);
    EXPECT_FALSE(static_cast<CDevApiInterface_Impl*>(real)->m_bSimulator);
    EXPECT_TRUE(static_cast<CDevApiInterface_Impl*>(simulator)->m_bSimulator);
}

TEST_F(ExportsTests, QueryInterface_OtherIndexesAndNull_Fail) {
    auto* const mark = reinterpret_cast<CDevApiInterface*>(this);
    CDevApiInterface* device = mark;
    EXPECT_EQ(LibQueryInterface(2, nullptr, &device), -1);
    EXPECT_EQ(LibQueryInterface(0xFFFFFFFF, nullptr, &device), -1);
    EXPECT_EQ(device, mark);
    EXPECT_EQ(LibQueryInterface(0, nullptr, nullptr), -1);
}

TEST_F(ExportsTests, Detach_DestroysTheRealDeviceFirst) {
    // Whichever the host asked for first.
    std::array<std::uintptr_t, 2> events{};
    for (const std::uint32_t index : {1U, 0U}) {
        CDevApiInterface* device = nullptr;
        LibQueryInterface(index, nullptr, &device);
        const auto& impl = *static_cast<CDevApiInterface_Impl*>(device);
        events.at(index) = reinterpret_cast<std::uintptr_t>(&impl.m_hThreadStopped);
    }
    DetachModule();
    const std::vector<std::uintptr_t> destroyed = platform.events.Destroyed();
    const auto real = std::ranges::find(destroyed, events[0]);
    ASSERT_NE(real, destroyed.end());
    EXPECT_NE(std::find(real, destroyed.end(), events[1]), destroyed.end());
}

TEST_F(ExportsTests, Detach_DestroysTheDevicesAndAttachStartsAnew) {
    CDevApiInterface* device = nullptr;
    LibQueryInterface(0, nullptr, &device);
    DetachModule();
    DetachModule();
    EXPECT_EQ(LibQueryInterface(0, nullptr, &device), 0);
    EXPECT_EQ(g_hInstance, &platform);
}

}  // namespace
