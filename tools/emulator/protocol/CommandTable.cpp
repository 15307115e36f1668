#include "protocol/CommandTable.h"

#include <algorithm>
#include <string_view>
#include <vector>

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

}  // namespace emulator
