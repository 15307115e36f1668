#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "base/Numbers.h"

/// Reads a text from left to right as scanf does with a format: literals and numbers in turn, until the first that does
/// not match. After a mismatch every further call fails too. In a wide text Unicode's white space counts as such; a
/// text of the wire has that of ASCII.
template <class Char>
class Scanner {
 public:
    constexpr explicit Scanner(std::basic_string_view<Char> text) noexcept : m_rest(text) {}

    /// Takes `literal`: a blank in it matches any run of white space, even none; every other character itself.
    template <class Expected>
    constexpr bool Literal(std::basic_string_view<Expected> literal) noexcept {
        for (const Expected expected : literal) {
            if (IsBlank(expected)) {
                SkipBlanks();
            } else if (m_bMatching && !m_rest.empty() && m_rest.front() == static_cast<Char>(expected)) {
                m_rest.remove_prefix(1);
            } else {
                m_bMatching = false;
            }
        }
        return m_bMatching;
    }

    constexpr bool Literal(const char* literal) noexcept { return Literal(std::string_view(literal)); }
    constexpr bool Literal(const wchar_t* literal) noexcept { return Literal(std::wstring_view(literal)); }

    /// Takes what "%d" takes. `value` stays as it was when nothing matches.
    bool Integer(int& value) noexcept { return Take(ScanInteger, value); }

    /// Takes what "%lf" takes, if it is finite: a tolerance of NaN or infinity is as malformed as one of letters.
    bool Double(double& value) noexcept {
        return Take(
            [](std::string_view text) noexcept {
                const ScannedDouble scanned = ScanDouble(text);
                return std::isfinite(scanned.value) ? scanned : ScannedDouble{};
            },
            value);
    }

 private:
    constexpr void SkipBlanks() noexcept {
        while (!m_rest.empty() && IsBlank(m_rest.front())) {
            m_rest.remove_prefix(1);
        }
    }

    template <class Scan, class Number>
    bool Take(Scan scan, Number& value) noexcept {
        SkipBlanks();
        // Longer than any number that "%f" prints; the settings texts hold nothing else.
        std::array<char, 400> ascii{};
        std::size_t length = 0;
        while (length < ascii.size() && length < m_rest.size() && m_rest[length] > ' ' && m_rest[length] < 127) {
            ascii[length] = static_cast<char>(m_rest[length]);
            ++length;
        }
        const auto scanned = scan(std::string_view(ascii.data(), length));
        if (!m_bMatching || scanned.length == 0) {
            m_bMatching = false;
            return false;
        }
        value = scanned.value;
        m_rest.remove_prefix(static_cast<std::size_t>(scanned.length));
        return true;
    }

    std::basic_string_view<Char> m_rest;
    bool m_bMatching = true;
};
