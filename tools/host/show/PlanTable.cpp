#include "show/PlanTable.h"

#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "judge/ProtocolPlan.h"
#include "model/ChannelInfo.h"
#include "text/Columns.h"
#include "text/Duration.h"
#include "text/Number.h"

namespace {

using Json = nlohmann::ordered_json;

Json Optional(const std::optional<double>& value) { return value ? Json(*value) : Json(nullptr); }

}  // namespace

std::vector<std::string> FormatPlan(const ProtocolPlan& plan, const std::vector<ChannelInfo>& channels) {
    std::vector<std::vector<std::string>> rows{{"step", "at", "channel", "kind", "target", "unit", "hold"}};
    bool holds = false;
    for (std::size_t i = 0; i < plan.steps.size(); ++i) {
        const ProtocolPlan::Step& step = plan.steps[i];
        const ChannelInfo& channel = channels.at(step.channel);
        holds = holds || step.holdSeconds;
        rows.push_back({std::to_string(i + 1), FormatDuration(step.atSeconds), channel.key, KindName(channel.kind),
                        FormatFixed(step.value, 2), UnitOf(channel.kind),
                        step.holdSeconds ? FormatDuration(*step.holdSeconds) : "-"});
    }
    std::vector<std::string> lines = FormatColumns(
        rows, {Align::Right, Align::Left, Align::Left, Align::Left, Align::Right, Align::Left, Align::Left});
    lines.insert(lines.begin(), "protocol \"" + plan.name + "\": " + std::to_string(plan.steps.size()) +
                                    (plan.steps.size() == 1 ? " step, " : " steps, ") + (holds ? "at least " : "") +
                                    FormatDuration(plan.ShortestSeconds()));
    if (holds) {
        lines.push_back("the clock of \"at\" stands still while a step with a hold settles (in band for " +
                        FormatDuration(plan.settleSeconds) + ") and is held");
        lines.push_back(plan.withinSeconds
                            ? "what has not settled after " + FormatDuration(*plan.withinSeconds) + " ends the protocol"
                            : "what does not settle is waited for without end");
    }
    return lines;
}

std::string PlanJson(const ProtocolPlan& plan, const std::vector<ChannelInfo>& channels) {
    Json steps = Json::array();
    for (const ProtocolPlan::Step& step : plan.steps) {
        const ChannelInfo& channel = channels.at(step.channel);
        steps.push_back({{"atSeconds", step.atSeconds},
                         {"channel", channel.key},
                         {"value", step.value},
                         {"unit", UnitOf(channel.kind)},
                         {"holdSeconds", Optional(step.holdSeconds)}});
    }
    const Json json{{"name", plan.name},
                    {"fingerprint", plan.fingerprint},
                    {"settleSeconds", plan.settleSeconds},
                    {"withinSeconds", Optional(plan.withinSeconds)},
                    {"shortestSeconds", plan.ShortestSeconds()},
                    {"steps", steps}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}
