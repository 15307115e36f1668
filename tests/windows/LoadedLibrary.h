#pragma once

// winsock2.h before windows.h: test files use both.
// clang-format off
#include <winsock2.h>
#include <windows.h>
// clang-format on

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "oko/LibQuery.h"

/// The folder of the test program, where the library lies too, with its separator.
inline std::wstring ProgramFolder() {
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    const std::wstring program(path.data());
    return program.substr(0, program.find_last_of(L'\\') + 1);
}

inline std::wstring LibraryFile() { return ProgramFolder() + L"OkoLabBoldLine.dll"; }

/// The library, loaded and looked up as a host does.
class LoadedLibrary {
 public:
    LoadedLibrary() : m_hModule(LoadLibraryW(LibraryFile().c_str())) {
        queryPhysDevice = Find<oko::LibQueryPhysDeviceFunction>("LibQueryPhysDevice");
        queryInterface = Find<oko::LibQueryInterfaceFunction>("LibQueryInterface");
    }
    ~LoadedLibrary() { FreeLibrary(m_hModule); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    CDevApiInterface& Device(std::uint32_t index) const {
        CDevApiInterface* device = nullptr;
        EXPECT_EQ(queryInterface(index, nullptr, &device), 0);
        return *device;
    }

    oko::LibQueryPhysDeviceFunction queryPhysDevice;
    oko::LibQueryInterfaceFunction queryInterface;

 private:
    template <class Function>
    Function Find(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(m_hModule, name)));
    }

    HMODULE m_hModule;
};

/// What the library told its host. One record: a host callback has no argument of its own.
struct HostRecord {
    std::vector<std::wstring> lines;
    int airModeChanges = 0;

    static HostRecord& Current() {
        static HostRecord record;
        return record;
    }

    static void Callback(std::int32_t code, const wchar_t* text) {
        if (code == oko::kCallbackLog) {
            Current().lines.emplace_back(text);
        } else if (code == oko::kCallbackAirModeChanged) {
            ++Current().airModeChanges;
        }
    }

    /// How many lines begin with this.
    static std::size_t CountLines(std::wstring_view start) {
        std::size_t count = 0;
        for (const std::wstring& line : Current().lines) {
            count += line.starts_with(start) ? 1U : 0U;
        }
        return count;
    }
};

/// How long a test waits for what has to come, in milliseconds: however busy the machine is, and within the time-out
/// of a suite, which would say nothing.
inline constexpr DWORD kTestPatienceMs = 600'000;

/// Polls until `condition` holds; false when it does not within the time of a test's patience.
template <class Condition>
bool WaitUntil(Condition condition) {
    constexpr DWORD kPollMs = 10;
    const ULONGLONG end = GetTickCount64() + kTestPatienceMs;
    while (!condition()) {
        if (GetTickCount64() >= end) {
            return false;
        }
        Sleep(kPollMs);
    }
    return true;
}
