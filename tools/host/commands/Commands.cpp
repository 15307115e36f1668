#include "commands/Commands.h"

#include <CLI/CLI.hpp>

#include "commands/CommandLine.h"

void AddCommands(CLI::App& app, CommandRun& run) {
    AddMonitorCommand(app, run);
    AddServeCommand(app, run);
    AddSetCommand(app, run);
    AddProtocolCommand(app, run);
    AddListCommand(app, run);
    AddReportCommand(app, run);
    AddDoctorCommand(app, run);
    AddCheckCommand(app, run);
    AddTraceCommand(app, run);
    AddDialogCommands(app, run);
}
