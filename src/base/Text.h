#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

/// A text of at most `Capacity - 1` characters that always ends in a zero. What does not fit is cut: these texts are
/// log lines and commands, and a long reply in a line must never overrun it.
template <class Char, std::size_t Capacity>
class BoundedText {
 public:
    using View = std::basic_string_view<Char>;
    static constexpr std::size_t kCapacity = Capacity;

    constexpr BoundedText() noexcept = default;
    constexpr explicit BoundedText(View text) noexcept { Append(text); }

    constexpr BoundedText& Append(View text) noexcept {
        const std::size_t count = std::min(text.size(), Capacity - 1 - m_nLength);
        std::copy_n(text.begin(), count, m_text.begin() + static_cast<std::ptrdiff_t>(m_nLength));
        m_nLength += count;
        m_bCut = m_bCut || count < text.size();
        return *this;
    }

    /// Appends single-byte text to a wide text, each byte widened to the character of the same number.
    constexpr BoundedText& AppendBytes(std::string_view bytes) noexcept {
        for (const char byte : bytes) {
            const Char widened = static_cast<Char>(static_cast<unsigned char>(byte));
            Append(View(&widened, 1));
        }
        return *this;
    }

    constexpr const Char* c_str() const noexcept { return m_text.data(); }
    constexpr View view() const noexcept { return {m_text.data(), m_nLength}; }
    constexpr std::size_t length() const noexcept { return m_nLength; }

    /// True when something did not fit.
    constexpr bool IsCut() const noexcept { return m_bCut; }

 private:
    std::array<Char, Capacity> m_text{};
    std::size_t m_nLength = 0;
    bool m_bCut = false;
};

/// Copies as much of `text` as fits before a terminator. `buffer` holds at least one character.
inline void CopyCut(std::string_view text, std::span<char> buffer) noexcept {
    *std::ranges::copy(text.substr(0, buffer.size() - 1), buffer.begin()).out = '\0';
}
inline void CopyCut(std::wstring_view text, std::span<wchar_t> buffer) noexcept {
    *std::ranges::copy(text.substr(0, buffer.size() - 1), buffer.begin()).out = L'\0';
}

/// One line for the host's log: 511 wide characters and the terminator.
using LogLine = BoundedText<wchar_t, 512>;
