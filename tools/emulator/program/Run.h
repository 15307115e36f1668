#pragma once

#include "program/Options.h"

namespace emulator {

enum ExitCode { kExitDone = 0, kExitBadInput = 1, kExitPortInUse = 2 };

/// Answers commands, from a scenario or a record, until the program is to end. Throws PortError, and what is wrong with
/// the scenario, the rules or the files.
void RunServer(const Options& options);

/// Holds the port until an emulator starts, or the program is to end. Throws PortError.
void RunPlaceholder(const Options& options);

/// Throws what is wrong with the scenario, the rules or the transcript: before an installed copy meets it, and nobody
/// is there to read it.
void CheckInput(const Options& options);

}  // namespace emulator
