#pragma once

#include <filesystem>
#include <string>

#include "LoadedLibrary.h"

/// Where the tests put what they write, with its separator. A test program clears it when it starts and when it ends.
inline std::wstring ScratchFolder() {
    const std::wstring folder = ProgramFolder() + L"test files\\";
    std::filesystem::create_directories(folder);
    return folder;
}
