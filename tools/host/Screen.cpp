#include "Screen.h"

#include <windows.h>

#include <iostream>

namespace {

/// A terminal that can move its cursor up.
bool PrepareTerminal() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) != FALSE &&
           SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != FALSE;
}

}  // namespace

Screen::Screen() : m_bTerminal(PrepareTerminal()) { SetConsoleOutputCP(CP_UTF8); }

void Screen::Show(const std::vector<std::string>& lines) {
    if (m_bTerminal && m_nShown > 0) {
        std::cout << "\x1B[" << m_nShown << "A";
    }
    for (const std::string& line : lines) {
        std::cout << line << (m_bTerminal ? "\x1B[K\n" : "\n");
    }
    std::cout << std::flush;
    m_nShown = lines.size();
}
