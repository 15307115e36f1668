#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/ChannelInfo.h"
#include "text/Parsed.h"

/// Set points over time, as a JSON file tells them:
///
///     {"name": "Hypoxia",
///      "settle": "1m",       a channel has settled when it was in its band for that long; 1m when left out
///      "within": "2h",       a channel that has not settled by then ends the protocol; left out: waits on
///      "steps": [{"at": "0s",    "channel": "H301-T", "value": 37},
///                {"at": "0s",    "channel": "O2",     "value": 5, "hold": "30m"},
///                {"at": "1h30m", "channel": "O2",     "value": 1}]}
///
/// `at` is a time of the protocol's own clock, which begins at 0. Steps of one time are set together. While a step with
/// `hold` settles, and for that long after it has settled, the clock stands still: all later times shift by themselves.
/// So O2 goes to 1 % here one hour and a half after it has settled at 5 % and was held there for half an hour.
struct ProtocolText {
    struct Step {
        double atSeconds = 0.0;
        std::string channel;
        double value = 0.0;
        std::optional<double> holdSeconds;
    };

    std::string name = "protocol";
    double settleSeconds = 60.0;
    std::optional<double> withinSeconds;
    std::vector<Step> steps;
    std::string fingerprint;  // of all the file says; blanks and the order of members do not count
};

/// The error names every mistake, a line each. Mistakes that only a device can show are left to ResolveProtocol.
Parsed<ProtocolText> ParseProtocol(std::string_view text);

/// The same for the channels of a device.
struct ProtocolPlan {
    struct Step {
        double atSeconds = 0.0;
        std::size_t channel = 0;
        double value = 0.0;
        std::optional<double> holdSeconds;
    };

    std::string name;
    double settleSeconds = 60.0;
    std::optional<double> withinSeconds;
    std::vector<Step> steps;
    std::string fingerprint;

    /// How long it takes at least: channels that settle at once.
    double ShortestSeconds() const;
};

/// Refuses unknown channels, sensors, values beyond a channel's limits, and to hold what has no tolerances. The error
/// names every mistake, a line each.
Parsed<ProtocolPlan> ResolveProtocol(const ProtocolText& text, const std::vector<ChannelInfo>& channels);
