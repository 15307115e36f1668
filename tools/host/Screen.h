#pragma once

#include <string>
#include <vector>

/// Where the monitor's table goes: in place on a terminal, else plain lines one after the other.
class Screen {
 public:
    Screen();

    /// Shows the lines; on a terminal over the ones shown before.
    void Show(const std::vector<std::string>& lines);

    bool IsTerminal() const noexcept { return m_bTerminal; }

 private:
    bool m_bTerminal;
    std::size_t m_nShown = 0;
};
