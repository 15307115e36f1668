#include "link/Commands.h"

#include <array>
#include <span>

#include "base/Numbers.h"

namespace {

/// The largest double with two decimals: 309 digits, a sign, a point and the decimals.
using NumberBuffer = std::array<char, 320>;

void AppendNumber(CommandText& text, std::span<const char> buffer, int length) noexcept {
    text.Append({buffer.data(), static_cast<std::size_t>(length)});
}

}  // namespace

CommandText FormatCommand(std::string_view format, std::initializer_list<CommandArgument> arguments) noexcept {
    CommandText text;
    NumberBuffer buffer;
    const CommandArgument* argument = arguments.begin();
    while (!format.empty()) {
        if (format.starts_with("%d")) {
            AppendNumber(text, buffer, FormatInteger(buffer, argument->Integer()));
            format.remove_prefix(2);
            ++argument;
        } else if (format.starts_with("%0.")) {
            const int decimals = format[3] - '0';
            AppendNumber(text, buffer, FormatFixed(buffer, argument->Number(), decimals));
            format.remove_prefix(5);
            ++argument;
        } else {
            text.Append(format.substr(0, 1));
            format.remove_prefix(1);
        }
    }
    return text;
}
