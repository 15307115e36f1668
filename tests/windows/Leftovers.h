#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

#include "ScratchFolder.h"
#include "ServerPort.h"
#include "windows/LoadedLibrary.h"
#include "windows/Processes.h"

/// What a test program that was killed leaves to the next one.

/// Told of each thing that is removed.
using LeftoverListener = std::function<void(const std::string& what)>;

/// Servers of this build; those that a user runs from elsewhere are not ours to end.
inline void EndLeftServers(const LeftoverListener& listener) {
    for (const RunningProcess& running : RunningProcesses()) {
        if (IsServerProgram(running.name) && ProgramOf(running.id).starts_with(ProgramFolder())) {
            EndProcess(running.id);
            listener(std::string(running.name.begin(), running.name.end()) + ", process " + std::to_string(running.id));
        }
    }
}

/// The emulator's entries in the lists of installed programs, and the 32-bit list if it was made for one.
inline void RemoveLeftInstallation(const LeftoverListener& listener) {
    constexpr const wchar_t* kList32 = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
    constexpr const wchar_t* kList = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
    for (const wchar_t* const list : {kList32, kList}) {
        const std::wstring entry = std::wstring(list) + L"\\OKO-Control Emulator";
        if (RegDeleteTreeW(HKEY_LOCAL_MACHINE, entry.c_str()) == ERROR_SUCCESS) {
            listener("an entry of the installed emulator");
        }
    }
    if (RegDeleteKeyW(HKEY_LOCAL_MACHINE, kList32) == ERROR_SUCCESS) {  // fails while anything is in it
        listener("an empty 32-bit list of installed programs");
    }
}

inline void RemoveScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(ScratchFolder(), ignored);
}

inline void RemoveLeftovers(const LeftoverListener& listener) {
    EndLeftServers(listener);
    RemoveLeftInstallation(listener);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Vellmark");  // the library writes there too: nothing to tell
    RemoveScratchFolder();
}
