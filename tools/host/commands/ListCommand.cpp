// The library's devices.

#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "ExitCode.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "device/Library.h"
#include "show/Output.h"

namespace {

int RunList(const std::filesystem::path& libraryFile) {
    const Library library(libraryFile);
    std::uint32_t index = 0;
    for (auto texts = library.Texts(index); texts; texts = library.Texts(++index)) {
        Print(std::to_string(index) + "  " + texts->type + "  " + texts->name + "\n");
    }
    return kExitDone;
}

}  // namespace

void AddListCommand(CLI::App& app, CommandRun& run) {
    CLI::App* const command = app.add_subcommand("list", "Shows the library's devices");
    const auto library = std::make_shared<std::filesystem::path>();
    AddLibraryOption(*command, *library);
    command->footer("Example:\n  oko-host list --library OkoLabBoldLine.dll");
    command->callback([&run, library] { run = [library] { return RunList(*library); }; });
}
