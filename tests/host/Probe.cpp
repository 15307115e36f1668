#include "Probe.h"

#include <chrono>
#include <filesystem>
#include <thread>

#ifdef _WIN32
#include <windows.h>

#include <array>
#endif

std::filesystem::path Probe() {
#ifdef _WIN32
    std::array<wchar_t, 32768> program{};
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    return std::filesystem::path(program.data()).parent_path() / "oko-start-probe.exe";
#else
    return std::filesystem::path(OKO_PROBE_FOLDER) / "oko-start-probe";
#endif
}

bool WaitForFile(const std::filesystem::path& file) {
    for (int i = 0; i < 2000 && !std::filesystem::exists(file); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return std::filesystem::exists(file);
}
