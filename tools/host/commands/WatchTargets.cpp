#include "commands/WatchTargets.h"

#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ExitCode.h"
#include "commands/WatchRun.h"
#include "device/TargetSetting.h"
#include "model/ChannelInfo.h"
#include "model/DeviceMessage.h"
#include "model/FindChannel.h"
#include "text/Number.h"

namespace {

/// Humidity is sent in whole percent, temperature with one decimal and gas with two: as far as a target can be shown.
double RoundingOf(ChannelKind kind) {
    switch (kind) {
        case ChannelKind::Temperature:
            return 0.05;
        case ChannelKind::Gas:
            return 0.005;
        case ChannelKind::Humidity:
            break;
    }
    return 0.5;
}

}  // namespace

std::string DescribeTaken(const ChannelInfo& channel, const device_message::TargetSet& set) {
    constexpr double kSlack = 1e-9;  // of the binary fractions
    if (!set.accepted) {
        return "the target of " + channel.key + " could not be set: the device refused it or did not answer";
    }
    if (!set.taken) {
        return channel.key + ": asked " + FormatShortest(set.asked) + ", and the device does not say what it took";
    }
    if (std::abs(*set.taken - set.asked) <= RoundingOf(channel.kind) + kSlack) {
        return {};
    }
    return channel.key + ": asked " + FormatShortest(set.asked) + ", the device took " + FormatShortest(*set.taken);
}

std::string DescribeUnanswered(const WatchRun& run, const std::string& channel) {
    return run.IsSilent() ? "the device did not answer when the target of " + channel + " was set"
                          : "ended before the device had taken the target of " + channel;
}

TargetsOutcome SetTargets(WatchRun& run, const std::vector<TargetSetting>& targets, bool strict) {
    TargetsOutcome outcome;
    std::vector<std::size_t> indexes;
    for (const TargetSetting& target : targets) {
        const auto found = FindChannelWithTarget(run.Now().channels, target.channel);
        if (!found) {
            outcome.sentences.push_back(found.error);
            outcome.exitCode = kExitBadTarget;
        } else {
            indexes.push_back(*found);
        }
    }
    for (std::size_t i = 0; i < targets.size() && outcome.exitCode != kExitBadTarget; ++i) {
        const auto result = run.SetTargetAndWait(indexes[i], targets[i].value);
        if (!result) {
            outcome.exitCode = kExitNoAnswer;
            outcome.sentences.push_back(DescribeUnanswered(run, targets[i].channel));
            return outcome;
        }
        const std::string sentence = DescribeTaken(run.Now().channels[indexes[i]], *result);
        if (!sentence.empty()) {
            outcome.sentences.push_back(sentence);
            outcome.exitCode = !result->accepted ? kExitBadTarget : strict ? kExitClamped : outcome.exitCode;
        }
    }
    return outcome;
}
