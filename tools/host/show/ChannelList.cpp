#include "show/ChannelList.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/Snapshot.h"
#include "show/DeviceTable.h"
#include "text/Columns.h"
#include "text/Number.h"

namespace {

using Json = nlohmann::ordered_json;

/// What a sensor does not have.
std::string OfTarget(const ChannelInfo& channel, double value) {
    return channel.canSetTarget ? FormatShortest(value) : "-";
}

std::vector<std::string> RowOf(const ChannelInfo& channel) {
    return {std::to_string(channel.number),
            channel.key,
            channel.name,
            KindName(channel.kind),
            UnitOf(channel.kind),
            OfTarget(channel, channel.min),
            OfTarget(channel, channel.max),
            OfTarget(channel, channel.below),
            OfTarget(channel, channel.above),
            channel.canSetTarget ? "yes" : "no, a sensor"};
}

Json JsonOf(const ChannelInfo& channel) {
    const auto ofTarget = [&](double value) { return channel.canSetTarget ? Json(value) : Json(nullptr); };
    return {{"number", channel.number},
            {"key", channel.key},
            {"name", channel.name},
            {"kind", KindName(channel.kind)},
            {"unit", UnitOf(channel.kind)},
            {"min", ofTarget(channel.min)},
            {"max", ofTarget(channel.max)},
            {"below", ofTarget(channel.below)},
            {"above", ofTarget(channel.above)},
            {"canSet", channel.canSetTarget}};
}

}  // namespace

std::vector<std::string> ChannelList(const DeviceInfo& device, const std::vector<ChannelInfo>& channels) {
    using enum Align;
    std::vector<std::vector<std::string>> cells{
        {"#", "key", "name", "kind", "unit", "min", "max", "below", "above", "can be set"}};
    for (const ChannelInfo& channel : channels) {
        cells.push_back(RowOf(channel));
    }
    std::vector<std::string> lines{DeviceTitle(device) + ": " + std::to_string(channels.size()) + " channels"};
    for (std::string& line : FormatColumns(cells, {Left, Left, Left, Left, Left, Right, Right, Right, Right, Left})) {
        lines.push_back(std::move(line));
    }
    return lines;
}

std::string ChannelListJson(const DeviceInfo& device, const std::vector<ChannelInfo>& channels) {
    Json json{{"device", device.name},
              {"simulated", device.simulated},
              {"port", device.port ? Json(*device.port) : Json(nullptr)},
              {"channels", Json::array()}};
    for (const ChannelInfo& channel : channels) {
        json["channels"].push_back(JsonOf(channel));
    }
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}
