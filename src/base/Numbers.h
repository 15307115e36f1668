#pragma once

#include <optional>
#include <span>
#include <string_view>

/// Numbers with the meaning of the C run-time's printf and atof, but always with the decimal point: a host that has
/// called setlocale shares its run-time with this library, and a German one would make the wire say "37,5".

/// Writes `value` as "%0.<decimals>f" would in the C locale, without a terminator. Returns the length, or -1 when the
/// buffer is too small (the largest double needs 309 digits, a point and the decimals).
int FormatFixed(std::span<char> buffer, double value, int decimals) noexcept;

/// Writes `value` as "%d" would, without a terminator. Returns the length, or -1 when the buffer is too small.
int FormatInteger(std::span<char> buffer, int value) noexcept;

/// A number found at the start of a text, and how many characters it took, leading blanks included; 0 when there is
/// none.
struct ScannedDouble {
    double value = 0.0;
    int length = 0;
};
struct ScannedInteger {
    int value = 0;
    int length = 0;
};

/// What strtod and strtol(base 10) take from the start of the text. Too large numbers become infinity or the largest
/// integer of their sign, too small ones 0.
ScannedDouble ScanDouble(std::string_view text) noexcept;
ScannedInteger ScanInteger(std::string_view text) noexcept;

/// atof, for what the server says: the number at the start of the text, 0 when there is none. Nothing when it is not
/// finite ("-nan", "inf", "1e999"): taken for a value, it would come back to the server as a limit or a target.
std::optional<double> ParseDouble(std::string_view text) noexcept;

/// atoi: the number at the start of the text, 0 when there is none.
int ParseInteger(std::string_view text) noexcept;

/// The white space that C's isspace knows in the C locale.
constexpr bool IsBlank(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// The white space that Windows' wide run-time functions know. A Japanese input method types U+3000.
constexpr bool IsBlank(wchar_t c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r') || c == 0x85 || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000;
}

constexpr bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }
