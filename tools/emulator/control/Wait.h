#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "faults/Pattern.h"
#include "server/EmulatedServer.h"

namespace emulator {

/// What somebody waits for.
class Wait {
 public:
    /// Reads "time 120", "commands 5", "command PATTERN", "value 9 0 36.9 37.1" or "fault 2". `commands` have come so
    /// far. Throws ControlError.
    Wait(std::string_view until, std::int64_t commands);

    /// A command came.
    void Meet(std::string_view command);

    /// Whether it is so, now that `commands` have come.
    bool IsSo(EmulatedServer& server, std::int64_t commands, double now) const;

 private:
    enum class Kind { Time, Commands, Command, Value, Fault };
    Kind m_kind = Kind::Time;
    double m_time = 0.0;          // of the incubator, in seconds
    std::int64_t m_commands = 0;  // that must have come
    std::optional<Pattern> m_pattern;
    bool m_met = false;
    int m_product = 0;
    int m_device = 0;
    double m_low = 0.0;
    double m_high = 0.0;
    int m_fault = 0;
};

}  // namespace emulator
