#include "judge/ProtocolPlan.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "judge/Band.h"
#include "judge/Describe.h"
#include "model/ChannelInfo.h"
#include "model/FindChannel.h"
#include "text/Duration.h"
#include "text/Number.h"
#include "text/Parsed.h"
#include "text/Words.h"

namespace {

using SortedJson = nlohmann::json;

using Names = std::vector<std::string>;

const Names& PlanMembers() {
    static const Names kNames{"name", "settle", "within", "steps"};
    return kNames;
}

const Names& StepMembers() {
    static const Names kNames{"at", "channel", "value", "hold"};
    return kNames;
}

/// The mistakes so far. A path is "" for the file and "step 3" for a step, as people count.
class Mistakes {
 public:
    void Add(const std::string& path, const std::string& sentence) {
        m_lines += (m_lines.empty() ? "" : "\n") + path + (path.empty() ? "" : ": ") + sentence;
    }
    const std::string& Lines() const { return m_lines; }

 private:
    std::string m_lines;
};

std::string StepPath(std::size_t index) { return "step " + std::to_string(index + 1); }

std::string Show(const SortedJson& value) { return value.dump(-1, ' ', false, SortedJson::error_handler_t::replace); }

/// Watches a file being read: for members that stand twice, of which the last would be taken silently, and for nesting
/// that no protocol has and that would take all the stack to write out again.
class PlanReader {
 public:
    bool operator()(int depth, SortedJson::parse_event_t event, const SortedJson& parsed) {
        constexpr int kDeepest = 16;
        if (depth > kDeepest) {
            m_bTooDeep = true;
            return false;
        }
        if (event == SortedJson::parse_event_t::object_start) {
            m_open.emplace_back();
        } else if (event == SortedJson::parse_event_t::object_end) {
            m_open.pop_back();
        } else if (event == SortedJson::parse_event_t::key && !m_open.back().insert(parsed.get<std::string>()).second) {
            m_twice.insert(parsed.get<std::string>());
        }
        return true;
    }
    const std::set<std::string>& Twice() const { return m_twice; }
    bool IsTooDeep() const { return m_bTooDeep; }

 private:
    std::vector<std::set<std::string>> m_open;
    std::set<std::string> m_twice;
    bool m_bTooDeep = false;
};

void RefuseUnknownMembers(const SortedJson& object, const Names& known, const std::string& path, Mistakes& mistakes) {
    for (const auto& [name, value] : object.items()) {
        if (std::ranges::find(known, name) == known.end()) {
            mistakes.Add(path, "unknown member " + InQuotes(name) + ": write " + JoinWords(known, "or"));
        }
    }
}

/// A duration as a text, "1h30m", or as a number of seconds. Nothing when it is left out or cannot be read.
std::optional<double> TakeDuration(const SortedJson& object, const char* name, const std::string& path,
                                   Mistakes& mistakes) {
    const auto member = object.find(name);
    if (member == object.end()) {
        return std::nullopt;
    }
    const std::string text = member->is_string() ? member->get<std::string>() : Show(*member);
    const auto seconds = ParseDuration(text);
    if (!seconds) {
        mistakes.Add(path, InQuotes(name) + ": " + seconds.error);
    }
    return seconds.value;
}

double TakeValue(const SortedJson& step, const std::string& path, Mistakes& mistakes) {
    const auto member = step.find("value");
    if (member == step.end()) {
        mistakes.Add(path, "\"value\" is missing");
        return 0.0;
    }
    if (member->is_number()) {
        return member->get<double>();
    }
    const std::string text = member->is_string() ? member->get<std::string>() : Show(*member);
    const auto meant = ParseNumber(member->is_string() ? WithPoints(text) : "");
    mistakes.Add(path, "\"value\": " + Show(*member) + " is not a number: write " +
                           (meant ? FormatShortest(*meant) + ", without quotes" : "one such as 38.5"));
    return 0.0;
}

std::string TakeText(const SortedJson& object, const char* name, const std::string& path, Mistakes& mistakes) {
    const auto member = object.find(name);
    if (member != object.end() && member->is_string() && !member->get<std::string>().empty()) {
        return member->get<std::string>();
    }
    mistakes.Add(path, InQuotes(name) + (member == object.end() ? " is missing" : ": write a text"));
    return {};
}

ProtocolText::Step TakeStep(const SortedJson& json, const std::string& path, Mistakes& mistakes) {
    ProtocolText::Step step;
    if (!json.is_object()) {
        mistakes.Add(path, "is not an object: write {\"at\": \"0s\", \"channel\": \"CO2\", \"value\": 5}");
        return step;
    }
    RefuseUnknownMembers(json, StepMembers(), path, mistakes);
    if (!json.contains("at")) {
        mistakes.Add(path, "\"at\" is missing");
    }
    step.atSeconds = TakeDuration(json, "at", path, mistakes).value_or(-1.0);
    step.channel = TakeText(json, "channel", path, mistakes);
    step.value = TakeValue(json, path, mistakes);
    step.holdSeconds = TakeDuration(json, "hold", path, mistakes);
    return step;
}

void TakeSteps(ProtocolText& plan, const SortedJson& json, Mistakes& mistakes) {
    const auto steps = json.find("steps");
    if (steps == json.end() || !steps->is_array() || steps->empty()) {
        mistakes.Add("", "\"steps\" is missing: write a list of at least one step");
        return;
    }
    double latest = 0.0;
    for (std::size_t i = 0; i < steps->size(); ++i) {
        plan.steps.push_back(TakeStep((*steps)[i], StepPath(i), mistakes));
        const double at = plan.steps.back().atSeconds;
        if (at >= 0.0 && at < latest) {
            mistakes.Add(StepPath(i), "\"at\": " + FormatDuration(at) + " is earlier than " + FormatDuration(latest) +
                                          " of a step before it");
        }
        latest = std::max(latest, at);
    }
}

/// Not against forgery: it shows whether a file is still the one that was begun.
std::string FingerprintOf(const SortedJson& json) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char byte : Show(json)) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    }
    std::array<char, 17> text{};
    std::ignore = std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(hash));
    return text.data();
}

