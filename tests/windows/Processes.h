#pragma once

// clang-format off
#include "platform/win32/Windows.h"
#include <tlhelp32.h>
// clang-format on

#include <array>
#include <string>
#include <string_view>
#include <vector>

/// A process of this machine.
struct RunningProcess {
    DWORD id;
    std::wstring name;  // of its program, without the folder
};

inline std::vector<RunningProcess> RunningProcesses() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    std::vector<RunningProcess> processes;
    for (BOOL more = Process32FirstW(snapshot, &entry); more; more = Process32NextW(snapshot, &entry)) {
        processes.push_back({entry.th32ProcessID, entry.szExeFile});
    }
    CloseHandle(snapshot);
    return processes;
}

/// The file of a process's program; empty when the system does not say.
inline std::wstring ProgramOf(DWORD processId) {
    const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId);
    std::array<wchar_t, MAX_PATH> path{};
    auto length = static_cast<DWORD>(path.size());
    const bool known = QueryFullProcessImageNameW(process, 0, path.data(), &length) != FALSE;
    CloseHandle(process);
    return known ? std::wstring(path.data(), length) : std::wstring();
}

/// Ends a process and waits until it has ended.
inline void EndProcess(DWORD processId) {
    const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, processId);
    TerminateProcess(process, 0);
    WaitForSingleObject(process, 60'000);
    CloseHandle(process);
}

/// Ends every process of this name; gives how many there were.
inline int EndProcesses(std::wstring_view name) {
    int ended = 0;
    for (const RunningProcess& running : RunningProcesses()) {
        if (running.name == name) {
            EndProcess(running.id);
            ++ended;
        }
    }
    return ended;
}
