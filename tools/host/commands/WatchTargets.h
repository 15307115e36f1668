#pragma once

#include <string>
#include <vector>

#include "commands/WatchRun.h"
#include "device/TargetSetting.h"
#include "model/ChannelInfo.h"
#include "model/DeviceMessage.h"

/// What became of the targets that were asked for: the worst exit code, and a sentence for each that is worth one.
struct TargetsOutcome {
    int exitCode = 0;
    std::vector<std::string> sentences;
};

/// Sets the targets of the request, one after the other, and waits for each. Every name and value is checked before
/// anything is sent. With `strict` a target that the device changed is kExitClamped.
TargetsOutcome SetTargets(WatchRun& run, const std::vector<TargetSetting>& targets, bool strict);

/// Why SetTargetAndWait came back without an answer.
std::string DescribeUnanswered(const WatchRun& run, const std::string& channel);

/// "CO2: asked 99, the device took 60"; empty where it took what was asked, as far as it can show it.
std::string DescribeTaken(const ChannelInfo& channel, const device_message::TargetSet& set);
