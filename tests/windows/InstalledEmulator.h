#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "EmulatorProcess.h"
#include "windows/Processes.h"
#include "windows/ScratchFolder.h"

/// The emulator, entered in the machine's list of installed programs while the object lives.
class InstalledEmulator {
 public:
    static constexpr const wchar_t* kProgram = L"OKO-Control Emulator.exe";

    explicit InstalledEmulator(const std::wstring& options) {
        EXPECT_EQ(RunEmulator(L"--install \"" + Folder().wstring() + L"\" --quiet " + options), 0U);
    }
    ~InstalledEmulator() {
        EndProcesses(kProgram);
        RunEmulator(L"--uninstall");
        std::error_code ignored;
        std::filesystem::remove_all(Folder(), ignored);
    }
    InstalledEmulator(const InstalledEmulator&) = delete;
    InstalledEmulator& operator=(const InstalledEmulator&) = delete;

    static std::filesystem::path Folder() { return ScratchFolder() + L"installed server"; }
};
