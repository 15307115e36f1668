#include "faults/Pattern.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace emulator {

Pattern::Pattern(std::string_view text) : m_text(text) {
    const std::size_t first = text.find('*');
    m_hasStar = first != std::string_view::npos;
    m_start = text.substr(0, first);
    if (!m_hasStar) {
        return;
    }
    const std::size_t last = text.rfind('*');
    m_end = text.substr(last + 1);
    std::size_t star = first;
    while (star < last) {
        const std::size_t next = text.find('*', star + 1);
        if (next > star + 1) {
            m_between.push_back(MakePiece(text.substr(star + 1, next - star - 1)));
        }
        star = next;
    }
}

std::string_view Pattern::Start() const { return m_start; }

Pattern::Piece Pattern::MakePiece(std::string_view text) {
    std::vector<std::size_t> fallBack(text.size(), 0);
    std::size_t length = 0;
    for (std::size_t i = 1; i < text.size(); ++i) {
        while (length > 0 && text[i] != text[length]) {
            length = fallBack[length - 1];
        }
        length += text[i] == text[length] ? 1 : 0;
        fallBack[i] = length;
    }
    return {std::string(text), std::move(fallBack)};
}

/// Where the first occurrence of a piece ends. A search that began anew at every character would take the product of
/// the two lengths.
std::size_t Pattern::EndOfFirst(const Piece& piece, std::string_view text) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        while (length > 0 && text[i] != piece.text[length]) {
            length = piece.fallBack[length - 1];
        }
        length += text[i] == piece.text[length] ? 1 : 0;
        if (length == piece.text.size()) {
            return i + 1;
        }
    }
    return std::string_view::npos;
}

bool Pattern::Fits(std::string_view command) const {
    if (!m_hasStar) {
        return command == m_start;
    }
    if (command.size() < m_start.size() + m_end.size() || !command.starts_with(m_start) || !command.ends_with(m_end)) {
        return false;
    }
    std::string_view rest = command.substr(m_start.size(), command.size() - m_start.size() - m_end.size());
    // A piece at its first place leaves the most for the pieces behind it.
    for (const Piece& piece : m_between) {
        const std::size_t end = EndOfFirst(piece, rest);
        if (end == std::string_view::npos) {
            return false;
        }
        rest.remove_prefix(end);
    }
    return true;
}

bool FitsPattern(std::string_view command, std::string_view pattern) { return Pattern(pattern).Fits(command); }

}  // namespace emulator
