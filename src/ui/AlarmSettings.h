#pragma once

#include <string_view>

#include "base/Text.h"
#include "oko/Settings.h"

/// How far a value may stray from its target before the incubator raises an alarm, in the channel's unit.
struct Tolerance {
    double below;
    double above;
};

/// What the alarm settings text holds, and the defaults of what it lacks.
struct AlarmSettings {
    Tolerance incubator{0.2, 0.2};  // degrees Celsius
    Tolerance co2{0.5, 0.5};        // percent
    Tolerance o2{0.5, 0.5};         // percent
    Tolerance humidity{1.0, 1.0};   // percent; kept: docs/oddities.md#two-sets-of-defaults
};

/// The text with eight of the longest numbers that there are.
using AlarmSettingsText = BoundedText<wchar_t, oko::kConfigurationTextLength>;

/// Reads "dIncubatorBelow 0.2 | dIncubatorAbove 0.2 | ..." as formatted scanning does: from the first mismatch on
/// everything keeps its default. A number that is not finite is a mismatch.
AlarmSettings ParseAlarmSettings(std::wstring_view text) noexcept;

/// Writes the text, each number with six decimals.
AlarmSettingsText FormatAlarmSettings(const AlarmSettings& settings) noexcept;
