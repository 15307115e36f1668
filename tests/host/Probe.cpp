#include "Probe.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

#include "../Patience.h"

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

std::filesystem::path PlaceFor(const std::string& kind) {
    const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
    const std::string number = std::to_string(std::random_device{}());
    return std::filesystem::temp_directory_path() / ("oko " + kind + " " + test + " " + number);
}

bool WaitForFile(const std::filesystem::path& file) {
    return Await([&] { return std::filesystem::exists(file); });
}
