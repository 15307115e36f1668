#include "commands/AlarmActions.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "judge/Alarm.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Snapshot.h"
#include "show/OrNull.h"
#include "text/Time.h"

namespace {

using Json = nlohmann::ordered_json;

bool IsOn(const AlarmChange& change) { return change.event.kind == EventKind::AlarmOn; }

const char* Direction(const AlarmChange& change) { return IsOn(change) ? "on" : "off"; }

const char* KindText(const AlarmChange& change) {
    return change.status.kind == AlarmKind::OutOfBand ? "out of band" : "missing data";
}

}  // namespace

AlarmActions::AlarmActions(Options options, Start start, Sound sound)
    : m_options(std::move(options)), m_start(std::move(start)), m_sound(std::move(sound)) {}

std::optional<std::string> AlarmActions::Act(const std::vector<AlarmChange>& changes, const Snapshot& snapshot) {
    if (m_options.beep && std::ranges::any_of(changes, IsOn)) {
        m_sound();
    }
    std::optional<std::string> trouble;
    for (const AlarmChange& change : changes) {
        if (m_options.program.empty()) {
            break;
        }
        const std::string problem =
            m_start(m_options.program, {Direction(change), change.event.channel, KindText(change), change.event.text},
                    AlarmChangeJson(change, snapshot));
        if (!problem.empty() && !m_bFailed) {
            trouble = problem;
        }
        m_bFailed = !problem.empty();
    }
    return trouble;
}

std::string AlarmChangeJson(const AlarmChange& change, const Snapshot& snapshot) {
    const AlarmStatus& status = change.status;
    const bool isBand = status.kind == AlarmKind::OutOfBand;
    const auto& reading = snapshot.statuses.at(status.channel).reading;
    const Json json{{"alarm", Direction(change)},
                    {"channel", change.event.channel},
                    {"kind", KindText(change)},
                    {"reason", change.event.text},
                    {"time", FormatUtc(change.event.when.utcMs)},
                    {"timeMs", change.event.when.utcMs},
                    {"since", status.since ? Json(FormatUtc(status.since->utcMs)) : Json(nullptr)},
                    {"current", OrNull(reading.current)},
                    {"target", OrNull(reading.target)},
                    {"unit", UnitOf(snapshot.channels.at(status.channel).kind)},
                    {"low", isBand ? Json(status.low) : Json(nullptr)},
                    {"high", isBand ? Json(status.high) : Json(nullptr)},
                    {"device", snapshot.device.name},
                    {"simulated", snapshot.device.simulated},
                    {"port", OrNull(snapshot.device.port)}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}
