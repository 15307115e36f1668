#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace emulator {

/// A pattern of whole commands, in which "*" stands for any run of characters. What it takes to match grows with the
/// lengths of the command and of the pattern, and with nothing else, however many stars there are.
class Pattern {
 public:
    Pattern() : Pattern("") {}
    explicit Pattern(std::string_view text);

    bool Fits(std::string_view command) const;

    const std::string& Text() const { return m_text; }

    bool HasStar() const { return m_hasStar; }

    /// What stands before the first star.
    std::string_view Start() const;

 private:
    /// A text between two stars, and where to go on in it when a character does not fit.
    struct Piece {
        std::string text;
        std::vector<std::size_t> fallBack;  // by length that fits: the longest shorter beginning that fits, too
    };

    static Piece MakePiece(std::string_view text);
    static std::size_t EndOfFirst(const Piece& piece, std::string_view text);

    std::string m_text;
    bool m_hasStar = false;
    std::string m_start;  // before the first star
    std::string m_end;    // behind the last one
    std::vector<Piece> m_between;
};

/// Whether a command fits a pattern.
bool FitsPattern(std::string_view command, std::string_view pattern);

}  // namespace emulator
