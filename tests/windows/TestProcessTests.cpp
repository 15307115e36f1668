// The tests' own promise: a test program that is killed takes along what it started, and what it left on the disk and
// in the registry does not meet the next one.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "InstalledEmulator.h"
#include "Leftovers.h"
#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "windows/ChildProcess.h"
#include "windows/EmulatorProcess.h"
#include "windows/LoadedLibrary.h"
#include "windows/Processes.h"
#include "windows/ScratchFolder.h"
#include "windows/ServerPort.h"

namespace {

constexpr const wchar_t* kStays = L"OKO_TEST_STAYS";

int CountServers() {
    return static_cast<int>(
        std::ranges::count_if(RunningProcesses(), [](const auto& running) { return IsServerProgram(running.name); }));
}

TEST(StrandedTests, InstalledServerAndAProgramOfTheTest_RunSideBySide) {
    const InstalledEmulator installed(L"--scenario product-9");
    const EmulatorProcess placeholder(L"--placeholder");
    const ChildProcess other(L"oko-control-emulator.exe", L"--quiet --port 50001");
    const LoadedLibrary library;
    CDevApiInterface& device = library.Device(oko::kRealDevice);
    device.ApplyConnection(L"m_iComPort 3");
    EXPECT_EQ(device.Init(nullptr, nullptr), oko::kSuccess);
    EXPECT_TRUE(WaitUntil([&] { return placeholder.HasEnded() && other.HasWritten("answering on "); }));
    EXPECT_EQ(CountServers(), 2);
    std::cout << "both servers run" << std::endl;
    while (GetEnvironmentVariableW(kStays, nullptr, 0) != 0) {
        Sleep(1000);  // until this program is killed
    }
    device.Close();
}

class TestProcessTests : public testing::Test {
 protected:
    /// A test program that is killed while two servers of its run.
    void KillAProgramWithServers() {
        SetEnvironmentVariableW(kStays, L"1");
        const ChildProcess stranded(L"oko-windows-tests.exe", L"--gtest_filter=StrandedTests.*");
        EXPECT_TRUE(WaitUntil([&] { return stranded.HasWritten("both servers run") || stranded.HasEnded(); }));
        EXPECT_EQ(CountServers(), 2) << stranded.Output();
        stranded.Kill();
        SetEnvironmentVariableW(kStays, nullptr);
    }
};

TEST_F(TestProcessTests, ProgramThatIsKilled_TakesItsServersAlong) {
    KillAProgramWithServers();
    EXPECT_TRUE(WaitUntil([] { return CountServers() == 0; })) << ServerPortOwners();
    EXPECT_TRUE(WaitUntil(IsServerPortFree));
    RemoveLeftovers([](const std::string&) {});
}

TEST_F(TestProcessTests, InstallationOfAKilledProgram_IsRemovedByTheNext) {
    KillAProgramWithServers();
    EXPECT_TRUE(WaitUntil([] { return CountServers() == 0; }));
    std::vector<std::string> removed;
    RemoveLeftovers([&](const std::string& what) { removed.push_back(what); });
    EXPECT_EQ(removed, std::vector<std::string>{"an entry of the installed emulator"});
    EXPECT_TRUE(std::filesystem::is_empty(ScratchFolder()));

    const EmulatorProcess placeholder(L"--placeholder");
    const LoadedLibrary library;
    HostRecord::Current() = {};
    CDevApiInterface& device = library.Device(oko::kRealDevice);
    device.ApplyConnection(L"m_iComPort 3");
    EXPECT_EQ(device.Init(HostRecord::Callback, nullptr), oko::kFailure);
    EXPECT_EQ(HostRecord::CountLines(L"System cannot find OKO-Control."), 1U);
    device.Close();
}

TEST_F(TestProcessTests, ServerThatWasLeft_IsEndedByTheNext) {
    const ChildProcess server(L"oko-control-emulator.exe", L"--quiet");
    EXPECT_TRUE(WaitUntil([&] { return server.HasWritten("answering on "); }));
    EXPECT_NE(ServerPortOwners().find("oko-control-emulator.exe (process "), std::string::npos) << ServerPortOwners();
    std::vector<std::string> removed;
    RemoveLeftovers([&](const std::string& what) { removed.push_back(what); });
    EXPECT_TRUE(server.HasEnded());
    ASSERT_EQ(removed.size(), 1U);
    EXPECT_TRUE(removed.front().starts_with("oko-control-emulator.exe, process "));
    EXPECT_TRUE(WaitUntil(IsServerPortFree));
}

}  // namespace
