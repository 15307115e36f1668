// The reader of a range's ends.

#include <algorithm>
#include <cmath>
#include <string>

#include "core/RangeReply.h"
#include "fuzz/Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view reply = AsText(data, size);
    constexpr double kMissing = -12345.0;
    if (reply.empty()) {
        return 0;
    }
    const double end = ReadRangeEnd(reply, kMissing);
    Require(std::isfinite(end), "a range's end is finite");
    const std::string_view payload = reply.substr(std::min(reply.find('_', reply.find('_') + 1), reply.size() - 1) + 1);
    const double read = std::strtod(std::string(payload.substr(0, 7)).c_str(), nullptr);
    Require(end == kMissing || end == read, "a range's end is what the C library reads of seven characters");
    return 0;
}
