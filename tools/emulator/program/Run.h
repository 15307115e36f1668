#pragma once

#include "program/Options.h"

namespace emulator {

enum ExitCode { kExitDone = 0, kExitBadInput = 1, kExitPortInUse = 2, kExitDifferences = 3 };

/// Answers commands from a scenario until the program is to end. Throws PortError, and what is wrong with the scenario,
/// the rules or the files.
void RunScenario(const Options& options);

/// The same from a record.
void RunReplay(const Options& options);

/// Stands between clients and a real server until the program is to end. Throws the same, AddressError, and
/// std::runtime_error where the server that it is to start cannot be started.
void RunProxy(const Options& options);

/// Throws FaultError when the options' rules are wrong, or none for a real server.
void CheckProxyFaults(const Options& options);

/// Holds the port until an emulator starts, or the program is to end. Throws PortError.
void RunPlaceholder(const Options& options);

/// Sends a record's commands to another server and shows the differences. Gives the exit code.
int RunCheck(const Options& options);

/// Shows a record.
void RunShow(const Options& options);

/// Throws what is wrong with the scenario, the rules or the transcript: before an installed copy meets it, and nobody
/// is there to read it.
void CheckInput(const Options& options);

}  // namespace emulator
