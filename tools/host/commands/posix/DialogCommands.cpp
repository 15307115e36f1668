#include <CLI/CLI.hpp>

#include "commands/CommandLine.h"
#include "commands/Commands.h"

void AddDialogCommands(CLI::App&, CommandRun&) {}  // the dialogs are Windows'
