#include "platform/Registry.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fakes/ScriptedPlatform.h"

namespace {

constexpr std::size_t kCharacterBytes = 2;  // as on Windows, whatever this system's wide characters take
constexpr std::size_t kDwordBytes = 4;

struct OpenKey {
    std::wstring path;
    HandleCounter::Token token;
};

const std::wstring& PathOf(void* key) noexcept { return static_cast<const OpenKey*>(key)->path; }

void AppendLittleEndian(std::string& bytes, std::uint32_t number, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<char>(number >> (8 * i) & 0xff));
    }
}

std::uint32_t LittleEndian(std::string_view bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    }
    return number;
}

wchar_t LowerCase(wchar_t character) {
    return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character - L'A' + L'a') : character;
}

/// Records a call about a value and gives that value.
std::optional<RegistryValue> Look(const wchar_t* call, void* key, const wchar_t* name) {
    ScriptedRegistry& registry = ScriptedPlatform::Current().registry;
    registry.Record(call + PathOf(key) + L"\\" + name);
    return registry.Find(PathOf(key), name);
}

}  // namespace

RegistryValue RegistryValue::Text(std::wstring_view text, std::uint32_t type) {
    RegistryValue value{type, {}};
    for (const wchar_t character : text) {
        AppendLittleEndian(value.bytes, static_cast<std::uint32_t>(character), kCharacterBytes);
    }
    value.bytes.append(kCharacterBytes, '\0');
    return value;
}

RegistryValue RegistryValue::Dword(std::uint32_t number) {
    RegistryValue value{kRegistryDword, {}};
    AppendLittleEndian(value.bytes, number, kDwordBytes);
    return value;
}

std::wstring RegistryValue::Characters() const {
    std::wstring characters;
    for (std::size_t i = 0; i + kCharacterBytes <= bytes.size(); i += kCharacterBytes) {
        characters.push_back(static_cast<wchar_t>(LittleEndian(std::string_view(bytes).substr(i, kCharacterBytes))));
    }
    return characters;
}

void ScriptedRegistry::AddKey(const std::wstring& path) {
    const std::scoped_lock lock(m_mutex);
    AddKeyLocked(path);
}

bool ScriptedRegistry::HasKey(const std::wstring& path) const {
    const std::scoped_lock lock(m_mutex);
    return m_keys.contains(path);
}

void ScriptedRegistry::Set(const std::wstring& path, const std::wstring& name, RegistryValue value) {
    const std::scoped_lock lock(m_mutex);
    AddKeyLocked(path);
    m_keys[path].insert_or_assign(name, std::move(value));
}

std::optional<RegistryValue> ScriptedRegistry::Find(const std::wstring& path, const std::wstring& name) const {
    const std::scoped_lock lock(m_mutex);
    const auto key = m_keys.find(path);
    if (key == m_keys.end()) {
        return std::nullopt;
    }
    const auto value = key->second.find(name);
    return value != key->second.end() ? std::optional(value->second) : std::nullopt;
}

void ScriptedRegistry::Deny(const std::wstring& path) {
    const std::scoped_lock lock(m_mutex);
    m_denied.insert(path);
}

bool ScriptedRegistry::CanOpen(const std::wstring& path) const {
    const std::scoped_lock lock(m_mutex);
    return !failOpen && m_keys.contains(path) && !m_denied.contains(path);
}

std::optional<std::wstring> ScriptedRegistry::Subkey(const std::wstring& path, std::uint32_t index) const {
    const std::scoped_lock lock(m_mutex);
    const std::wstring prefix = path + L"\\";
    std::uint32_t place = 0;
    for (const auto& [key, values] : m_keys) {
        const std::wstring name = key.size() > prefix.size() ? key.substr(prefix.size()) : std::wstring();
        const bool below =
            !name.empty() && std::ranges::equal(key.substr(0, prefix.size()), prefix, {}, LowerCase, LowerCase);
        if (below && name.find(L'\\') == std::wstring::npos && place++ == index) {
            return name;
        }
    }
    return std::nullopt;
}

