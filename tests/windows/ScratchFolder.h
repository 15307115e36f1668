#pragma once

#include <array>
#include <filesystem>
#include <string>

#include "LoadedLibrary.h"

/// Where the tests put what they write, with its separator. A test program clears it when it starts and when it ends;
/// those that scripts/wine runs side by side have one each.
inline std::wstring ScratchFolder() {
    std::array<wchar_t, 64> lane{};
    GetEnvironmentVariableW(L"OKO_TEST_LANE", lane.data(), static_cast<DWORD>(lane.size()));
    const std::wstring folder = ProgramFolder() + L"test files" + lane.data() + L"\\";
    std::filesystem::create_directories(folder);
    return folder;
}
