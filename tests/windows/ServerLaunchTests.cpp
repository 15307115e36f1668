// The library finds the installed server in the real registry and on the real disk and starts it through the real
// shell.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "Channels.h"
#include "InstalledEmulator.h"
#include "LoopbackServer.h"
#include "oko/CDevApiInterface.h"
#include "windows/EmulatorProcess.h"
#include "windows/LoadedLibrary.h"
#include "windows/Processes.h"
#include "windows/ScratchFolder.h"

namespace {

constexpr const wchar_t* kProgram = InstalledEmulator::kProgram;
constexpr const wchar_t* kList32 = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr const wchar_t* kEntry = L"\\OKO-Control Emulator";

class ServerLaunchTests : public testing::Test {
 protected:
    ServerLaunchTests() {
        HostRecord::Current() = {};
        RunEmulator(L"--uninstall");
    }
    ~ServerLaunchTests() override {
        m_installed.reset();
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, kList32);
    }

    static std::filesystem::path Folder() { return InstalledEmulator::Folder(); }

    void Install(const std::wstring& options) { m_installed.emplace(L"--scenario product-9 " + options); }

    /// Init of the real device while a placeholder stands for the silent port.
    std::int32_t InitWithPlaceholder() {
        const EmulatorProcess placeholder(L"--placeholder");
        CDevApiInterface& device = m_library.Device(0);
        device.ApplyConnection(L"m_iComPort 3");
        return device.Init(HostRecord::Callback, nullptr);
    }

    void ExpectStarted() {
        EXPECT_EQ(InitWithPlaceholder(), 0);
        EXPECT_EQ(HostRecord::CountLines(L"Starting server first."), 1U);
        EXPECT_EQ(HostRecord::CountLines(L"Server started on "), 1U);
        EXPECT_EQ(m_library.Device(0).GetTemperatureCount(), 8);
        m_library.Device(0).Close();
        EXPECT_EQ(EndProcesses(kProgram), 1);
    }

    LoadedLibrary m_library;
    std::optional<InstalledEmulator> m_installed;
};

TEST_F(ServerLaunchTests, InstalledServer_IsStartedAndTheDeviceComesUp) {
    Install(L"");
    ExpectStarted();
}

TEST_F(ServerLaunchTests, InstalledInThe32BitList_IsStarted) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyW(HKEY_LOCAL_MACHINE, kList32, &key), ERROR_SUCCESS);
    RegCloseKey(key);
    Install(L"--display-name \"OKO-Control Server 2.1.7 build 4\"");
    ExpectStarted();
}

TEST_F(ServerLaunchTests, InstalledInTheOtherListWhileThe32BitListExists_IsNotFound) {
    Install(L"");
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyW(HKEY_LOCAL_MACHINE, kList32, &key), ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_EQ(InitWithPlaceholder(), -1);
    EXPECT_EQ(HostRecord::CountLines(L"System cannot find OKO-Control."), 1U);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kList32);
}

TEST_F(ServerLaunchTests, LocationWithoutItsSeparator_LosesItsLastCharacter) {
    Install(L"");
    const std::wstring list = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall" + std::wstring(kEntry);
    const auto setLocation = [&](const std::wstring& folder) {
        EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, list.c_str(), L"InstallLocation", REG_SZ, folder.c_str(),
                                  static_cast<DWORD>((folder.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    };
    setLocation(Folder().wstring());
    EXPECT_EQ(InitWithPlaceholder(), -1);
    EXPECT_EQ(HostRecord::CountLines(L"System cannot find OKO-Control application."), 1U);
    setLocation(Folder().wstring() + L"\\");
}

TEST_F(ServerLaunchTests, FolderWithAProgramsName_IsNotStarted) {
    Install(L"");
    std::filesystem::create_directories(Folder() / L"OKO-Control A folder.exe");
    ExpectStarted();
}

TEST_F(ServerLaunchTests, Program_IsOpenedWithAWindowOfNormalSize) {
    Install(L"");
    ASSERT_TRUE(CopyFileW((ProgramFolder() + L"oko-start-recorder.exe").c_str(), (Folder() / kProgram).c_str(), FALSE));
    // Silent until the program has been started.
    std::atomic<bool> probed = false;
    LoopbackServer server([&probed](std::string_view command) {
        return probed.exchange(true) ? LoopbackServer::Reply(command, "") : std::string();
    });
    CDevApiInterface& device = m_library.Device(0);
    device.ApplyConnection(L"m_iComPort 3");
    EXPECT_EQ(device.Init(HostRecord::Callback, nullptr), 0);
    const std::filesystem::path record = Folder() / L"started.txt";
    int showState = -1;
    EXPECT_TRUE(WaitUntil([&] { return static_cast<bool>(std::ifstream(record) >> showState); }));
    EXPECT_EQ(showState, SW_SHOWNORMAL);
    device.Close();
}

TEST_F(ServerLaunchTests, InstalledProxy_StartsTheRealServerAndItsRecordReplaysToTheSameValue) {
    const std::filesystem::path folder = ScratchFolder() + L"real server";
    std::filesystem::create_directories(folder);
    const std::filesystem::path server = folder / L"Real Server.exe";
    const std::wstring record = (folder / L"session.txt").wstring();
    ASSERT_TRUE(CopyFileW((ProgramFolder() + L"oko-control-emulator.exe").c_str(), server.wstring().c_str(), FALSE));
    m_installed.emplace(L"--proxy 127.0.0.1:60001 --start \"" + server.wstring() + L"\" --append --record \"" + record +
                        L"\"");
    CDevApiInterface& device = m_library.Device(0);
    const auto read = [&device] {
        double value = -7.0;
        EXPECT_EQ(TemperatureOf(device, 0).GetCurrentTemperature(&value), 0);
        device.Close();
        return value;
    };
    EXPECT_EQ(InitWithPlaceholder(), 0);
    EXPECT_EQ(HostRecord::CountLines(L"Server started on "), 1U);
    const double recorded = read();
    EXPECT_EQ(EndProcesses(kProgram), 1);
    EXPECT_EQ(EndProcesses(server.filename().wstring()), 1);

    const EmulatorProcess replay(L"--replay \"" + record + L"\"");
    device.ApplyConnection(L"m_iComPort 3");
    EXPECT_EQ(device.Init(HostRecord::Callback, nullptr), 0);
    EXPECT_EQ(read(), recorded);
}

TEST_F(ServerLaunchTests, NothingInstalled_IsSaidAndFails) {
    EXPECT_EQ(InitWithPlaceholder(), -1);
    EXPECT_EQ(HostRecord::CountLines(L"System cannot find OKO-Control."), 1U);
}

TEST_F(ServerLaunchTests, PortInUse_TheEmulatorSaysSo) {
    const EmulatorProcess first(L"--scenario product-9");
    EXPECT_EQ(RunEmulator(L"--for 1"), 2U);
}

}  // namespace
