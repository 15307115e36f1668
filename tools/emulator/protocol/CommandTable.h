#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace emulator {

/// A command that the server knows.
struct CommandEntry {
    std::string_view keyword;
    std::size_t fewest;  // arguments
    std::size_t most;
    std::string_view description;
    std::array<std::string_view, 3> examples;  // in the exact form that the library sends; the rest is empty
};

/// All of them, as people look for them: what is there, then how it is set up, read and set.
inline constexpr std::array<CommandEntry, 20> kCommands{{
    {"listprod", 0, 0, "the products that the server knows", {"listprod"}},
    {"listconprod", 0, 0, "the products that are connected", {"listconprod"}},
    {"comport",
     2,
     3,
     "product and link: its COM port; a third number sets it",
     {"comport 9 0", "comport 7 0 3", "comport 12 1 3"}},
    {"listdev", 1, 1, "product: its devices", {"listdev 12"}},
    {"bl-param-list", 1, 1, "product: its parameters", {"bl-param-list 12"}},
    {"mode", 2, 2, "product and mode: 0 for the real one, 1 for a simulated one", {"mode 7 0"}},
    {"checkcon", 1, 1, "product: 1 when it is connected, else 0", {"checkcon 7"}},
    {"start", 1, 1, "1 starts the products, 0 stops them", {"start 1"}},
    {"status", 0, 0, "what fails: product, device and error number in turn", {"status"}},
    {"connect", 2, 2, "product and 0: disconnects it", {"connect 9 0"}},
    {"find", 1, 1, "product: begins a search for it", {"find 7"}},
    {"findstat", 0, 0, "how far the search is, in percent; -1 when none runs", {"findstat"}},
    {"readcurval",
     1,
     2,
     "product and device: its reading; the product alone stands for its device 0",
     {"readcurval 9", "readcurval 12(1)"}},
    {"readsetpoint", 3, 3, "product, device and -1: its target", {"readsetpoint 9 0 -1"}},
    {"writesetpoint",
     3,
     3,
     "product, device and its new target",
     {"writesetpoint 9 0 37.5", "writesetpoint 12 0 5.00", "writesetpoint 15 0 63"}},
    {"readmin", 2, 2, "product and device: its lowest target", {"readmin 9 0"}},
    {"readmax", 2, 2, "product and device: its highest target", {"readmax 12 1"}},
    {"bl-param-read", 2, 2, "product and parameter: its value", {"bl-param-read 9 107"}},
    {"bl-param-write", 3, 3, "product, parameter and its new value", {"bl-param-write 12 238 1"}},
    {"alarm", 2, 2, "product and the tolerance of its alarm", {"alarm 9 0.2", "alarm 12 0.50"}},
}};

/// The command with this keyword; null when there is none.
const CommandEntry* FindCommand(std::string_view keyword);

/// Its examples, without those that are empty.
std::vector<std::string_view> ExamplesOf(const CommandEntry& command);

/// The table for people: a line for each example, and what the command is about.
std::string FormatCommandTable();

}  // namespace emulator
