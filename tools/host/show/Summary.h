#pragma once

#include <string>
#include <vector>

#include "judge/Statistics.h"
#include "model/ChannelInfo.h"
#include "model/Snapshot.h"

/// What an experiment was like, when it is over.
struct Summary {
    DeviceInfo device;
    double seconds = 0.0;  // how long it was watched
    std::vector<ChannelInfo> channels;
    Statistics statistics;  // of these channels
};

/// "summary of NAME (simulated): 2 h, 7200 rounds", and a table with a line a channel.
std::vector<std::string> FormatSummary(const Summary& summary);

/// The same for programs, as one line of JSON; null where there is no value.
std::string SummaryJson(const Summary& summary);
