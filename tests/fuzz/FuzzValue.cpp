// The readers of single values: result code, payload and first token of a reply.

#include <bit>
#include <cmath>
#include <string>

#include "channels/ParameterRead.h"
#include "fuzz/Fuzz.h"
#include "link/Reply.h"

namespace {

bool IsSame(double left, double right) {
    return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view reply = AsText(data, size);
    const int code = ResultCodeOf(reply);
    Require(code >= 0 && code <= 9, "a result code is one digit");

    const auto position = PayloadPosition(reply);
    const ValueToken token = ParseValue(reply);
    Require(token.mark == (position ? reply[*position] : '\0'), "the mark is the payload's first character");
    Require(position || !token.value, "without a payload there is no value");

    if (token.value) {
        const std::string payload(reply.substr(*position));
        const std::string text = payload.substr(0, payload.find_first_of(" \r"));
        Require(text.size() < payload.size(), "a value's token is ended");
        Require(std::isfinite(*token.value), "a value is finite");
        Require(IsSame(*token.value, std::strtod(text.c_str(), nullptr)), "a value is what the C library reads");
    }

    const std::string_view shortened = DropLineEnd(reply);
    Require(reply.starts_with(shortened) && reply.size() - shortened.size() <= 1, "at most one line end is dropped");
    IsReplyValueNonZero(reply);
    return 0;
}
