#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "core/CommandText.h"

/// The kinds of commands that a server has echoed to the letter: "readcurval 9" and "readcurval 12" are of one kind,
/// "readcurval 7(1)" is of another. No locks: the device object's m_csSocket guards it.
class ExactEchoes {
 public:
    /// More than there are kinds, with their numbers' signs; one too many is forgotten.
    static constexpr std::size_t kMostKinds = 48;

    /// The server has echoed this command to the letter.
    void Add(std::string_view command) noexcept {
        if (const CommandText kind = KindOf(command); !Has(kind) && m_nKinds < kMostKinds) {
            m_kinds[m_nKinds++] = kind;
        }
    }

    /// Whether it has done so with one of this kind.
    bool Contains(std::string_view command) const noexcept { return Has(KindOf(command)); }

    void Clear() noexcept { m_nKinds = 0; }

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
        const std::span known(m_kinds.data(), m_nKinds);
        return std::ranges::find(known, kind.view(), &CommandText::view) != known.end();
    }

    std::array<CommandText, kMostKinds> m_kinds;
    std::size_t m_nKinds = 0;
};
