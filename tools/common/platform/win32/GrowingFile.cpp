#include "platform/GrowingFile.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "text/Text.h"

namespace {

HANDLE Handle(std::intptr_t file) { return reinterpret_cast<HANDLE>(file); }

std::string SystemText(DWORD error) {
    std::array<wchar_t, 512> text{};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                                        text.data(), static_cast<DWORD>(text.size()), nullptr);
    const std::wstring_view sentence(text.data(), length);
    return length == 0 ? "system error " + std::to_string(error)
                       : ToUtf8(sentence.substr(0, sentence.find_last_not_of(L" .\r\n") + 1));
}

}  // namespace

// Others may read the file while it grows.
GrowingFile::GrowingFile(const std::filesystem::path& file, Mode mode)
    : m_file(reinterpret_cast<std::intptr_t>(CreateFileW(file.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                                                         mode == Mode::Create ? CREATE_NEW : OPEN_EXISTING,
                                                         FILE_ATTRIBUTE_NORMAL, nullptr))) {
    if (Handle(m_file) == INVALID_HANDLE_VALUE) {
        throw FileError("cannot open " + PathText(file) + ": " + SystemText(GetLastError()));
    }
}

GrowingFile::~GrowingFile() { CloseHandle(Handle(m_file)); }

std::size_t GrowingFile::Write(std::string_view bytes) {
    constexpr std::size_t kAtOnce = 1U << 20U;
    std::size_t written = 0;
    while (written < bytes.size()) {
        DWORD count = 0;
        const auto wanted = static_cast<DWORD>(std::min(kAtOnce, bytes.size() - written));
        const BOOL done = WriteFile(Handle(m_file), bytes.data() + written, wanted, &count, nullptr);
        written += count;
        if (done == FALSE || count == 0) {
            m_problem = SystemText(done == FALSE ? GetLastError() : ERROR_DISK_FULL);
            break;
        }
    }
    return written;
}
