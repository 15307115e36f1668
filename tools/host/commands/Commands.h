#pragma once

#include <CLI/CLI.hpp>

#include "commands/CommandLine.h"

/// Every command adds itself to the command line; the one that is chosen stores what it runs.

void AddCommands(CLI::App& app, CommandRun& run);

void AddDoctorCommand(CLI::App& app, CommandRun& run);
void AddListCommand(CLI::App& app, CommandRun& run);
void AddCheckCommand(CLI::App& app, CommandRun& run);
void AddTraceCommand(CLI::App& app, CommandRun& run);
void AddReportCommand(CLI::App& app, CommandRun& run);
void AddMonitorCommand(CLI::App& app, CommandRun& run);
void AddServeCommand(CLI::App& app, CommandRun& run);
void AddSetCommand(CLI::App& app, CommandRun& run);
void AddProtocolCommand(CLI::App& app, CommandRun& run);
void AddDialogCommands(CLI::App& app, CommandRun& run);  // configure, connect, panel: on Windows
