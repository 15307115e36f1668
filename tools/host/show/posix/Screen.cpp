#include "show/Screen.h"

#include <unistd.h>

#include <cstddef>
#include <string>
#include <vector>

#include "show/Output.h"

namespace {

/// To the first of the lines above the cursor, and all that follows wiped.
std::string WipeLines(std::size_t lines) { return lines == 0 ? "" : "\x1b[" + std::to_string(lines) + "A\x1b[J"; }

}  // namespace

Screen::Screen() : m_bTerminal(isatty(STDOUT_FILENO) == 1) {}

void Screen::Show(const std::vector<std::string>& lines) {
    Print((m_bTerminal ? WipeLines(m_nShown) : "") + JoinLines(lines));
    m_nShown = m_bTerminal ? lines.size() : 0;
}

void Screen::MakeRoom() {
    Print(WipeLines(m_nShown));
    m_nShown = 0;
}
