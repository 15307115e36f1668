// Coming and going: what the library takes it gives back.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "Effort.h"
#include "Report.h"
#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "windows/EmulatorProcess.h"
#include "windows/LoadedLibrary.h"
#include "windows/ProcessResources.h"

namespace {

std::string Change(const std::string& what, std::size_t before, std::size_t after) {
    const bool grown = after >= before;
    return what + " " + std::to_string(before) + (grown ? "+" : "-") +
           std::to_string(grown ? after - before : before - after);
}

class LifeCycleTests : public testing::Test {
 protected:
    /// Repeats a cycle; after some to warm up nothing may grow any more.
    template <class Cycle>
    void Repeat(const std::string& what, int count, Cycle cycle) {
        const int warmUp = count / 10;
        ProcessResources before{};
        for (int i = 0; i < count && !HasFatalFailure(); ++i) {
            NoteProgress(what + ", cycle " + std::to_string(i));
            if (i == warmUp) {
                before = MeasureResources();
            }
            cycle();
        }
        const ProcessResources after = MeasureResources();
        EXPECT_LE(after.handles, before.handles);
        EXPECT_LE(after.threads, before.threads);
        EXPECT_LE(after.windows, before.windows);
        EXPECT_LE(after.graphics, before.graphics);
        EXPECT_LE(after.heapBytes, before.heapBytes + kHeapSlack);
        EXPECT_LE(after.privateBytes, before.privateBytes + kPrivateSlack);
        ReportLine(what, std::to_string(count) + " cycles; " + Change("handles", before.handles, after.handles) + ", " +
                             Change("threads", static_cast<std::size_t>(before.threads),
                                    static_cast<std::size_t>(after.threads)) +
                             ", " + Change("windows", before.windows, after.windows) + ", " +
                             Change("GDI", before.graphics, after.graphics) + ", " +
                             Change("heap", before.heapBytes, after.heapBytes) + ", " +
                             Change("private", before.privateBytes, after.privateBytes));
    }

    // What this program's own report takes meanwhile, and the pages that a heap takes for it.
    static constexpr std::size_t kHeapSlack = 4'096;
    static constexpr std::size_t kPrivateSlack = 65'536;
};

TEST_F(LifeCycleTests, InitAndCloseOfTheDevice_GiveEverythingBack) {
    const EmulatorProcess emulator(L"--scenario full-incubator");
    const LoadedLibrary library;
    CDevApiInterface& device = library.Device(oko::kRealDevice);
    Repeat("Init and Close, incubator", CurrentEffort().cycles, [&] {
        device.ApplyConnection(L"m_iComPort 3");
        ASSERT_EQ(device.Init(nullptr, nullptr), oko::kSuccess);
        device.Close();
    });
}

TEST_F(LifeCycleTests, InitAndCloseOfTheSimulator_GiveEverythingBack) {
    const LoadedLibrary library;
    CDevApiInterface& device = library.Device(oko::kSimulatorDevice);
    Repeat("Init and Close, simulator", CurrentEffort().cycles, [&] {
        ASSERT_EQ(device.Init(nullptr, nullptr), oko::kSuccess);
        device.Close();
    });
}

TEST_F(LifeCycleTests, LoadAndUnload_GiveEverythingBack) {
    Repeat("load and unload", CurrentEffort().loads, [] {
        {
            const LoadedLibrary library;
            library.Device(oko::kRealDevice);
            CDevApiInterface& simulator = library.Device(oko::kSimulatorDevice);
            ASSERT_EQ(simulator.Init(nullptr, nullptr), oko::kSuccess);
            simulator.Close();
        }
        ASSERT_TRUE(WaitUntil([] { return GetModuleHandleW(L"OkoLabBoldLine.dll") == nullptr; }));
    });
}

}  // namespace
