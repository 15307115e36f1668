#include "base/Numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

std::size_t SkipBlanks(std::string_view text) noexcept {
    const auto first = std::find_if_not(text.begin(), text.end(), IsBlank);
    return static_cast<std::size_t>(first - text.begin());
}

/// from_chars does not say whether a number out of range is too large or too small: the place of its first digit other
/// than zero, moved by the exponent, does.
bool IsTooLarge(std::string_view number) noexcept {
    const std::size_t exponentAt = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, exponentAt);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t first = std::min(digits.find_first_of("123456789"), digits.size());
    const int exponent = exponentAt < number.size() ? ParseInteger(number.substr(exponentAt + 1)) : 0;
    const auto place = static_cast<long long>(point) - static_cast<long long>(first);
    return place + exponent > 0;
}

bool StartsWithHexPrefix(std::string_view text) noexcept {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

}  // namespace

int FormatFixed(std::span<char> buffer, double value, int decimals) noexcept {
    char* const end = buffer.data() + buffer.size();
    const auto result = std::to_chars(buffer.data(), end, value, std::chars_format::fixed, decimals);
    return result.ec == std::errc{} ? static_cast<int>(result.ptr - buffer.data()) : -1;
}

int FormatInteger(std::span<char> buffer, int value) noexcept {
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return result.ec == std::errc{} ? static_cast<int>(result.ptr - buffer.data()) : -1;
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

    double value = 0.0;
    std::from_chars_result result{};
    if (StartsWithHexPrefix(rest)) {
        result = std::from_chars(rest.data() + 2, rest.data() + rest.size(), value, std::chars_format::hex);
        if (result.ptr == rest.data() + 2) {  // "0x" alone is the number 0
            result = {rest.data() + 1, std::errc{}};
        }
    } else {
        result = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    }
    if (result.ec == std::errc::invalid_argument) {
        return {};
    }
    if (result.ec == std::errc::result_out_of_range) {
        const std::string_view number(rest.data(), static_cast<std::size_t>(result.ptr - rest.data()));
        value = IsTooLarge(number) ? std::numeric_limits<double>::infinity() : 0.0;
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
