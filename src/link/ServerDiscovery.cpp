#include "link/ServerDiscovery.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "platform/FileSearch.h"
#include "platform/Registry.h"

namespace {

constexpr const wchar_t* kUninstall32Key = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr const wchar_t* kUninstallKey = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr std::size_t kKeyNameLength = 260;

// Values are read with room for this many bytes. kept: docs/oddities.md#values-of-130-characters
constexpr std::size_t kValueCharacters = 260 / 2;
using ValueText = std::array<wchar_t, kValueCharacters + 1>;

/// Any version of the server matches: its display name goes on with the version's number.
constexpr std::wstring_view kDisplayName = L"OKO-Control Server";

constexpr std::wstring_view kProgramStart = L"OKO-Control";
constexpr std::wstring_view kProgramEnd = L".exe";
constexpr std::size_t kShortestProgramName = 12;

using KeyPath = BoundedText<wchar_t, 400>;

/// The list of installed programs, and where it lies.
struct UninstallList {
    const wchar_t* path;
    RegistryKey key;
};

/// The list that the server is looked for in.
// kept: docs/oddities.md#one-list-of-programs
std::optional<UninstallList> OpenUninstallList() noexcept {
    for (const wchar_t* const path : {kUninstall32Key, kUninstallKey}) {
        if (auto key = OpenLocalMachine(path)) {
            return UninstallList{path, std::move(*key)};
        }
    }
    return std::nullopt;
}

/// The installation folder that a program's key names, when that program is the server.
std::optional<std::wstring_view> ReadServerLocation(const RegistryKey& program, ValueText& buffer) noexcept {
    const auto name = program.ReadText(L"DisplayName", buffer);
    if (!name || !name->starts_with(kDisplayName)) {
        return std::nullopt;
    }
    return program.ReadText(L"InstallLocation", buffer);
}

bool IsSeparator(wchar_t character) noexcept { return character == L'\\' || character == L'/'; }

// kept: docs/oddities.md#folder-taken-for-the-program
bool IsServerProgram(const FileEntry& entry) noexcept {
    return entry.name.size() >= kShortestProgramName && entry.attributes != kDirectoryAttributes &&
           entry.name.starts_with(kProgramStart) && entry.name.ends_with(kProgramEnd);
}

}  // namespace

bool FindServerInstallLocation(FolderText* folder) noexcept {
    const auto list = OpenUninstallList();
    if (!list) {
        return false;
    }
    std::array<wchar_t, kKeyNameLength> name{};
    for (std::uint32_t index = 0; list->key.SubkeyName(index, name); ++index) {
        const KeyPath path = KeyPath(list->path).Append(L"\\").Append(name.data());
        const auto program = OpenLocalMachine(path.c_str());
        if (!program) {
            continue;
        }
        ValueText buffer{};
        if (const auto location = ReadServerLocation(*program, buffer)) {
            if (folder != nullptr) {
                CopyCut(*location, *folder);
            }
            return true;
        }
    }
    return false;
}

bool FindServerExecutable(const wchar_t* folder, ExecutableText& name) noexcept {
    std::wstring_view parent(folder);
    if (parent.empty()) {
        return false;  // the pattern would search the root of whatever drive is current
    }
    // kept: docs/oddities.md#replaced-separator
    parent.remove_suffix(1);
    const bool separated = IsSeparator(folder[parent.size()]);
    const wchar_t separator = separated ? folder[parent.size()] : L'\\';
    BoundedText<wchar_t, kFolderLength + 2> pattern(parent);
    pattern.Append({&separator, 1}).Append(L"*");

    FileSearch search(pattern.c_str());
    while (const auto entry = search.Next()) {
        if (IsServerProgram(*entry)) {
            CopyCut(entry->name, name);
            return true;
        }
    }
    return false;
}
