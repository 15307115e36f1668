#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "core/CommandText.h"

/// The commands whose reply did not come in time, and may come yet: however late it is, it is known by its echo and
/// never taken for the answer to another command. No locks: the device object's m_csSocket guards it.
class UnansweredCommands {
 public:
    /// More replies to one command cannot be on their way: no system keeps that many datagrams for a socket.
    static constexpr std::uint32_t kMostReplies = 256;

    /// One more reply to this command may come. Without memory it is forgotten.
    void Add(std::string_view command) noexcept try {
        const auto found = Find(command);
        if (found == m_commands.end()) {
            m_commands.push_back({CommandText(command), 1});
        } else {
            found->replies = std::min(found->replies + 1, kMostReplies);
        }
    } catch (...) {  // NOLINT(bugprone-empty-catch)
    }

    /// Takes a late reply off the list. False when none to this command is awaited.
    bool Take(std::string_view echo) noexcept {
        const auto found = Find(echo);
        if (found == m_commands.end()) {
            return false;
        }
        if (--found->replies == 0) {
            m_commands.erase(found);
        }
        return true;
    }

    /// No reply can come any more: the link is another one.
    void Clear() noexcept { m_commands.clear(); }

 private:
    struct Command {
        CommandText text;
        std::uint32_t replies;
    };

    std::vector<Command>::iterator Find(std::string_view command) noexcept {
        return std::ranges::find(m_commands, command, [](const Command& one) { return one.text.view(); });
    }

    std::vector<Command> m_commands;
};
