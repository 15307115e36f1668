#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fakes/ScriptedPlatform.h"
#include "platform/FileSearch.h"

void ScriptedFiles::Answer(const std::wstring& pattern, std::vector<Entry> entries) {
    const std::scoped_lock lock(m_mutex);
    m_answers[pattern] = std::move(entries);
}

std::vector<std::wstring> ScriptedFiles::Patterns() const {
    const std::scoped_lock lock(m_mutex);
    return m_patterns;
}

std::vector<ScriptedFiles::Entry> ScriptedFiles::Search(const std::wstring& pattern) {
    const std::scoped_lock lock(m_mutex);
    m_patterns.push_back(pattern);
    const auto found = m_answers.find(pattern);
    return found != m_answers.end() ? found->second : std::vector<Entry>{};
}

struct FileSearch::State {
    HandleCounter::Token handle;
    std::vector<ScriptedFiles::Entry> entries;
    std::size_t next = 0;
};

FileSearch::FileSearch(const wchar_t* pattern) noexcept : m_pState(std::make_unique<State>()) {
    ScriptedFiles& files = ScriptedPlatform::Current().files;
    m_pState->handle = files.TakeHandle();
    m_pState->entries = files.Search(pattern);
}

FileSearch::~FileSearch() = default;

std::optional<FileEntry> FileSearch::Next() noexcept {
    if (m_pState->next == m_pState->entries.size()) {
        return std::nullopt;
    }
    const ScriptedFiles::Entry& entry = m_pState->entries[m_pState->next++];
    return FileEntry{entry.name, entry.attributes};
}
