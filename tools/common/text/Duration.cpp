#include "text/Duration.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>

#include "text/Number.h"
#include "text/Parsed.h"
#include "text/ReadDouble.h"

namespace {

struct Unit {
    std::string_view name;
    double seconds;
};

// "min" and "ms" before "m": the first name that fits is taken.
constexpr std::array<Unit, 6> kUnits{
    {{"d", 86400.0}, {"h", 3600.0}, {"min", 60.0}, {"ms", 0.001}, {"m", 60.0}, {"s", 1.0}}};

struct WholeUnit {
    std::int64_t seconds;
    const char* name;
};

constexpr std::array<WholeUnit, 4> kWholeUnits{{{86400, " d"}, {3600, " h"}, {60, " min"}, {1, " s"}}};

bool IsLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

/// The seconds of one unit, whose name the text begins with; 0 for none. Takes the name off the text.
double TakeUnit(std::string_view& text) {
    for (const Unit& unit : kUnits) {
        const bool fits = text.starts_with(unit.name);
        if (fits && (text.size() == unit.name.size() || !IsLetter(text[unit.name.size()]))) {
            text.remove_prefix(unit.name.size());
            return unit.seconds;
        }
    }
    return 0.0;
}

/// The number that the text begins with; negative for none. Takes it off the text.
double TakeNumber(std::string_view& text) {
    double number = 0.0;
    const auto [end, error] = ReadDouble(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (error != std::errc{} || !std::isfinite(number) || std::signbit(number)) {
        return -1.0;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

/// Seconds; negative for a text of another form.
double SumOfUnits(std::string_view text) {
    double sum = 0.0;
    double previousUnit = kLongestDuration;
    bool first = true;
    while (!text.empty() || first) {
        const double number = TakeNumber(text);
        text = TrimBlanks(text);
        if (number < 0.0) {
            return -1.0;
        }
        if (first && text.empty()) {
            return number;
        }
        const double unit = TakeUnit(text);
        text = TrimBlanks(text);
        if (unit == 0.0 || unit >= previousUnit) {
            return -1.0;
        }
        sum += number * unit;
        previousUnit = unit;
        first = false;
    }
    return sum;
}

}  // namespace

Parsed<double> ParseDuration(std::string_view text) {
    text = TrimBlanks(text);
    const double seconds = SumOfUnits(text);
    const std::string quoted = "\"" + std::string(text) + "\"";
    if (seconds > kLongestDuration) {
        return Parsed<double>::Error(quoted + " is too long: the longest duration is " +
                                     FormatFixed(kLongestDuration, 0) + "s");
    }
    if (seconds >= 0.0) {
        return Parsed<double>::Of(seconds);
    }
    const std::string pointed = WithPoints(text);
    if (pointed != text) {
        return Parsed<double>::Error(quoted + " has a decimal comma: write " + pointed + ", with a point");
    }
    return Parsed<double>::Error(quoted + " is not a duration: write one such as 500ms, 10s, 2min, 1h30m or 3d");
}

std::string FormatDuration(double seconds) {
    if (!(seconds >= 0.0 && seconds <= kLongestDuration * 1000.0)) {
        return "-";
    }
    const std::int64_t milliseconds = std::llround(seconds * 1000.0);
    if (milliseconds > 0 && milliseconds < 1000) {
        return std::to_string(milliseconds) + " ms";
    }
    if (milliseconds < 60'000) {
        return FormatShortest(static_cast<double>(milliseconds) / 1000.0) + " s";
    }
    std::int64_t left = std::llround(seconds);
    std::string text;
    for (const WholeUnit& unit : kWholeUnits) {
        if (left >= unit.seconds) {
            text += (text.empty() ? "" : " ") + std::to_string(left / unit.seconds) + unit.name;
            left %= unit.seconds;
        }
    }
    return text;
}
