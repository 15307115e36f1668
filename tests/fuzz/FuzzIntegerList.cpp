// The reader of the catalogue's lists, held against the same rules written down plainly.

#include <optional>
#include <string>
#include <vector>

#include "fuzz/Fuzz.h"
#include "link/Reply.h"

namespace {

constexpr int kLargestListNumber = 9'999'999;  // seven digits

bool IsDecimal(char c) { return c >= '0' && c <= '9'; }

/// Nothing when a number is too long.
std::optional<std::vector<int>> ExpectedNumbers(const std::string& reply) {
    std::vector<int> numbers;
    std::size_t payload = reply.find('_');
    payload = payload == std::string::npos ? payload : reply.find('_', payload + 1);
    if (payload == std::string::npos || reply.find('\r') < payload) {
        return numbers;
    }
    for (std::size_t i = payload + 1; i < reply.size() && reply[i] != '\r'; ++i) {
        if (reply[i] == ' ' || reply[i] == '_') {
            continue;
        }
        std::string digits;
        while (i < reply.size() && IsDecimal(reply[i])) {
            digits += reply[i++];
        }
        if (digits.size() > 7) {
            return std::nullopt;
        }
        numbers.push_back(digits.empty() ? 0 : std::stoi(digits));
    }
    return numbers;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view reply = AsText(data, size);
    std::vector<int> numbers;
    const ListOutcome outcome = ParseIntegerList(reply, [&](int number) {
        Require(number >= 0 && number <= kLargestListNumber, "a list's numbers have at most seven digits");
        numbers.push_back(number);
    });

    const auto expected = ExpectedNumbers(std::string(reply));
    Require(expected.has_value() == (outcome == ListOutcome::Complete), "a number is too long from eight digits on");
    Require(!expected || *expected == numbers, "the numbers are those of the payload");
    return 0;
}
