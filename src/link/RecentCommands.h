#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "link/Commands.h"

/// The last commands that were sent, by which a reply is known that comes twice or late. No locks: the device object's
/// m_csSocket guards it.
class RecentCommands {
 public:
    /// More than the reads of one round over a full incubator, 24 channels and their air modes.
    static constexpr std::size_t kCount = 32;

    void Add(std::string_view command) noexcept;

    /// Whether `reply` echoes one of these commands to the letter, and not the last one. A reply that merely fails to
    /// match is nobody else's: a server may echo loosely.
    bool IsAnswerToEarlier(std::string_view reply) const noexcept;

 private:
    std::array<CommandText, kCount> m_commands;
    std::size_t m_last = 0;
};
