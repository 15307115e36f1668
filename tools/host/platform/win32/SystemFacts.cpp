// The library's file, the ports and the registry's switches.

#include "platform/SystemFacts.h"

#include <windows.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "model/SystemFacts.h"

namespace {

constexpr const wchar_t* kSwitchesKey = L"Software\\Vellmark\\Misc";

RegistrySwitch ReadSwitch(const wchar_t* name) {
    DWORD type = 0;
    DWORD number = 0;
    DWORD size = sizeof number;
    const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, kSwitchesKey, name, RRF_RT_ANY, &type, &number, &size);
    if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) {
        return {};
    }
    const bool isNumber = status == ERROR_SUCCESS && type == REG_DWORD && size == sizeof number;
    return {isNumber ? RegistrySwitch::Kind::Number : RegistrySwitch::Kind::OtherType, isNumber ? number : 0};
}

}  // namespace

Fact<std::string> FileVersion(const std::filesystem::path& file) {
    const DWORD size = GetFileVersionInfoSizeW(file.c_str(), nullptr);
    std::vector<std::byte> resource(size);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (size == 0 || GetFileVersionInfoW(file.c_str(), 0, size, resource.data()) == FALSE ||
        VerQueryValueW(resource.data(), L"\\", reinterpret_cast<void**>(&info), &length) == FALSE ||
        length < sizeof *info) {
        return Fact<std::string>::Unknown("the file does not name it");
    }
    std::string text;
    for (const DWORD part : {info->dwFileVersionMS >> 16U, info->dwFileVersionMS & 0xFFFFU,
                             info->dwFileVersionLS >> 16U, info->dwFileVersionLS & 0xFFFFU}) {
        text.append(text.empty() ? "" : ".").append(std::to_string(part));
    }
    return Fact<std::string>::Of(text);
}

/// Asked as the library asks; a port is not opened for it: that could disturb who uses it.
Fact<std::vector<int>> SerialPorts() {
    constexpr int kLastPort = 64;
    std::vector<int> ports;
    for (int number = 1; number <= kLastPort; ++number) {
        COMMCONFIG configuration{};
        DWORD size = sizeof configuration;
        if (GetDefaultCommConfigW((L"COM" + std::to_wstring(number)).c_str(), &configuration, &size) != FALSE) {
            ports.push_back(number);
        }
    }
    return Fact<std::vector<int>>::Of(ports);
}

Fact<LibrarySwitches> ReadLibrarySwitches() {
    return Fact<LibrarySwitches>::Of({ReadSwitch(L"LogCommunication"), ReadSwitch(L"ReplyTimeout")});
}
