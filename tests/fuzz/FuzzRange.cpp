// The reader of a range's ends.

#include <cmath>
#include <string>

#include "core/RangeReply.h"
#include "fuzz/Fuzz.h"
#include "link/Reply.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view reply = AsText(data, size);
    constexpr double kMissing = -12345.0;
    const double end = ReadRangeEnd(reply, kMissing);
    Require(std::isfinite(end), "a range's end is finite");
    const auto position = PayloadPosition(reply);
    const double read = position ? std::strtod(std::string(reply.substr(*position, 7)).c_str(), nullptr) : kMissing;
    Require(end == kMissing || end == read, "a range's end is what the C library reads of seven characters");
    return 0;
}
