// Numbers read and written, held against the C library in its own locale.

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>

#include "base/Numbers.h"
#include "fuzz/Fuzz.h"

namespace {

bool IsSame(double left, double right) {
    return (std::isnan(left) && std::isnan(right)) ||
           std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}

void CheckReading(const std::string& text) {
    const char* const begin = text.c_str();
    char* end = nullptr;
    const double number = std::strtod(begin, &end);
    const ScannedDouble scanned = ScanDouble(text);
    Require(scanned.length == end - begin, "a number is as long as strtod takes it");
    Require(IsSame(scanned.value, number), "a number is what strtod reads");
    const auto finite = ParseDouble(text);
    Require(finite.has_value() == std::isfinite(number), "what is not finite is no value");
    Require(!finite || IsSame(*finite, number), "the number at the start is what strtod reads");

    const long integer = std::clamp<long>(std::strtol(begin, &end, 10), INT_MIN, INT_MAX);
    const ScannedInteger scannedInteger = ScanInteger(text);
    Require(scannedInteger.length == end - begin, "an integer is as long as strtol takes it");
    Require(scannedInteger.value == integer, "an integer is what strtol reads");
    Require(ParseInteger(text) == integer, "the integer at the start is what strtol reads");
}

void CheckWriting(double number, int decimals) {
    std::array<char, 400> expected{};
    const int length = std::snprintf(expected.data(), expected.size(), "%.*f", decimals, number);
    const std::string_view text(expected.data(), static_cast<std::size_t>(length));
    Require(FormatFixed(number, decimals).view() == text, "a number is printf's");
}

void CheckWriting(int number) {
    Require(FormatInteger(number).view() == std::to_string(number), "an integer is printf's");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckReading(std::string(AsText(data, size)));

    constexpr std::array kDecimals{0, 1, 2, 3, 6};  // all that the library prints
    double number = 0.0;
    if (size > sizeof(number)) {
        std::memcpy(&number, data, sizeof(number));
        CheckWriting(number, kDecimals[data[sizeof(number)] % kDecimals.size()]);
    }
    int integer = 0;
    if (size >= sizeof(integer)) {
        std::memcpy(&integer, data, sizeof(integer));
        CheckWriting(integer);
    }
    return 0;
}
