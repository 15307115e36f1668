#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "judge/Alarm.h"
#include "model/Snapshot.h"
#include "platform/Beep.h"
#include "platform/StartProgram.h"

/// What is done when alarms come and go: a sound when one comes, and for each that comes or goes a program that is
/// started as
///
///     PROGRAM on|off CHANNEL KIND REASON
///
/// with KIND "out of band" or "missing data", and one line of JSON on its standard input.
class AlarmActions {
 public:
    struct Options {
        bool beep = false;
        std::filesystem::path program;  // empty: none
    };
    using Start =
        std::function<std::string(const std::filesystem::path&, const std::vector<std::string>&, std::string_view)>;
    using Sound = std::function<void()>;

    explicit AlarmActions(Options options, Start start = StartProgram, Sound sound = SoundWarning);

    /// Takes the changes of one round. Gives the text of a trouble event when the program cannot be started; once,
    /// until it could be again.
    std::optional<std::string> Act(const std::vector<AlarmChange>& changes, const Snapshot& snapshot);

 private:
    Options m_options;
    Start m_start;
    Sound m_sound;
    bool m_bFailed = false;
};

/// What the program reads:
/// {"alarm":"on","channel":KEY,"kind":..,"reason":..,"time":..,"timeMs":..,"since":..,"current":..,"target":..,
///  "unit":..,"low":..,"high":..,"device":..,"simulated":..,"port":..}
std::string AlarmChangeJson(const AlarmChange& change, const Snapshot& snapshot);
