#include "platform/StartProgram.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cwctype>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/win32/NewProcess.h"
#include "text/Text.h"

namespace {

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

}  // namespace

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
    NewProcess started;
    const DWORD error =
        StartNewProcess(file, arguments, folder, {read.Get(), nowhere.Get(), nowhere.Get()}, 0, started);
    if (error == ERROR_BAD_EXE_FORMAT) {
        return cannot + "it is no program; a script needs the program that runs it";
    }
    return error == ERROR_SUCCESS ? "" : reason(error);
}
