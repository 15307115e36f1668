#include "text/Number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>

#include "text/Parsed.h"
#include "text/ReadDouble.h"

namespace {

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

}  // namespace

std::string_view TrimBlanks(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string WithPoints(std::string_view text) {
    std::string pointed(text);
    if (text.find('.') != std::string_view::npos) {
        return pointed;  // the commas of "1,000.5" are no decimal marks
    }
    bool marked = false;  // within the present number
    for (std::size_t i = 0; i < pointed.size(); ++i) {
        const bool between = i > 0 && i + 1 < pointed.size() && IsDigit(pointed[i - 1]) && IsDigit(pointed[i + 1]);
        if (pointed[i] == ',' && between) {
            if (marked) {
                return std::string(text);
            }
            pointed[i] = '.';
            marked = true;
        } else if (!IsDigit(pointed[i])) {
            marked = false;
        }
    }
    return pointed;
}

Parsed<double> ParseNumber(std::string_view text) {
    text = TrimBlanks(text);
    double value = 0.0;
    const auto [end, error] = ReadDouble(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        return Parsed<double>::Error(Quoted(text) + " is too large or too small a number");
    }
    const bool whole = error == std::errc{} && end == text.data() + text.size();
    if (whole && std::isfinite(value)) {
        return Parsed<double>::Of(value);
    }
    const std::string pointed = WithPoints(text);
    if (pointed != text) {
        return Parsed<double>::Error(Quoted(text) + " has a decimal comma: write " + pointed + ", with a point");
    }
    if (error == std::errc{} && std::isfinite(value) && end != text.data() && *end != '.' && *end != ',') {
        const std::string number(text.substr(0, static_cast<std::size_t>(end - text.data())));
        return Parsed<double>::Error(Quoted(text) + " has more than a number: write " + number + " alone");
    }
    return Parsed<double>::Error(Quoted(text) + " is not a number: write one such as 38.5");
}

std::string FormatShortest(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

std::string FormatPlain(double value) {
    std::array<char, 400> text{};  // the smallest number has 324 decimals
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    return {text.data(), result.ptr};
}

std::string FormatFixed(double value, int decimals) {
    if (!std::isfinite(value)) {
        return "-";
    }
    std::array<char, 400> text{};  // the largest number has 309 digits before its point
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, std::min(decimals, 60));
    return {text.data(), result.ptr};
}
