#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// Types of registry values, numbered as Windows does.
inline constexpr std::uint32_t kRegistryString = 1;
inline constexpr std::uint32_t kRegistryDword = 4;

/// What a value holds, without its data.
struct RegistryValueInfo {
    std::uint32_t type = 0;
    std::uint32_t sizeBytes = 0;
};

/// Owner of an open key below HKEY_LOCAL_MACHINE. Failures are not told apart: nothing here acts on the reason.
class RegistryKey {
 public:
    explicit RegistryKey(void* handle) noexcept : m_hKey(handle) {}
    ~RegistryKey();
    RegistryKey(RegistryKey&& other) noexcept;
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    RegistryKey& operator=(RegistryKey&&) = delete;

    /// Type and size of a value, whatever its size.
    std::optional<RegistryValueInfo> Query(const wchar_t* name) const noexcept;

    /// Puts the name of the subkey at `index`, ending in a zero, into `buffer`. False at the end, and when it does not
    /// fit.
    bool SubkeyName(std::uint32_t index, std::span<wchar_t> buffer) const noexcept;

    /// Reads a number.
    std::optional<std::uint32_t> ReadDword(const wchar_t* name) const noexcept;

    /// Reads the bytes of a text value into `buffer`, whose last character is kept for the terminator. Returns the text
    /// up to its first zero; nothing when it is too long for the buffer.
    std::optional<std::wstring_view> ReadText(const wchar_t* name, std::span<wchar_t> buffer) const noexcept;

    /// Writes a text value with its terminator. A failure is not reported.
    void WriteText(const wchar_t* name, std::wstring_view text) const noexcept;

 private:
    void* m_hKey;
};

/// Opens a key below HKEY_LOCAL_MACHINE with whatever rights the user has.
std::optional<RegistryKey> OpenLocalMachine(const wchar_t* path) noexcept;

/// Makes a key below HKEY_LOCAL_MACHINE. A failure shows itself when the key is opened.
void CreateLocalMachine(const wchar_t* path) noexcept;
