#include "platform/StartProgram.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cwctype>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/Text.h"

namespace {

/// Closed with its owner.
class OwnedHandle {
 public:
    explicit OwnedHandle(HANDLE handle = nullptr) : m_handle(handle) {}
    ~OwnedHandle() { Close(); }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;

    HANDLE Get() const { return m_handle; }
    bool IsValid() const { return m_handle != nullptr && m_handle != INVALID_HANDLE_VALUE; }
    void Close() {
        if (IsValid()) {
            CloseHandle(std::exchange(m_handle, nullptr));
        }
    }

 private:
    HANDLE m_handle;
};

/// The handles that a new process gets, and no others.
class HandleList {
 public:
    explicit HandleList(std::vector<HANDLE> handles) : m_handles(std::move(handles)) {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_memory.resize(size);
        m_bMade = InitializeProcThreadAttributeList(Get(), 1, 0, &size) != FALSE &&
                  UpdateProcThreadAttribute(Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, m_handles.data(),
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

/// The system gives these to its command interpreter, which takes some arguments for commands. It does not count blanks
/// and dots at the end of a name.
bool IsBatchFile(const std::filesystem::path& program) {
    std::wstring name = program.filename().wstring();
    name.resize(name.find_last_not_of(L" .") + 1);
    std::ranges::transform(name, name.begin(), [](wchar_t character) { return std::towlower(character); });
    return name.ends_with(L".bat") || name.ends_with(L".cmd");
}

/// The program's file; empty where there is none.
std::filesystem::path FindProgram(const std::filesystem::path& program) {
    if (program.has_parent_path()) {
        std::filesystem::path file = std::filesystem::absolute(program);
        std::error_code ignored;
        return file.has_extension() || std::filesystem::exists(file, ignored) ? file : file.concat(L".exe");
    }
    std::array<wchar_t, 32768> file{};
    const DWORD length =
        SearchPathW(nullptr, program.c_str(), L".exe", static_cast<DWORD>(file.size()), file.data(), nullptr);
    return length > 0 && length < file.size() ? std::filesystem::path(file.data()) : std::filesystem::path();
}

std::wstring CommandLine(const std::filesystem::path& file, const std::vector<std::string>& arguments) {
    std::wstring line = Quote(file.wstring());
    for (const std::string& argument : arguments) {
        line += L' ' + Quote(ToWide(argument));
    }
    return line;
}

DWORD Start(const std::filesystem::path& file, std::wstring line, const std::filesystem::path& folder, HANDLE input,
            HANDLE nowhere) {
    HandleList handles({input, nowhere});
    if (!handles.IsMade()) {
        return GetLastError();
    }
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = input;
    startup.StartupInfo.hStdOutput = nowhere;
    startup.StartupInfo.hStdError = nowhere;
    startup.lpAttributeList = handles.Get();
    PROCESS_INFORMATION process{};
    // Without this console: Ctrl+C is meant for the caller alone.
    if (CreateProcessW(file.c_str(), line.data(), nullptr, nullptr, TRUE,
                       EXTENDED_STARTUPINFO_PRESENT | CREATE_NO_WINDOW | CREATE_NEW_PROCESS_GROUP, nullptr,
                       folder.empty() ? nullptr : folder.c_str(), &startup.StartupInfo, &process) == FALSE) {
        return GetLastError();
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return ERROR_SUCCESS;
}

}  // namespace

std::string StartProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                         std::string_view input) {
    return StartProgramIn({}, program, arguments, input);
}

std::string StartProgramIn(const std::filesystem::path& folder, const std::filesystem::path& program,
                           const std::vector<std::string>& arguments, std::string_view input) {
    const std::string cannot = "cannot start " + PathText(program) + ": ";
    const auto reason = [&](DWORD error) { return cannot + "system error " + std::to_string(error); };
    if (input.size() > kLongestInput) {
        return cannot + "the text for it is too long";
    }
    const std::filesystem::path file = FindProgram(program);
    if (file.empty()) {
        return cannot + "no such program is found; write where it is";
    }
    if (IsBatchFile(file) || IsBatchFile(program)) {
        return cannot +
               "a batch file is run by a shell, which may take parts of the arguments for commands; write an .exe";
    }
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (CreatePipe(&readEnd, &writeEnd, &inherited, static_cast<DWORD>(kLongestInput)) == FALSE) {
        return reason(GetLastError());
    }
    const OwnedHandle read(readEnd);
    OwnedHandle write(writeEnd);
    // Before there is a reader: the pipe holds it all, so nobody has to wait for one.
    DWORD written = 0;
    if (!input.empty() &&
        WriteFile(write.Get(), input.data(), static_cast<DWORD>(input.size()), &written, nullptr) == FALSE) {
        return reason(GetLastError());
    }
    write.Close();
    const OwnedHandle nowhere(CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!nowhere.IsValid()) {
        return reason(GetLastError());
    }
    const DWORD error = Start(file, CommandLine(file, arguments), folder, read.Get(), nowhere.Get());
    if (error == ERROR_BAD_EXE_FORMAT) {
        return cannot + "it is no program; a script needs the program that runs it";
    }
    return error == ERROR_SUCCESS ? "" : reason(error);
}
