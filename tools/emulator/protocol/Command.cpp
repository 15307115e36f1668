#include "protocol/Command.h"

#include <charconv>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace emulator {

namespace {

template <class Number>
std::optional<Number> Parse(const std::vector<std::string>& arguments, std::size_t index) {
    if (index >= arguments.size()) {
        return std::nullopt;
    }
    const std::string& text = arguments[index];
    Number number{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

}  // namespace

std::optional<int> Command::Integer(std::size_t index) const { return Parse<int>(arguments, index); }

std::optional<double> Command::Number(std::size_t index) const { return Parse<double>(arguments, index); }

Command ParseCommand(std::string_view text) {
    Command command{std::string(text), {}, {}};
    std::vector<std::string> words(1);
    for (const char c : text) {
        if (c == ' ' || c == '(' || c == ')') {
            words.emplace_back();
        } else {
            words.back().push_back(c);
        }
    }
    if (text.ends_with(')')) {
        words.pop_back();
    }
    command.keyword = words.front();
    command.arguments.assign(words.begin() + 1, words.end());
    return command;
}

}  // namespace emulator
