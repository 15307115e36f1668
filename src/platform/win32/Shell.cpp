#include "platform/Shell.h"

#include "platform/win32/Windows.h"
// clang-format off
#include <shellapi.h>
// clang-format on

void OpenProgram(const wchar_t* program, const wchar_t* parameters, const wchar_t* folder) noexcept {
    ShellExecuteW(GetDesktopWindow(), L"open", program, parameters, folder, SW_SHOWNORMAL);
}
