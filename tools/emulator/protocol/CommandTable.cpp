#include "protocol/CommandTable.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "text/Columns.h"

namespace emulator {

const CommandEntry* FindCommand(std::string_view keyword) {
    const auto* const found = std::ranges::find(kCommands, keyword, &CommandEntry::keyword);
    return found != kCommands.end() ? found : nullptr;
}

std::vector<std::string_view> ExamplesOf(const CommandEntry& command) {
    std::vector<std::string_view> examples(command.examples.begin(), command.examples.end());
    std::erase(examples, std::string_view());
    return examples;
}

std::string FormatCommandTable() {
    std::vector<std::vector<std::string>> rows;
    for (const CommandEntry& command : kCommands) {
        std::string description(command.description);
        for (const std::string_view example : ExamplesOf(command)) {
            rows.push_back({std::string(example), description});
            description.clear();
        }
    }
    std::string table;
    for (const std::string& line : FormatColumns(rows, {Align::Left, Align::Left})) {
        table.append(line).append("\n");
    }
    return table;
}

}  // namespace emulator
