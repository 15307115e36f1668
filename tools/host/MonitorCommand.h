#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// What `oko-host monitor` was asked for.
struct MonitorOptions {
    std::filesystem::path library;
    std::string device = "simulator";  // or "incubator"
    unsigned durationMs = 0;           // 0: until Ctrl+C
    unsigned intervalMs = 500;
    std::vector<std::string> targets;  // "name=value"
    std::optional<int> port;
};

/// Shows a device's channels until the time is over. Throws LibraryError.
int RunMonitor(const MonitorOptions& options);
