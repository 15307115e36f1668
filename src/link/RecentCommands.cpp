#include "link/RecentCommands.h"

#include <algorithm>

#include "link/Reply.h"

void RecentCommands::Add(std::string_view command) noexcept {
    m_last = (m_last + 1) % m_commands.size();
    m_commands[m_last] = CommandText(command);
}

bool RecentCommands::IsAnswerToEarlier(std::string_view reply) const noexcept {
    const auto echo = EchoOf(reply);
    if (!echo || echo->empty() || *echo == m_commands[m_last].view()) {
        return false;
    }
    return std::ranges::find(m_commands, *echo, &CommandText::view) != m_commands.end();
}
