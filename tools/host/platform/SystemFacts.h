#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "model/SystemFacts.h"

/// What this computer tells. All of it only looks; asking the server sends it that one command.

Fact<std::string> FileVersion(const std::filesystem::path& file);

/// Searches the list of installed programs as the library does.
Fact<ServerInstallation> FindServerInstallation();

Fact<std::vector<RunningProgram>> RunningServers();

Fact<PortHolder> HolderOfServerPort();

/// Sends one command to the server's port of this computer and waits that long for the reply.
Fact<ServerAnswer> AskServer(const std::string& command, double withinSeconds);

/// The numbers of the COM ports that the library would offer.
Fact<std::vector<int>> SerialPorts();

Fact<LibrarySwitches> ReadLibrarySwitches();
