#include "Screen.h"

#include <windows.h>

#include <algorithm>
#include <iostream>

namespace {

HANDLE Output() { return GetStdHandle(STD_OUTPUT_HANDLE); }

bool IsConsole() {
    DWORD mode = 0;
    return GetConsoleMode(Output(), &mode) != FALSE;
}

std::wstring ToWide(const std::string& utf8) {
    const int size = static_cast<int>(utf8.size());
    std::wstring wide(utf8.size(), L'\0');
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

/// Puts the cursor on the first of the lines above it.
void MoveUp(std::size_t lines) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    GetConsoleScreenBufferInfo(Output(), &info);
    const auto up = static_cast<SHORT>(std::min<std::size_t>(lines, static_cast<std::size_t>(info.dwCursorPosition.Y)));
    SetConsoleCursorPosition(Output(), {0, static_cast<SHORT>(info.dwCursorPosition.Y - up)});
}

/// Writes a line, and blanks over what stood behind it.
void WriteLine(const std::string& utf8) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    GetConsoleScreenBufferInfo(Output(), &info);
    std::wstring line = ToWide(utf8);
    line.resize(static_cast<std::size_t>(std::max<SHORT>(info.dwSize.X, 2)) - 1, L' ');
    line += L"\r\n";
    DWORD written = 0;
    WriteConsoleW(Output(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

}  // namespace

Screen::Screen() : m_bTerminal(IsConsole()) {}

void Screen::Show(const std::vector<std::string>& lines) {
    if (!m_bTerminal) {
        for (const std::string& line : lines) {
            std::cout << line << "\n";
        }
        std::cout << std::flush;
        return;
    }
    // With the console's own calls: not every console understands escape sequences, Wine's among them.
    MoveUp(m_nShown);
    std::ranges::for_each(lines, WriteLine);
    m_nShown = lines.size();
}