std::vector<std::wstring> ScriptedRegistry::Calls() const {
    const std::scoped_lock lock(m_mutex);
    return m_calls;
}

void ScriptedRegistry::Record(std::wstring call) {
    const std::scoped_lock lock(m_mutex);
    m_calls.push_back(std::move(call));
}

void ScriptedRegistry::AddKeyLocked(const std::wstring& path) {
    for (std::size_t end = path.find(L'\\'); end != std::wstring::npos; end = path.find(L'\\', end + 1)) {
        m_keys.try_emplace(path.substr(0, end));
    }
    m_keys.try_emplace(path);
}

bool ScriptedRegistry::IgnoreCase::operator()(const std::wstring& left, const std::wstring& right) const {
    return std::ranges::lexicographical_compare(left, right, {}, LowerCase, LowerCase);
}

RegistryKey::~RegistryKey() {
    const std::unique_ptr<OpenKey> key(static_cast<OpenKey*>(m_hKey));
    ScriptedPlatform* const platform = ScriptedPlatform::CurrentOrNull();
    if (key != nullptr && platform != nullptr) {
        platform->registry.Record(L"close " + key->path);
    }
}

RegistryKey::RegistryKey(RegistryKey&& other) noexcept : m_hKey(std::exchange(other.m_hKey, nullptr)) {}

std::optional<RegistryValueInfo> RegistryKey::Query(const wchar_t* name) const noexcept {
    const auto value = Look(L"query ", m_hKey, name);
    if (!value) {
        return std::nullopt;
    }
    return RegistryValueInfo{value->type, static_cast<std::uint32_t>(value->bytes.size())};
}

bool RegistryKey::SubkeyName(std::uint32_t index, std::span<wchar_t> buffer) const noexcept {
    const auto name = ScriptedPlatform::Current().registry.Subkey(PathOf(m_hKey), index);
    if (!name || name->size() >= buffer.size()) {
        return false;
    }
    std::ranges::copy(*name, buffer.begin());
    buffer[name->size()] = L'\0';
    return true;
}

std::optional<std::uint32_t> RegistryKey::ReadDword(const wchar_t* name) const noexcept {
    const auto value = Look(L"read ", m_hKey, name);
    if (!value || value->bytes.size() > kDwordBytes) {
        return std::nullopt;
    }
    return LittleEndian(value->bytes);
}

std::optional<std::wstring_view> RegistryKey::ReadText(const wchar_t* name, std::span<wchar_t> buffer) const noexcept {
    const auto value = Look(L"read ", m_hKey, name);
    if (!value || value->bytes.size() > (buffer.size() - 1) * kCharacterBytes) {
        return std::nullopt;
    }
    const std::wstring characters = value->Characters();
    std::ranges::copy(characters, buffer.begin());
    buffer[characters.size()] = L'\0';
    return std::wstring_view(buffer.data());
}

void RegistryKey::WriteText(const wchar_t* name, std::wstring_view text) const noexcept {
    ScriptedRegistry& registry = ScriptedPlatform::Current().registry;
    registry.Record(L"write " + PathOf(m_hKey) + L"\\" + name);
    registry.Set(PathOf(m_hKey), name, RegistryValue::Text(text));
}

std::optional<RegistryKey> OpenLocalMachine(const wchar_t* path) noexcept {
    ScriptedRegistry& registry = ScriptedPlatform::Current().registry;
    registry.Record(std::wstring(L"open ") + path);
    if (!registry.CanOpen(path)) {
        return std::nullopt;
    }
    return RegistryKey(std::make_unique<OpenKey>(OpenKey{path, registry.TakeHandle()}).release());
}

void CreateLocalMachine(const wchar_t* path) noexcept {
    ScriptedRegistry& registry = ScriptedPlatform::Current().registry;
    registry.Record(std::wstring(L"create ") + path);
    if (!registry.failCreate) {
        registry.AddKey(path);
    }
}
