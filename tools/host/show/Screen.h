#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Where the monitor's table goes: in place on a terminal, else plain lines one after the other.
class Screen {
 public:
    Screen();

    /// Shows the lines; on a terminal over the ones shown before, and no more than its window holds.
    void Show(const std::vector<std::string>& lines);

    /// Wipes the lines off a terminal that other output is about to come to; the next ones stand below that.
    void MakeRoom();

    /// Leaves the lines where they are: nothing is shown over them any more.
    void Leave() noexcept { m_nShown = 0; }

 private:
    bool m_bTerminal;
    std::size_t m_nShown = 0;
};
