#include "base/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

namespace {

std::size_t SkipBlanks(std::string_view text) noexcept {
    const auto first = std::find_if_not(text.begin(), text.end(), [](char c) { return IsBlank(c); });
    return static_cast<std::size_t>(first - text.begin());
}

constexpr bool IsHexDigit(char c) noexcept { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

/// How a number is written.
struct Notation {
    std::chars_format format;
    std::string_view exponentMarks;
    std::string_view digitsButZero;
    int exponentPerDigit;  // what one more digit adds to the exponent
};

constexpr Notation kDecimal{std::chars_format::general, "eE", "123456789", 1};
constexpr Notation kHex{std::chars_format::hex, "pP", "123456789abcdefABCDEF", 4};

/// from_chars does not say whether a number out of range is too large or too small: the place of its first digit other
/// than zero, moved by the exponent, does.
bool IsTooLarge(std::string_view number, const Notation& notation) noexcept {
    const std::size_t exponentAt = std::min(number.find_first_of(notation.exponentMarks), number.size());
    const std::string_view digits = number.substr(0, exponentAt);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t first = std::min(digits.find_first_of(notation.digitsButZero), digits.size());
    const int exponent = exponentAt < number.size() ? ParseInteger(number.substr(exponentAt + 1)) : 0;
    const auto place = static_cast<long long>(point) - static_cast<long long>(first);
    return place * notation.exponentPerDigit + exponent > 0;
}

/// "0x" and a digit, or a point and a digit; the "0" of every other "0x" is a decimal number.
bool StartsHexNumber(std::string_view text) noexcept {
    if (!text.starts_with("0x") && !text.starts_with("0X")) {
        return false;
    }
    text.remove_prefix(text.substr(2).starts_with('.') ? 3 : 2);
    return !text.empty() && IsHexDigit(text.front());
}

}  // namespace

NumberText FormatFixed(double value, int decimals) noexcept {
    std::array<char, NumberText::kCapacity> digits;
    const auto result =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, decimals);
    return NumberText({digits.data(), result.ptr});
}

IntegerText FormatInteger(int value) noexcept {
    std::array<char, IntegerText::kCapacity> digits;
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return IntegerText({digits.data(), result.ptr});
}

ScannedDouble ScanDouble(std::string_view text) noexcept {
    const std::size_t blanks = SkipBlanks(text);
    std::string_view rest = text.substr(blanks);
    const bool negative = rest.starts_with('-');
    if (negative || rest.starts_with('+')) {
        rest.remove_prefix(1);
    }
    if (rest.starts_with('-')) {  // from_chars would take the second sign
        return {};
    }

    const bool hex = StartsHexNumber(rest);
    const Notation& notation = hex ? kHex : kDecimal;
    rest.remove_prefix(hex ? 2 : 0);
    if (hex) {  // from_chars would take the second sign of an exponent, too
        rest = rest.substr(0, std::min(rest.find("p+-"), rest.find("P+-")));
    }
    double value = 0.0;
    const auto result = std::from_chars(rest.data(), rest.data() + rest.size(), value, notation.format);
    if (result.ec == std::errc::invalid_argument) {
        return {};
    }
    if (result.ec == std::errc::result_out_of_range) {
        const std::string_view number = rest.substr(0, static_cast<std::size_t>(result.ptr - rest.data()));
        value = IsTooLarge(number, notation) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return {negative ? -value : value, static_cast<int>(result.ptr - text.data())};
}

ScannedInteger ScanInteger(std::string_view text) noexcept {
    std::string_view rest = text.substr(SkipBlanks(text));
    const bool negative = rest.starts_with('-');
    if (rest.starts_with('+')) {
        rest.remove_prefix(1);
        if (rest.starts_with('-')) {
            return {};
        }
    }
    int value = 0;
    const auto result = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    if (result.ec == std::errc::invalid_argument) {
        return {};
    }
    if (result.ec == std::errc::result_out_of_range) {
        value = negative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    }
    return {value, static_cast<int>(result.ptr - text.data())};
}

std::optional<double> ParseDouble(std::string_view text) noexcept {
    const double value = ScanDouble(text).value;
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

int ParseInteger(std::string_view text) noexcept { return ScanInteger(text).value; }
