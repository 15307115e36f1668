// The simulator's value thread and its notices, and the library's coming and going, in real time.

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "Channels.h"
#include "ChildProcess.h"
#include "ProcessResources.h"
#include "oko/CDevApiInterface.h"
#include "windows/LoadedLibrary.h"

namespace {

double CurrentOf(CDevApiInterface& device, std::uint32_t index) {
    double value = 0.0;
    TemperatureOf(device, index).GetCurrentTemperature(&value);
    return value;
}

/// WM_COMMAND notices in this thread's queue, by their first parameter.
std::vector<WPARAM> TakeNotices() {
    std::vector<WPARAM> notices;
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_COMMAND) {
            EXPECT_EQ(message.hwnd, nullptr);
            EXPECT_EQ(message.lParam, 0);
            notices.push_back(message.wParam);
        }
    }
    return notices;
}

TEST(ValueThreadTests, Values_MoveFromInitToCloseAndAgainAfterTheNextInit) {
    const LoadedLibrary library;
    CDevApiInterface& device = library.Device(1);
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        ASSERT_EQ(device.Init(nullptr, nullptr), 0);
        const double before = CurrentOf(device, 0);
        EXPECT_TRUE(WaitUntil([&] { return CurrentOf(device, 0) > before; }));
        device.Close();
        const double stopped = CurrentOf(device, 0);
        Sleep(500);
        EXPECT_EQ(CurrentOf(device, 0), stopped);
    }
}

TEST(ValueThreadTests, InitTwiceAndCloseTwice_KeepOneThreadAndThenNone) {
    const LoadedLibrary library;
    CDevApiInterface& device = library.Device(1);
    device.Close();
    const int before = CountThreads();
    ASSERT_EQ(device.Init(nullptr, nullptr), 0);
    ASSERT_EQ(device.Init(nullptr, nullptr), 0);
    EXPECT_EQ(CountThreads(), before + 1);
    device.Close();
    device.Close();
    EXPECT_TRUE(WaitUntil([&] { return CountThreads() == before; }));
}

TEST(ValueThreadTests, SetTargets_PostTheirNoticeToTheCallingThread) {
    const LoadedLibrary library;
    CDevApiInterface& device = library.Device(1);
    ASSERT_EQ(device.Init(nullptr, nullptr), 0);
    TakeNotices();
    EXPECT_EQ(TemperatureOf(device, 0).SetTargetTemperature(38.0), 0);
    EXPECT_TRUE(TakeNotices().empty());
    EXPECT_EQ(GasConcentrationOf(device, 0).SetTargetGasConcentration(5.0), 0);
    EXPECT_EQ(HumidifierOf(device, 0).SetTargetHumidity(60.0), 0);
    EXPECT_EQ(TakeNotices(), (std::vector<WPARAM>{66539, 66539}));
    device.Close();
}

TEST(ValueThreadTests, FreedWithoutClose_TheThreadKeepsItsCode) {
    // In a process of its own: the library stays there until the end.
    const ChildProcess other(L"oko-windows-tests.exe", L"--gtest_filter=FreedEarlyTests.*");
    EXPECT_EQ(other.ExitCode(), 0U) << other.Output();
}

TEST(FreedEarlyTests, ProcessGoesOnAndEndsWell) {
    {
        const LoadedLibrary library;
        ASSERT_EQ(library.Device(1).Init(nullptr, nullptr), 0);
    }
    // Several cycles of a thread whose library was freed.
    Sleep(700);
    EXPECT_NE(GetModuleHandleW(L"OkoLabBoldLine.dll"), nullptr);
}

TEST(LoadTests, FreedAfterClose_IsReallyGone) {
    {
        const LoadedLibrary library;
        ASSERT_EQ(library.Device(1).Init(nullptr, nullptr), 0);
        library.Device(1).Close();
    }
    EXPECT_TRUE(WaitUntil([] { return GetModuleHandleW(L"OkoLabBoldLine.dll") == nullptr; }));
}

TEST(LoadTests, TwoHundredCycles_LeaveNoHandlesBehind) {
    constexpr int kCycles = 200;
    constexpr int kInitEvery = 10;
    unsigned before = 0;
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        SCOPED_TRACE(cycle);
        {
            const LoadedLibrary library;
            library.Device(0);
            CDevApiInterface& simulator = library.Device(1);
            if (cycle % kInitEvery == 0) {
                ASSERT_EQ(simulator.Init(nullptr, nullptr), 0);
                simulator.Close();
            }
        }
        ASSERT_TRUE(WaitUntil([] { return GetModuleHandleW(L"OkoLabBoldLine.dll") == nullptr; }));
        if (cycle == kInitEvery) {
            before = MeasureResources().handles;
        }
    }
    EXPECT_GT(before, 0U);
    constexpr unsigned kBytesBetween = 4;  // of two handles that follow one another
    EXPECT_LE(MeasureResources().handles, before + kInitEvery * kBytesBetween);  // far less than one a cycle
}

}  // namespace
