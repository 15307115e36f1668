#include "platform/LogSwitch.h"

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/Interrupt.h"

namespace {

constexpr const wchar_t* kKey = L"Software\\Vellmark\\Misc";
constexpr const wchar_t* kValue = L"LogCommunication";

struct Value {
    DWORD type = REG_DWORD;
    std::vector<BYTE> data;
};

/// Kept here and not in the object: the system's thread for Ctrl+C restores it, too.
std::optional<Value> g_before;

std::optional<Value> Read() {
    Value value;
    DWORD size = 0;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kKey, kValue, RRF_RT_ANY, &value.type, nullptr, &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    value.data.resize(size);
    const LSTATUS status =
        RegGetValueW(HKEY_LOCAL_MACHINE, kKey, kValue, RRF_RT_ANY | RRF_NOEXPAND, nullptr, value.data.data(), &size);
    return status == ERROR_SUCCESS ? std::optional(value) : std::nullopt;
}

void Restore() noexcept {
    if (g_before) {
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue, g_before->type, g_before->data.data(),
                        static_cast<DWORD>(g_before->data.size()));
    } else {
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue);
    }
}

}  // namespace

LogSwitch::LogSwitch() {
    g_before = Read();
    BeforeEndNow(Restore);
    const DWORD on = 1;
    const LSTATUS status = RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue, REG_DWORD, &on, sizeof on);
    if (status != ERROR_SUCCESS) {
        BeforeEndNow(nullptr);
        throw LogSwitchError(
            "LogCommunication cannot be set (system error " + std::to_string(status) +
            "): start this command as administrator, or have an administrator set it to 1 for a while");
    }
}

LogSwitch::~LogSwitch() {
    BeforeEndNow(nullptr);
    Restore();
}
