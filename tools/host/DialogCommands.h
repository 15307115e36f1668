#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// What `oko-host configure`, `connect` and `panel` were asked for.
struct DialogOptions {
    std::filesystem::path library;
    std::string device = "simulator";  // or "incubator"
    std::filesystem::path settings = "oko-host.ini";
};

/// Opens the configuration dialog of an initialised device; prints whether the alarm settings changed.
int RunConfigure(const DialogOptions& options);

/// Opens the connection dialog of a device; prints whether the connection settings changed.
int RunConnect(const DialogOptions& options);

/// Shows the value panel in a window until that is closed.
int RunPanel(const DialogOptions& options);
