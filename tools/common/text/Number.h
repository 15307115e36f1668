#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "text/Parsed.h"
#include "text/ReadDouble.h"

/// Numbers as people and files write them: with a point, whatever the locale.

/// A finite number, blanks around it allowed. A decimal comma and a unit behind the number are refused by name.
Parsed<double> ParseNumber(std::string_view text);

/// The text as a number of that type, with nothing before or behind it, not even blanks; nothing where it is none, or
/// one beyond the type's range.
template <class Number>
std::optional<Number> ReadExactly(std::string_view text) {
    Number number{};
    const char* const end = text.data() + text.size();
    std::from_chars_result result{};
    if constexpr (std::is_same_v<Number, double>) {
        result = ReadDouble(text.data(), end, number);
    } else {
        result = std::from_chars(text.data(), end, number);
    }
    return result.ec == std::errc{} && result.ptr == end ? std::optional(number) : std::nullopt;
}

/// As short as it can be read back: "38.5".
std::string FormatShortest(double value);

/// The same without an exponent, however many digits that takes: "1000000".
std::string FormatPlain(double value);

/// With that many decimals: "6.20". What is no number is "-".
std::string FormatFixed(double value, int decimals);

/// The text without the blanks around it.
std::string_view TrimBlanks(std::string_view text);

/// The text with its decimal commas as points; nothing changes where a comma does not stand alone between digits.
std::string WithPoints(std::string_view text);
