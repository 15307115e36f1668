#pragma once

// clang-format off
#include "LoadedLibrary.h"
#include <tlhelp32.h>
// clang-format on

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
        // It ends by itself should the test never come to its end.
        std::wstring command = L"\"" + ProgramFolder() + L"oko-control-emulator.exe\" --quiet --for 100 " + options;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        EXPECT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                                   &m_process));
        EXPECT_TRUE(WaitUntil([] { return IsPortHeld(); }));
    }
    ~EmulatorProcess() {
        TerminateProcess(m_process.hProcess, 0);
        WaitForSingleObject(m_process.hProcess, 10'000);
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
    }
    EmulatorProcess(const EmulatorProcess&) = delete;
    EmulatorProcess& operator=(const EmulatorProcess&) = delete;

    /// Whether somebody has port 60000.
    static bool IsPortHeld() {
        WSADATA data{};
        WSAStartup(MAKEWORD(2, 2), &data);
        const SOCKET probe = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(60000);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const bool held = bind(probe, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0;
        closesocket(probe);
        WSACleanup();
        return held;
    }

 private:
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
