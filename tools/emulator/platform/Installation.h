#pragma once

#include <filesystem>
#include <string>

namespace emulator {

/// Makes the emulator look like an installed server, and undoes it.

/// Whether this system has a list of installed programs that clients look into.
bool CanInstall();

/// Copies this program into `folder` under the name "OKO-Control Emulator.exe", with the options that it is to have
/// when somebody starts it there, and enters it in the machine's list of installed programs under `displayName`, plain
/// ASCII. Throws std::runtime_error or std::filesystem::filesystem_error.
void Install(const std::filesystem::path& folder, const std::string& displayName, const std::string& options);

/// Removes the entry, and what Install put into the folder. Harmless when there is nothing.
void Uninstall();

/// Where the options of this copy of the program stand; empty where none can.
std::filesystem::path OptionsFile();

}  // namespace emulator
