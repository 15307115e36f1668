#include "platform/Registry.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "platform/win32/Windows.h"

namespace {

HKEY Handle(void* key) noexcept { return static_cast<HKEY>(key); }

}  // namespace

RegistryKey::~RegistryKey() {
    if (m_hKey != nullptr) {
        RegCloseKey(Handle(m_hKey));
    }
}

RegistryKey::RegistryKey(RegistryKey&& other) noexcept : m_hKey(std::exchange(other.m_hKey, nullptr)) {}

std::optional<RegistryValueInfo> RegistryKey::Query(const wchar_t* name) const noexcept {
    DWORD type = 0;
    DWORD sizeBytes = 0;
    if (RegQueryValueExW(Handle(m_hKey), name, nullptr, &type, nullptr, &sizeBytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return RegistryValueInfo{type, sizeBytes};
}

bool RegistryKey::SubkeyName(std::uint32_t index, std::span<wchar_t> buffer) const noexcept {
    return RegEnumKeyW(Handle(m_hKey), index, buffer.data(), static_cast<DWORD>(buffer.size())) == ERROR_SUCCESS;
}

std::optional<std::uint32_t> RegistryKey::ReadDword(const wchar_t* name) const noexcept {
    DWORD value = 0;
    DWORD sizeBytes = sizeof value;
    auto* const bytes = reinterpret_cast<BYTE*>(&value);
    if (RegQueryValueExW(Handle(m_hKey), name, nullptr, nullptr, bytes, &sizeBytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return value;
}

std::optional<std::wstring_view> RegistryKey::ReadText(const wchar_t* name, std::span<wchar_t> buffer) const noexcept {
    // A value may be stored without a terminator.
    auto sizeBytes = static_cast<DWORD>((buffer.size() - 1) * sizeof(wchar_t));
    auto* const bytes = reinterpret_cast<BYTE*>(buffer.data());
    if (RegQueryValueExW(Handle(m_hKey), name, nullptr, nullptr, bytes, &sizeBytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    buffer[sizeBytes / sizeof(wchar_t)] = L'\0';
    return std::wstring_view(buffer.data());
}

void RegistryKey::WriteText(const wchar_t* name, std::wstring_view text) const noexcept try {
    const std::wstring terminated(text);
    const auto sizeBytes = static_cast<DWORD>((terminated.size() + 1) * sizeof(wchar_t));
    RegSetValueExW(Handle(m_hKey), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(terminated.c_str()), sizeBytes);
} catch (...) {  // NOLINT(bugprone-empty-catch)
    // No memory for a default answer: the next Init writes it.
}

std::optional<RegistryKey> OpenLocalMachine(const wchar_t* path) noexcept {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, MAXIMUM_ALLOWED, &key) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return RegistryKey(key);
}

void CreateLocalMachine(const wchar_t* path) noexcept {
    HKEY key = nullptr;
    if (RegCreateKeyW(HKEY_LOCAL_MACHINE, path, &key) == ERROR_SUCCESS) {
        RegCloseKey(key);
    }
}
