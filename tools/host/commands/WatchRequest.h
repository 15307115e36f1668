#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "device/DeviceThread.h"
#include "device/TargetSetting.h"
#include "judge/AlarmRule.h"

/// What every command that watches a device was asked for.
struct WatchRequest {
    DeviceRequest device;
    std::string settingsFile = "oko-host.ini";
    std::optional<int> port;             // --port; else the settings tell it
    double answerWithinSeconds = 0.0;    // 0: the library's ReplyTimeout where it is set, else 10
    double startWithinSeconds = 60.0;    // for Init, which asks a server some eighty times and may have to start it
    std::optional<double> seconds;       // --for; none: until Ctrl+C
    std::optional<std::uint64_t> rows;   // --rows; none: as many as there are
    std::vector<TargetSetting> targets;  // set first
    bool strict = false;                 // a clamped target is a failure
    std::vector<AlarmText> alarms;
    double missingWithinSeconds = 0.0;  // --missing: a channel without a value for so long is an alarm; 0: 30 s
    bool beep = false;
    std::filesystem::path onAlarm;  // empty: no program is started
    std::filesystem::path csv;      // empty: no log
    bool append = false;
};