void CheckValue(const ChannelInfo& channel, double value, const std::string& path, Mistakes& mistakes) {
    if (value > channel.max || value < channel.min) {
        mistakes.Add(path, "\"value\": " + FormatShortest(value) + " is beyond the limits of " + channel.key + ", " +
                               DescribeBand(channel, {channel.min, channel.max}));
    }
}

}  // namespace

Parsed<ProtocolText> ParseProtocol(std::string_view text) {
    PlanReader reader;
    SortedJson json;
    try {
        json = SortedJson::parse(text, std::ref(reader));
    } catch (const SortedJson::parse_error& error) {
        const std::size_t end = std::min(error.byte, text.size());
        const auto line = 1 + std::ranges::count(text.substr(0, end), '\n');
        return Parsed<ProtocolText>::Error("line " + std::to_string(line) +
                                           " is not JSON: look for a missing or surplus comma, quote or bracket there");
    } catch (const SortedJson::out_of_range&) {
        return Parsed<ProtocolText>::Error("a number is too large");
    }
    if (reader.IsTooDeep()) {
        return Parsed<ProtocolText>::Error("brackets are nested deeper than in any protocol");
    }
    Mistakes mistakes;
    for (const std::string& name : reader.Twice()) {
        mistakes.Add("", "the member " + InQuotes(name) + " stands twice in one place");
    }
    ProtocolText plan;
    if (!json.is_object()) {
        mistakes.Add("", "the file is not an object: write {\"name\": ..., \"steps\": [...]}");
        return Parsed<ProtocolText>::Error(mistakes.Lines());
    }
    RefuseUnknownMembers(json, PlanMembers(), "", mistakes);
    if (json.contains("name")) {
        plan.name = TakeText(json, "name", "", mistakes);
    }
    plan.settleSeconds = TakeDuration(json, "settle", "", mistakes).value_or(plan.settleSeconds);
    plan.withinSeconds = TakeDuration(json, "within", "", mistakes);
    if (plan.withinSeconds && *plan.withinSeconds < plan.settleSeconds) {
        mistakes.Add("", "\"within\" is shorter than \"settle\": nothing could ever settle in time");
    }
    TakeSteps(plan, json, mistakes);
    plan.fingerprint = FingerprintOf(json);
    return mistakes.Lines().empty() ? Parsed<ProtocolText>::Of(plan) : Parsed<ProtocolText>::Error(mistakes.Lines());
}

Parsed<ProtocolPlan> ResolveProtocol(const ProtocolText& text, const std::vector<ChannelInfo>& channels) {
    ProtocolPlan plan{text.name, text.settleSeconds, text.withinSeconds, {}, text.fingerprint};
    Mistakes mistakes;
    std::set<std::pair<double, std::size_t>> taken;
    for (std::size_t i = 0; i < text.steps.size(); ++i) {
        const ProtocolText::Step& step = text.steps[i];
        const std::string path = StepPath(i);
        const auto found = FindChannelWithTarget(channels, step.channel);
        if (!found) {
            mistakes.Add(path, "\"channel\": " + found.error);
            continue;
        }
        const ChannelInfo& channel = channels[*found];
        CheckValue(channel, step.value, path, mistakes);
        if (step.holdSeconds && !HasTolerances(channel)) {
            mistakes.Add(path, "\"hold\": " + channel.key + " has no tolerances, so nobody can see whether it settles");
        }
        if (!taken.emplace(step.atSeconds, *found).second) {
            mistakes.Add(path, channel.key + " is set twice at " + FormatDuration(step.atSeconds));
        }
        plan.steps.push_back({step.atSeconds, *found, step.value, step.holdSeconds});
    }
    return mistakes.Lines().empty() ? Parsed<ProtocolPlan>::Of(plan) : Parsed<ProtocolPlan>::Error(mistakes.Lines());
}

double ProtocolPlan::ShortestSeconds() const {
    double seconds = steps.empty() ? 0.0 : steps.back().atSeconds;
    double longestHold = 0.0;  // of the steps of one time, which hold side by side
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (const std::optional<double>& hold = steps[i].holdSeconds) {
            longestHold = std::max(longestHold, settleSeconds + *hold);
        }
        if (i + 1 == steps.size() || steps[i + 1].atSeconds != steps[i].atSeconds) {
            seconds += std::exchange(longestHold, 0.0);
        }
    }
    return seconds;
}
