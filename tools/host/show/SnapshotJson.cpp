#include "show/SnapshotJson.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "keep/History.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Reading.h"
#include "model/Snapshot.h"
#include "show/OrNull.h"
#include "text/Json.h"
#include "text/Time.h"

namespace {

using Json = nlohmann::ordered_json;

/// What a sensor does not have.
Json TargetJson(const ChannelInfo& channel, double value) { return channel.canSetTarget ? Json(value) : Json(nullptr); }

Json ChannelJson(const ChannelInfo& channel, const ChannelStatus& status) {
    return {{"key", channel.key},
            {"name", channel.name},
            {"kind", KindName(channel.kind)},
            {"number", channel.number},
            {"unit", UnitOf(channel.kind)},
            {"current", OrNull(status.reading.current)},
            {"target", OrNull(status.reading.target)},
            {"min", TargetJson(channel, channel.min)},
            {"max", TargetJson(channel, channel.max)},
            {"below", TargetJson(channel, channel.below)},
            {"above", TargetJson(channel, channel.above)},
            {"canSet", channel.canSetTarget},
            {"state", StateName(channel.kind, status.reading.state)},
            {"ageSeconds", OrNull(status.ageSeconds)},
            {"reads", status.reads},
            {"failedReads", status.failedReads},
            {"airMode", status.reading.airMode}};
}

Json AlarmJson(const AlarmStatus& alarm, const Snapshot& snapshot) {
    constexpr std::array kPhases{"unarmed", "watching", "pending", "on"};
    const bool isBand = alarm.kind == AlarmKind::OutOfBand;
    return {{"channel", snapshot.channels[alarm.channel].key},
            {"kind", isBand ? "out of band" : "missing data"},
            {"phase", kPhases[static_cast<std::size_t>(alarm.phase)]},
            {"low", isBand ? Json(alarm.low) : Json(nullptr)},
            {"high", isBand ? Json(alarm.high) : Json(nullptr)},
            {"since", alarm.since ? Json(FormatUtc(alarm.since->utcMs)) : Json(nullptr)},
            {"reason", alarm.reason}};
}

/// A name that is not UTF-8 must not make the whole reply unreadable.
std::string Text(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

void AppendColumn(std::string& json, const char* name, const std::vector<float>& values) {
    (json += ",\"") += name;
    json += "\":[";
    for (std::size_t i = 0; i < values.size(); ++i) {
        json += i == 0 ? "" : ",";
        AppendJson(json, values[i]);
    }
    json += ']';
}

bool HasState(const Snapshot& snapshot, ChannelState one, ChannelState other) {
    return std::ranges::any_of(snapshot.statuses, [&](const ChannelStatus& status) {
        return status.reading.state == one || status.reading.state == other;
    });
}

}  // namespace

std::string SnapshotJson(const Snapshot& snapshot, bool allowSet) {
    Json json{{"time", FormatUtc(snapshot.when.utcMs)},
              {"timeMs", snapshot.when.utcMs},
              {"row", snapshot.row},
              {"device", snapshot.device.name},
              {"simulated", snapshot.device.simulated},
              {"port", OrNull(snapshot.device.port)},
              {"live", snapshot.live},
              {"reason", snapshot.reason},
              {"interval", snapshot.intervalSeconds},
              {"allowSet", allowSet},
              {"worst", WorstState(snapshot)},
              {"channels", Json::array()},
              {"alarms", Json::array()}};
    for (std::size_t i = 0; i < snapshot.channels.size(); ++i) {
        json["channels"].push_back(ChannelJson(snapshot.channels[i], snapshot.statuses[i]));
    }
    for (const AlarmStatus& alarm : snapshot.alarms) {
        json["alarms"].push_back(AlarmJson(alarm, snapshot));
    }
    return Text(json);
}

std::string EventJson(const Event& event) {
    return Text({{"id", event.id},
                 {"time", FormatUtc(event.when.utcMs)},
                 {"timeMs", event.when.utcMs},
                 {"kind", EventKindName(event.kind)},
                 {"channel", event.channel},
                 {"text", event.text}});
}

std::string EventsJson(const std::vector<Event>& events) {
    std::string json = "{\"events\":[";
    for (const Event& event : events) {
        json += json.back() == '[' ? "" : ",";
        json += EventJson(event);
    }
    return json + "]}";
}

std::string HistoryJson(const HistoryTable& table, const Snapshot& snapshot, std::int64_t sinceMs,
                        std::int64_t untilMs) {
    std::string json = "{\"since\":" + std::to_string(sinceMs) + ",\"until\":" + std::to_string(untilMs);
    AppendJson(json += ",\"interval\":", snapshot.intervalSeconds);
    json += ",\"time\":[";
    for (std::size_t i = 0; i < table.utcMs.size(); ++i) {
        (json += i == 0 ? "" : ",") += std::to_string(table.utcMs[i]);
    }
    json += "],\"channels\":[";
    for (std::size_t i = 0; i < table.channels.size(); ++i) {
        (json += i == 0 ? "{\"key\":" : ",{\"key\":") += JsonQuoted(snapshot.channels[i].key);
        AppendColumn(json, "current", table.channels[i].current);
        AppendColumn(json, "target", table.channels[i].target);
        json += '}';
    }
    return json + "]}";
}

const char* WorstState(const Snapshot& snapshot) {
    if (!snapshot.live) {
        return "stale";
    }
    if (HasState(snapshot, ChannelState::NoValue, ChannelState::NoAnswer)) {
        return "no answer";
    }
    if (std::ranges::count(snapshot.alarms, AlarmPhase::On, &AlarmStatus::phase) > 0) {
        return "alarm";
    }
    return HasState(snapshot, ChannelState::Below, ChannelState::Above) ? "out of band" : "ok";
}
