#include "show/Screen.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "show/Output.h"

namespace {

HANDLE Output() { return GetStdHandle(STD_OUTPUT_HANDLE); }

bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != FALSE;
}

CONSOLE_SCREEN_BUFFER_INFO Info() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    GetConsoleScreenBufferInfo(Output(), &info);
    return info;
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
    const COORD cursor = Info().dwCursorPosition;
    const auto up = static_cast<SHORT>(std::min<std::size_t>(lines, static_cast<std::size_t>(cursor.Y)));
    SetConsoleCursorPosition(Output(), {0, static_cast<SHORT>(cursor.Y - up)});
}

/// Writes a line, and blanks over what stood behind it.
void WriteLine(const std::string& utf8) {
    std::wstring line = ToWide(utf8);
    line.resize(static_cast<std::size_t>(std::max<SHORT>(Info().dwSize.X, 2)) - 1, L' ');
    line += L"\r\n";
    DWORD written = 0;
    WriteConsoleW(Output(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

/// What the window holds beside the line that the cursor waits on: a line that scrolled out could not be reached again.
std::vector<std::string> CutToWindow(const std::vector<std::string>& lines) {
    const SMALL_RECT window = Info().srWindow;
    const auto rows = static_cast<std::size_t>(std::max(window.Bottom - window.Top, 2));
    if (lines.size() <= rows) {
        return lines;
    }
    std::vector<std::string> cut(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(rows - 1));
    cut.push_back(std::to_string(lines.size() - cut.size()) + " more lines: make the window higher");
    return cut;
}

}  // namespace

Screen::Screen() : m_bTerminal(IsConsole(Output())) {}

void Screen::Show(const std::vector<std::string>& lines) {
    if (!m_bTerminal) {
        Print(JoinLines(lines));
        return;
    }
    // With the console's own calls: not every console understands escape sequences, Wine's among them.
    const std::vector<std::string> visible = CutToWindow(lines);
    const std::size_t leftOver = m_nShown - std::min(m_nShown, visible.size());
    MoveUp(m_nShown);
    std::ranges::for_each(visible, WriteLine);
    for (std::size_t i = 0; i < leftOver; ++i) {
        WriteLine("");
    }
    MoveUp(leftOver);
    m_nShown = visible.size();
}

void Screen::MakeRoom() {
    if (m_nShown == 0 || !IsConsole(GetStdHandle(STD_ERROR_HANDLE))) {
        return;
    }
    MoveUp(m_nShown);
    for (std::size_t i = 0; i < m_nShown; ++i) {
        WriteLine("");
    }
    MoveUp(m_nShown);
    m_nShown = 0;
}
