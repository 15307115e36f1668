#include "protocol/Command.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/Number.h"

namespace emulator {

namespace {

template <class Number>
std::optional<Number> Parse(const std::vector<std::string>& arguments, std::size_t index) {
    return index < arguments.size() ? ReadExactly<Number>(arguments[index]) : std::nullopt;
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
