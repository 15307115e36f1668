// The reader of a range's ends.

#include <cmath>

#include "core/RangeReply.h"
#include "fuzz/Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr double kMissing = -12345.0;
    const double end = ReadRangeEnd(AsText(data, size), kMissing);
    Require(std::isfinite(end), "a range's end is finite");
    // Seven characters: at most a six digit number, or a single digit with an exponent of up to five characters.
    Require(end == kMissing || std::abs(end) < 1e308, "a range's end fits seven characters");
    return 0;
}
