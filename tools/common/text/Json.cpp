#include "text/Json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace {

template <typename Number>
void AppendNumber(std::string& json, Number number) {
    if (!std::isfinite(number)) {
        json += "null";
        return;
    }
    std::array<char, 32> digits{};
    json.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

}  // namespace

void AppendJson(std::string& json, float number) { AppendNumber(json, number); }

void AppendJson(std::string& json, double number) { AppendNumber(json, number); }

std::string JsonQuoted(std::string_view text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}
