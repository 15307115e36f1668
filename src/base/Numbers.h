#pragma once

#include <optional>
#include <string_view>

#include "base/Text.h"

/// Numbers with the meaning of the C run-time's printf and atof, but always with the decimal point: a host that has
/// called setlocale shares its run-time with this library, and a German one would make the wire say "37,5".

inline constexpr int kMaxDecimals = 9;

/// Room for every number: a sign, the 309 digits of the largest double, a point and the decimals.
using NumberText = BoundedText<char, 1 + 309 + 1 + kMaxDecimals + 1>;
using IntegerText = BoundedText<char, 12>;

/// `value` as "%0.<decimals>f" prints it in the C locale; `decimals` is 0 to kMaxDecimals.
NumberText FormatFixed(double value, int decimals) noexcept;

/// `value` as "%d" prints it.
IntegerText FormatInteger(int value) noexcept;

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
