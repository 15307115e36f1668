#pragma once

// clang-format off
#include "LoadedLibrary.h"
#include <tlhelp32.h>
// clang-format on

#include <filesystem>
#include <fstream>
#include <iterator>

/// Runs the emulator beside this program with some options, until it ends by itself. Gives its exit code.
inline DWORD RunEmulator(const std::wstring& options) {
    std::wstring command = L"\"" + ProgramFolder() + L"oko-control-emulator.exe\" " + options;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        return 0xFFFF;
    }
    WaitForSingleObject(process.hProcess, 60'000);
    DWORD exitCode = 0xFFFF;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return exitCode;
}

/// The emulator on port 60000 while the object lives.
class EmulatorProcess {
 public:
    explicit EmulatorProcess(const std::wstring& options) {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        const HANDLE output = CreateFileW(OutputFile().c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output;
        startup.hStdError = output;
        // It ends by itself should the test never come to its end.
        std::wstring command = L"\"" + ProgramFolder() + L"oko-control-emulator.exe\" --quiet --for 100 " + options;
        EXPECT_TRUE(
            CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &m_process));
        CloseHandle(output);
        WaitUntil([this] { return HasThePort() || HasEnded(); });
        EXPECT_TRUE(HasThePort()) << Output();
    }
    ~EmulatorProcess() {
        TerminateProcess(m_process.hProcess, 0);
        WaitForSingleObject(m_process.hProcess, 10'000);
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
        DeleteFileW(OutputFile().c_str());
    }
    EmulatorProcess(const EmulatorProcess&) = delete;
    EmulatorProcess& operator=(const EmulatorProcess&) = delete;

 private:
    static std::wstring OutputFile() { return ProgramFolder() + L"emulator output.txt"; }

    static std::string Output() {
        std::ifstream file{std::filesystem::path(OutputFile())};
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// By what it says: a test that tried the port itself could be in its way.
    static bool HasThePort() {
        const std::string output = Output();
        return output.find("answering on ") != std::string::npos || output.find("holding port ") != std::string::npos;
    }

    bool HasEnded() const { return WaitForSingleObject(m_process.hProcess, 0) == WAIT_OBJECT_0; }

    PROCESS_INFORMATION m_process{};
};

/// Ends every process of this name; gives how many there were.
inline int EndProcesses(const wchar_t* name) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    int ended = 0;
    for (BOOL more = Process32FirstW(snapshot, &entry); more; more = Process32NextW(snapshot, &entry)) {
        if (std::wstring(entry.szExeFile) == name) {
            const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, entry.th32ProcessID);
            TerminateProcess(process, 0);
            WaitForSingleObject(process, 10'000);
            CloseHandle(process);
            ++ended;
        }
    }
    CloseHandle(snapshot);
    return ended;
}
