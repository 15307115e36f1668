#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "commands/Command.h"
#include "commands/WatchRequest.h"

/// What the commands' command lines share.

/// Takes a duration, "10s" or "1h30m", as seconds.
CommandOption AddDuration(Command& command, const std::string& name, double& seconds, const std::string& what);

/// --device, --library, and for an incubator --port, --settings, --answer-within and --start-within.
void AddDeviceOptions(Command& command, WatchRequest& request);

/// --rows: after how many rows the watch ends, a whole number from 1 on.
void AddRowsOption(Command& command, WatchRequest& request, const std::string& what);

/// --library alone.
void AddLibraryOption(Command& command, std::filesystem::path& library);

/// --every, --for, --rows, and what is done about alarms and the log: --alarm, --missing, --beep, --on-alarm, --csv,
/// --append.
void AddWatchOptions(Command& command, WatchRequest& request);

/// A path of the command line, which is UTF-8.
std::filesystem::path PathOf(const std::string& utf8);

/// Reads the command line (UTF-8, without the program's name) and runs the command; returns the program's exit code.
/// Errors are told on the standard error output.
int RunCommandLine(std::vector<std::string> arguments);
