#pragma once

// clang-format off
#include "ChildProcess.h"
#include <tlhelp32.h>
// clang-format on

/// Runs the emulator with some options until it ends by itself. Gives its exit code.
inline DWORD RunEmulator(const std::wstring& options) {
    return ChildProcess(L"oko-control-emulator.exe", options).ExitCode();
}

/// The emulator on port 60000 while the object lives.
class EmulatorProcess {
 public:
    explicit EmulatorProcess(const std::wstring& options)
        // It ends by itself should the test never come to its end.
        : m_process(L"oko-control-emulator.exe", L"--quiet --for 100 " + options) {
        WaitUntil([this] { return HasThePort() || m_process.HasEnded(); });
        EXPECT_TRUE(HasThePort()) << m_process.Output();
    }

 private:
    /// By what it says: a test that tried the port itself could be in its way.
    bool HasThePort() const { return m_process.HasWritten("answering on ") || m_process.HasWritten("holding port "); }

    ChildProcess m_process;
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
