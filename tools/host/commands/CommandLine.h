#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "commands/WatchRequest.h"

/// What the commands' command lines share.

/// What the chosen command runs; its result is the exit code.
using CommandRun = std::function<int()>;

/// Takes a duration, "10s" or "1h30m", as seconds.
CLI::Option* AddDuration(CLI::App& command, const std::string& name, double& seconds, const std::string& what);

/// --device, --library, and for an incubator --port, --settings, --answer-within and --start-within.
void AddDeviceOptions(CLI::App& command, WatchRequest& request);

/// --library alone.
void AddLibraryOption(CLI::App& command, std::filesystem::path& library);

/// --every, --for, and what is done about alarms and the log: --alarm, --missing, --beep, --on-alarm, --csv, --append.
void AddWatchOptions(CLI::App& command, WatchRequest& request);

/// A path of the command line, which is UTF-8.
std::filesystem::path PathOf(const std::string& utf8);

/// Reads the command line (UTF-8, without the program's name) and runs the command; returns the program's exit code.
/// Errors are told on the standard error output.
int RunCommandLine(std::vector<std::string> arguments);
