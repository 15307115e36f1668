#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "core/CommandText.h"

/// The last commands that were sent, by which a reply is known that comes twice or late. No locks: the device object's
/// m_csSocket guards it.
class RecentCommands {
 public:
    /// More than the reads of one round over a full incubator, 24 channels and their air modes.
    static constexpr std::size_t kCount = 32;

    void Add(std::string_view command) noexcept {
        m_last = (m_last + 1) % m_commands.size();
        m_commands[m_last] = CommandText(command);
    }

    /// Whether `echo` is one of these commands to the letter, and not the last one. What merely fails to match is
    /// nobody else's: a server may echo loosely.
    bool HasEarlier(std::string_view echo) const noexcept {
        return !echo.empty() && echo != m_commands[m_last].view() &&
               std::ranges::find(m_commands, echo, &CommandText::view) != m_commands.end();
    }

 private:
    std::array<CommandText, kCount> m_commands;
    std::size_t m_last = 0;
};
