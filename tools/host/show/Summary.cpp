#include "show/Summary.h"

#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "judge/Statistics.h"
#include "model/ChannelInfo.h"
#include "model/Snapshot.h"
#include "text/Columns.h"
#include "text/Duration.h"
#include "text/Number.h"

namespace {

using Json = nlohmann::ordered_json;

/// In percent. What is not all is not shown as all, and what is not nothing not as nothing.
std::string FormatShare(const std::optional<double>& share) {
    if (!share) {
        return "-";
    }
    const double tenths = *share * 1000.0;
    if (tenths > 0.0 && tenths < 0.5) {
        return "<0.1 %";
    }
    return FormatFixed((tenths < 1000.0 && tenths > 999.0 ? 999.0 : tenths) / 10.0, 1) + " %";
}

std::vector<std::string> Row(const ChannelInfo& channel, const ChannelStatistics& statistics) {
    const auto value = [&](double number) { return statistics.Values() > 0 ? FormatFixed(number, 2) : "-"; };
    return {channel.key,
            KindName(channel.kind),
            value(statistics.min),
            value(statistics.mean),
            value(statistics.max),
            UnitOf(channel.kind),
            FormatShare(statistics.ShareInBand()),
            std::to_string(statistics.reads),
            std::to_string(statistics.failedReads)};
}

Json ChannelJson(const ChannelInfo& channel, const ChannelStatistics& statistics) {
    const auto value = [&](double number) { return statistics.Values() > 0 ? Json(number) : Json(nullptr); };
    const auto share = statistics.ShareInBand();
    return {{"key", channel.key},
            {"name", channel.name},
            {"kind", KindName(channel.kind)},
            {"unit", UnitOf(channel.kind)},
            {"min", value(statistics.min)},
            {"mean", value(statistics.mean)},
            {"max", value(statistics.max)},
            {"shareInBand", share ? Json(*share) : Json(nullptr)},
            {"judgedSeconds", statistics.judgedSeconds},
            {"reads", statistics.reads},
            {"failedReads", statistics.failedReads},
            {"moved", statistics.moved}};
}

}  // namespace

std::vector<std::string> FormatSummary(const Summary& summary) {
    std::vector<std::vector<std::string>> rows{
        {"channel", "kind", "min", "mean", "max", "unit", "in band", "reads", "failed"}};
    for (std::size_t i = 0; i < summary.channels.size(); ++i) {
        rows.push_back(Row(summary.channels[i], summary.statistics.Channels().at(i)));
    }
    constexpr Align kLeft = Align::Left;
    constexpr Align kRight = Align::Right;
    std::vector<std::string> lines =
        FormatColumns(rows, {kLeft, kLeft, kRight, kRight, kRight, kLeft, kRight, kRight, kRight});
    const std::string simulated = summary.device.simulated ? " (simulated)" : "";
    const double seconds = summary.seconds < 10.0 ? summary.seconds : std::round(summary.seconds);
    lines.insert(lines.begin(), "summary of " + summary.device.name + simulated + ": " + FormatDuration(seconds) +
                                    ", " + std::to_string(summary.statistics.Rounds()) + " rounds, " +
                                    std::to_string(summary.statistics.Moved()) + " of " +
                                    std::to_string(summary.channels.size()) + " values moved");
    return lines;
}

std::string SummaryJson(const Summary& summary) {
    Json channels = Json::array();
    for (std::size_t i = 0; i < summary.channels.size(); ++i) {
        channels.push_back(ChannelJson(summary.channels[i], summary.statistics.Channels().at(i)));
    }
    const Json json{{"device", summary.device.name},
                    {"simulated", summary.device.simulated},
                    {"port", summary.device.port ? Json(*summary.device.port) : Json(nullptr)},
                    {"seconds", summary.seconds},
                    {"rounds", summary.statistics.Rounds()},
                    {"moved", summary.statistics.Moved()},
                    {"channels", channels}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}
