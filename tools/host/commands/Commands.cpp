#include "commands/Commands.h"

#include "commands/Command.h"

void AddCommands(Command& program) {
    AddMonitorCommand(program);
    AddServeCommand(program);
    AddSetCommand(program);
    AddProtocolCommand(program);
    AddListCommand(program);
    AddReportCommand(program);
    AddDoctorCommand(program);
    AddCheckCommand(program);
    AddTraceCommand(program);
    AddDialogCommands(program);
}
