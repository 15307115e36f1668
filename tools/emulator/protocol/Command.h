#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace emulator {

/// One command as the server reads it: "readcurval 9(0)" is the keyword "readcurval" with the arguments "9" and "0".
struct Command {
    std::string text;  // as it came
    std::string keyword;
    std::vector<std::string> arguments;

    /// Argument `index` as an integer; nothing when it is missing or no integer.
    std::optional<int> Integer(std::size_t index) const;

    /// Argument `index` as a number with a decimal point.
    std::optional<double> Number(std::size_t index) const;
};

/// Splits at blanks and at a pair of parentheses. Never fails: nonsense becomes a keyword that no one knows.
Command ParseCommand(std::string_view text);

}  // namespace emulator
