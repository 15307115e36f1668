#include "link/Commands.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

#include "base/Numbers.h"
#include "core/CommandText.h"

namespace {

constexpr std::array kReadingCommands{
    command::kListProd,        command::kListConProd, command::kListDev, command::kListParams, command::kStatus,
    command::kReadCurrentOnly, command::kReadTarget,  command::kReadMin, command::kReadMax,    command::kReadParam};

std::string_view KeywordOf(std::string_view command) noexcept { return command.substr(0, command.find(' ')); }

}  // namespace

bool IsReadingCommand(std::string_view command) noexcept {
    return std::ranges::find(kReadingCommands, KeywordOf(command), KeywordOf) != kReadingCommands.end();
}

CommandText FormatCommand(std::string_view format, std::initializer_list<CommandArgument> arguments) noexcept {
    CommandText text;
    const CommandArgument* argument = arguments.begin();
    while (!format.empty()) {
        if (format.starts_with("%d")) {
            text.Append(FormatInteger(argument->Integer()).view());
            format.remove_prefix(2);
            ++argument;
        } else if (format.starts_with("%0.")) {
            const int decimals = format[3] - '0';
            text.Append(FormatFixed(argument->Number(), decimals).view());
            format.remove_prefix(5);
            ++argument;
        } else {
            text.Append(format.substr(0, 1));
            format.remove_prefix(1);
        }
    }
    return text;
}
