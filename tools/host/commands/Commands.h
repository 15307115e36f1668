#pragma once

#include "commands/Command.h"

/// Every command adds itself to the program, with what it runs when it is chosen.

void AddCommands(Command& program);

void AddDoctorCommand(Command& program);
void AddListCommand(Command& program);
void AddCheckCommand(Command& program);
void AddTraceCommand(Command& program);
void AddReportCommand(Command& program);
void AddMonitorCommand(Command& program);
void AddServeCommand(Command& program);
void AddSetCommand(Command& program);
void AddProtocolCommand(Command& program);
void AddDialogCommands(Command& program);  // configure, connect, panel: on Windows
