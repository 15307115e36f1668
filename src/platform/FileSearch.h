#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

/// Attributes of a plain directory, numbered as Windows does.
inline constexpr std::uint32_t kDirectoryAttributes = 16;

/// One entry of a folder. The name is valid until the search goes on.
struct FileEntry {
    std::wstring_view name;
    std::uint32_t attributes = 0;
};

/// Owner of a search through the files that match a pattern.
class FileSearch {
 public:
    /// Starts the search; `pattern` is a path whose last part may hold "*".
    explicit FileSearch(const wchar_t* pattern) noexcept;
    ~FileSearch();
    FileSearch(const FileSearch&) = delete;
    FileSearch& operator=(const FileSearch&) = delete;

    /// The next entry, the first one at first; nothing at the end or when the search could not be started.
    std::optional<FileEntry> Next() noexcept;

 private:
    struct State;
    std::unique_ptr<State> m_pState;
};
