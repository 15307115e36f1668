#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "judge/Band.h"
#include "model/ChannelInfo.h"
#include "text/Parsed.h"

/// When a channel's value is to raise an alarm, as people write it:
///
///     CO2: 4.5..5.5 for 2m            outside of that for two minutes
///     CO2 for 2m                      outside of its tolerances, wherever its target is
///     gas:CO2: 4.5..5.5               at once; a kind or a key tells equal names apart
///     all for 5m                      every channel that has tolerances and no alarm of its own
///     CO2 hysteresis 0.1 within 1h    off only when inside by 0.1; on after an hour even if it never settled
struct AlarmText {
    std::string channel;        // "all", or what FindChannel understands
    std::optional<Band> band;   // none: the tolerances around the target
    double delaySeconds = 0.0;  // how long it must be outside
    std::optional<double> hysteresis;
    std::optional<double> withinSeconds;

    bool ForAll() const { return channel == "all"; }
};

Parsed<AlarmText> ParseAlarm(std::string_view text);

/// The same for one channel of a device.
struct AlarmRule {
    std::size_t channel = 0;
    std::optional<Band> band;
    double delaySeconds = 0.0;
    std::optional<double> hysteresis;     // in the channel's unit; none: a twentieth of the band's width
    std::optional<double> withinSeconds;  // armed this long after the start or a new target, settled or not
};

/// One rule at most for a channel, in the channels' order. The error names every text that cannot be, a line each.
Parsed<std::vector<AlarmRule>> ResolveAlarms(const std::vector<AlarmText>& texts,
                                             const std::vector<ChannelInfo>& channels);
