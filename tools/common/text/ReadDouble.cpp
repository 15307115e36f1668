#include "text/ReadDouble.h"

#include <algorithm>
#include <charconv>
#include <locale>
#include <sstream>
#include <string>
#include <system_error>
#include <version>  // IWYU pragma: keep (__cpp_lib_to_chars)

namespace {

const char* SkipDigits(const char* first, const char* last) {
    return std::find_if(first, last, [](char c) { return c < '0' || c > '9'; });
}

/// Behind "1.5", "1." and ".5"; `first` where there is no digit.
const char* SkipMantissa(const char* first, const char* last) {
    const char* const point = SkipDigits(first, last);
    if (point == last || *point != '.') {
        return point;
    }
    const char* const end = SkipDigits(point + 1, last);
    return end - first > 1 ? end : first;
}

/// Behind "e-3"; `first` where no digit follows.
const char* SkipExponent(const char* first, const char* last) {
    if (first == last || (*first != 'e' && *first != 'E')) {
        return first;
    }
    const bool isSigned = first + 1 != last && (first[1] == '-' || first[1] == '+');
    const char* const digits = first + (isSigned ? 2 : 1);
    const char* const end = SkipDigits(digits, last);
    return end != digits ? end : first;
}

}  // namespace

std::from_chars_result ReadDoubleByStream(const char* first, const char* last, double& value,
                                          std::chars_format format) {
    const char* const digits = first != last && *first == '-' ? first + 1 : first;
    const char* const mantissaEnd = SkipMantissa(digits, last);
    if (mantissaEnd == digits) {
        return {first, std::errc::invalid_argument};
    }
    const char* const end = format == std::chars_format::general ? SkipExponent(mantissaEnd, last) : mantissaEnd;
    std::istringstream stream(std::string(first, end));
    stream.imbue(std::locale::classic());
    double read = 0.0;
    stream >> read;
    // A stream takes a number that is too small for zero.
    const bool isLost = read == 0.0 && std::any_of(digits, mantissaEnd, [](char c) { return c >= '1' && c <= '9'; });
    if (!stream || isLost) {
        return {end, std::errc::result_out_of_range};
    }
    value = read;
    return {end, std::errc{}};
}

std::from_chars_result ReadDouble(const char* first, const char* last, double& value, std::chars_format format) {
#ifdef __cpp_lib_to_chars
    return std::from_chars(first, last, value, format);
#else
    return ReadDoubleByStream(first, last, value, format);
#endif
}
