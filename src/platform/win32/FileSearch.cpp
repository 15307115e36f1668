#include "platform/FileSearch.h"

#include <memory>
#include <optional>

#include "platform/win32/Windows.h"

struct FileSearch::State {
    HANDLE search = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAW entry{};
    bool fresh = true;  // the entry came from the start of the search and was not handed out yet
};

FileSearch::FileSearch(const wchar_t* pattern) noexcept try : m_pState(std::make_unique<State>()) {
    m_pState->search = FindFirstFileW(pattern, &m_pState->entry);
} catch (...) {  // NOLINT(bugprone-empty-catch)
    // No memory: the search finds nothing.
}

FileSearch::~FileSearch() {
    if (m_pState && m_pState->search != INVALID_HANDLE_VALUE) {
        FindClose(m_pState->search);
    }
}

std::optional<FileEntry> FileSearch::Next() noexcept {
    if (!m_pState || m_pState->search == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    if (!m_pState->fresh && FindNextFileW(m_pState->search, &m_pState->entry) == FALSE) {
        return std::nullopt;
    }
    m_pState->fresh = false;
    return FileEntry{m_pState->entry.cFileName, m_pState->entry.dwFileAttributes};
}
