#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

#include "core/CommandText.h"

/// The kinds of commands that a server has echoed to the letter: "readcurval 9" and "readcurval 12" are of one kind,
/// "readcurval 7(1)" is of another. No locks: the device object's m_csSocket guards it.
class ExactEchoes {
 public:
    /// The server has echoed this command to the letter. Without memory that is forgotten.
    void Add(std::string_view command) noexcept try {
        if (const CommandText kind = KindOf(command); !Has(kind)) {
            m_kinds.push_back(kind);
        }
    } catch (...) {  // NOLINT(bugprone-empty-catch)
    }

    /// Whether it has done so with one of this kind.
    bool Contains(std::string_view command) const noexcept { return Has(KindOf(command)); }

    void Clear() noexcept { m_kinds.clear(); }

 private:
    /// The command with a "#" for each number.
    static CommandText KindOf(std::string_view command) noexcept {
        constexpr std::string_view kNumber = "0123456789.";
        CommandText kind;
        while (!command.empty()) {
            const bool number = kNumber.find(command.front()) != std::string_view::npos;
            kind.Append(number ? "#" : command.substr(0, 1));
            command.remove_prefix(number ? std::min(command.find_first_not_of(kNumber), command.size()) : 1);
        }
        return kind;
    }

    bool Has(const CommandText& kind) const noexcept {
        return std::ranges::find(m_kinds, kind.view(), &CommandText::view) != m_kinds.end();
    }

    std::vector<CommandText> m_kinds;
};
