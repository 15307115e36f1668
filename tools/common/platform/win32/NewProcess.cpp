#include "platform/win32/NewProcess.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

/// The handles that a new process gets, and no others.
class HandleList {
 public:
    explicit HandleList(std::vector<HANDLE> handles) : m_handles(std::move(handles)) {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_memory.resize(size);
        m_bMade =
            InitializeProcThreadAttributeList(Get(), 1, 0, &size) != FALSE &&
            UpdateProcThreadAttribute(Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, static_cast<void*>(m_handles.data()),
                                      m_handles.size() * sizeof(HANDLE), nullptr, nullptr) != FALSE;
    }
    ~HandleList() {
        if (m_bMade) {
            DeleteProcThreadAttributeList(Get());
        }
    }
    HandleList(const HandleList&) = delete;
    HandleList& operator=(const HandleList&) = delete;

    bool IsMade() const { return m_bMade; }
    LPPROC_THREAD_ATTRIBUTE_LIST Get() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_memory.data()); }

 private:
    std::vector<HANDLE> m_handles;
    std::vector<std::byte> m_memory;
    bool m_bMade = false;
};

std::wstring ToWide(std::string_view utf8) {
    std::wstring wide(utf8.size(), L'\0');
    const auto size = static_cast<int>(utf8.size());
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), size)));
    return wide;
}

/// One argument so that a program's own splitting gives it back: backslashes count only before a quote.
std::wstring Quote(std::wstring_view argument) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t character : argument) {
        if (character == L'\\') {
            ++backslashes;
            continue;
        }
        quoted.append(character == L'"' ? 2 * backslashes + 1 : backslashes, L'\\');
        quoted += character;
        backslashes = 0;
    }
    quoted.append(2 * backslashes, L'\\');
    return quoted + L'"';
}

std::wstring CommandLine(const std::filesystem::path& file, const std::vector<std::string>& arguments) {
    std::wstring line = Quote(file.wstring());
    for (const std::string& argument : arguments) {
        line += L' ' + Quote(ToWide(argument));
    }
    return line;
}

}  // namespace

DWORD StartNewProcess(const std::filesystem::path& file, const std::vector<std::string>& arguments,
                      const std::filesystem::path& folder, const StandardHandles& handles, DWORD flags,
                      NewProcess& started) {
    // The list takes no handle twice.
    std::vector<HANDLE> inherited{handles.input, handles.output, handles.errors};
    std::ranges::sort(inherited);
    const auto repeated = std::ranges::unique(inherited);
    inherited.erase(repeated.begin(), repeated.end());
    std::erase(inherited, nullptr);
    HandleList list(std::move(inherited));
    if (!list.IsMade()) {
        return GetLastError();
    }
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = handles.input;
    startup.StartupInfo.hStdOutput = handles.output;
    startup.StartupInfo.hStdError = handles.errors;
    startup.lpAttributeList = list.Get();
    PROCESS_INFORMATION process{};
    std::wstring line = CommandLine(file, arguments);
    // Without this console: Ctrl+C is meant for the caller alone.
    if (CreateProcessW(file.c_str(), line.data(), nullptr, nullptr, TRUE,
                       EXTENDED_STARTUPINFO_PRESENT | CREATE_NO_WINDOW | CREATE_NEW_PROCESS_GROUP | flags, nullptr,
                       folder.empty() ? nullptr : folder.c_str(), &startup.StartupInfo, &process) == FALSE) {
        return GetLastError();
    }
    started.process = OwnedHandle(process.hProcess);
    started.thread = OwnedHandle(process.hThread);
    return ERROR_SUCCESS;
}
