#include <cmath>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "judge/ProtocolPlan.h"
#include "judge/ProtocolRun.h"
#include "text/Parsed.h"
#include "text/Words.h"

namespace {

using Json = nlohmann::ordered_json;

bool IsTime(double seconds) { return std::isfinite(seconds) && seconds >= 0.0; }

/// Throws nlohmann's exceptions for members that are missing or of another type.
ProtocolProgress Read(const Json& json) {
    ProtocolProgress progress;
    progress.fingerprint = json.at("fingerprint").get<std::string>();
    progress.device = json.at("device").get<std::string>();
    progress.savedMs = json.at("savedMs").get<std::int64_t>();
    progress.clockSeconds = json.at("clockSeconds").get<double>();
    progress.begun = json.at("stepsBegun").get<std::size_t>();
    progress.done = json.at("done").get<bool>();
    for (const Json& hold : json.at("holds")) {
        const Json& held = hold.at("heldSeconds");
        progress.holds.push_back({hold.at("step").get<std::size_t>() - 1,
                                  held.is_null() ? std::nullopt : std::optional(held.get<double>())});
    }
    return progress;
}

/// A file that something else wrote must not send the run beyond the plan.
bool FitsPlan(const ProtocolProgress& progress, const ProtocolPlan& plan) {
    if (progress.begun > plan.steps.size() || !IsTime(progress.clockSeconds)) {
        return false;
    }
    std::set<std::size_t> seen;
    for (const ProtocolProgress::Hold& hold : progress.holds) {
        if (hold.step >= progress.begun || !plan.steps[hold.step].holdSeconds || !seen.insert(hold.step).second ||
            !IsTime(hold.heldSeconds.value_or(0.0))) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string ProgressJson(const ProtocolProgress& progress) {
    Json holds = Json::array();
    for (const ProtocolProgress::Hold& hold : progress.holds) {
        holds.push_back(
            {{"step", hold.step + 1}, {"heldSeconds", hold.heldSeconds ? Json(*hold.heldSeconds) : Json(nullptr)}});
    }
    const Json json{{"fingerprint", progress.fingerprint},
                    {"device", progress.device},
                    {"savedMs", progress.savedMs},
                    {"clockSeconds", progress.clockSeconds},
                    {"stepsBegun", progress.begun},
                    {"done", progress.done},
                    {"holds", holds}};
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

Parsed<ProtocolProgress> ParseProgress(std::string_view text, const ProtocolPlan& plan, const std::string& device) {
    ProtocolProgress progress;
    try {
        progress = Read(Json::parse(text));
    } catch (const Json::exception&) {
        return Parsed<ProtocolProgress>::Error("the progress cannot be read: delete its file to begin anew");
    }
    if (progress.fingerprint != plan.fingerprint) {
        return Parsed<ProtocolProgress>::Error(
            "the protocol was changed since it was begun: put it back as it was, or delete its progress to begin anew");
    }
    if (progress.device != device) {
        return Parsed<ProtocolProgress>::Error("the protocol was begun on " + InQuotes(progress.device) +
                                               ": go on there, or delete its progress to begin anew");
    }
    if (!FitsPlan(progress, plan)) {
        return Parsed<ProtocolProgress>::Error("the progress does not fit the protocol: delete its file to begin anew");
    }
    if (progress.done) {
        return Parsed<ProtocolProgress>::Error("the protocol is over: delete its progress to begin anew");
    }
    return Parsed<ProtocolProgress>::Of(progress);
}

bool IsOverProgress(std::string_view text) {
    const Json json = Json::parse(text, nullptr, false);
    const auto done = json.is_object() ? json.find("done") : json.end();
    return done != json.end() && done->is_boolean() && done->get<bool>();
}
