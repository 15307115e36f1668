#include "platform/Installation.h"

#include <windows.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace emulator {

namespace {

constexpr const wchar_t* kList32 = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr const wchar_t* kList = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr const wchar_t* kEntry = L"\\OKO-Control Emulator";

constexpr const wchar_t* kProgram = L"OKO-Control Emulator.exe";
constexpr const wchar_t* kOptions = L"OKO-Control Emulator.ini";

/// The list that clients look into: the 32-bit one where it exists.
std::wstring EntryPath() {
    HKEY key = nullptr;
    const bool has32 = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kList32, 0, KEY_READ, &key) == ERROR_SUCCESS;
    if (has32) {
        RegCloseKey(key);
    }
    return std::wstring(has32 ? kList32 : kList) + kEntry;
}

void WriteValue(const wchar_t* name, const std::wstring& text) {
    const LSTATUS status = RegSetKeyValueW(HKEY_LOCAL_MACHINE, EntryPath().c_str(), name, REG_SZ, text.c_str(),
                                           static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    if (status != ERROR_SUCCESS) {
        throw std::runtime_error("the list of installed programs cannot be written (system error " +
                                 std::to_string(status) + "); an administrator can");
    }
}

std::filesystem::path ThisProgram() {
    std::array<wchar_t, 32768> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

}  // namespace

bool CanInstall() { return true; }

void Install(const std::filesystem::path& folder, const std::string& displayName, const std::string& options) {
    const std::filesystem::path absolute = std::filesystem::absolute(folder);
    std::filesystem::create_directories(absolute);
    std::filesystem::remove(absolute /
                            kProgram);  // copy_file of this run-time does not overwrite, though it may be told
    std::filesystem::copy_file(ThisProgram(), absolute / kProgram);
    std::ofstream(absolute / kOptions) << options;
    WriteValue(L"DisplayName", std::wstring(displayName.begin(), displayName.end()));
    WriteValue(L"InstallLocation", absolute.wstring() + L"\\");
}

void Uninstall() {
    std::array<wchar_t, 400> folder{};
    DWORD size = sizeof folder;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, EntryPath().c_str(), L"InstallLocation", RRF_RT_REG_SZ, nullptr, folder.data(),
                     &size) == ERROR_SUCCESS) {
        std::error_code ignored;
        std::filesystem::remove(std::filesystem::path(folder.data()) / kProgram, ignored);
        std::filesystem::remove(std::filesystem::path(folder.data()) / kOptions, ignored);
    }
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, EntryPath().c_str());
}

std::filesystem::path OptionsFile() { return ThisProgram().replace_filename(kOptions); }

}  // namespace emulator
