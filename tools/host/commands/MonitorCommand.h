#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "device/TargetSetting.h"

/// What `oko-host monitor` was asked for.
struct MonitorOptions {
    std::filesystem::path library;
    std::string device = "simulator";  // or "incubator"
    std::optional<double> seconds;     // nothing: until Ctrl+C
    double intervalSeconds = 0.5;
    std::vector<TargetSetting> targets;
    std::optional<int> port;
};

/// Shows a device's channels until the time is over. Throws LibraryError.
int RunMonitor(const MonitorOptions& options);
