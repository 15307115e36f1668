#include "judge/AlarmRule.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "judge/Band.h"
#include "model/ChannelInfo.h"
#include "model/FindChannel.h"
#include "text/Duration.h"
#include "text/Number.h"
#include "text/Parsed.h"
#include "text/Words.h"

namespace {

constexpr std::string_view kExample = "write one such as \"CO2: 4.5..5.5 for 2m\" or \"CO2 for 2m\"";
constexpr std::array<std::string_view, 3> kOptions{"for", "hysteresis", "within"};

/// Where the text's last option begins, and which one it is.
struct FoundOption {
    std::size_t begin;
    std::string_view name;
};

std::optional<FoundOption> FindLastOption(std::string_view text) {
    std::optional<FoundOption> last;
    for (const std::string_view name : kOptions) {
        std::size_t begin = text.rfind(" " + std::string(name) + " ");
        if (text.ends_with(" " + std::string(name))) {
            begin = text.size() - name.size() - 1;  // its value is missing
        }
        if (begin != std::string_view::npos && (!last || begin > last->begin)) {
            last = {begin, name};
        }
    }
    return last;
}

/// Takes one option in; returns why it cannot be, or nothing.
std::string TakeOption(AlarmText& alarm, std::string_view name, std::string_view value) {
    if (name == "hysteresis") {
        const auto number = ParseNumber(value);
        alarm.hysteresis = number.value;
        return number && *number < 0.0 ? "a hysteresis is not negative" : number.error;
    }
    const auto duration = ParseDuration(value);
    if (name == "within") {
        alarm.withinSeconds = duration.value;
    } else {
        alarm.delaySeconds = duration.value.value_or(0.0);
    }
    return duration.error;
}

/// "4.5..5.5"
Parsed<Band> ParseBand(std::string_view text) {
    const std::size_t dots = text.find("..");
    if (dots == std::string_view::npos) {
        return Parsed<Band>::Error(InQuotes(text) + " is not a band: write its two limits, such as 4.5..5.5");
    }
    const auto low = ParseNumber(text.substr(0, dots));
    const auto high = ParseNumber(text.substr(dots + 2));
    if (!low || !high) {
        return Parsed<Band>::Error(low ? high.error : low.error);
    }
    if (*low >= *high) {
        return Parsed<Band>::Error(InQuotes(text) + " is empty: write the lower limit first");
    }
    return Parsed<Band>::Of({*low, *high});
}

/// "CO2: 4.5..5.5", or "gas:CO2" without a band: a colon before one has dots or a blank behind it.
std::string TakeSubject(AlarmText& alarm, std::string_view text) {
    const std::size_t colon = text.rfind(':');
    const std::string_view tail = colon == std::string_view::npos ? "" : text.substr(colon + 1);
    const bool hasDots = tail.find("..") != std::string_view::npos;
    if (colon == std::string_view::npos && text.find("..") != std::string_view::npos) {
        return "a colon is missing before the band";
    }
    if (hasDots || tail.starts_with(' ') || text.ends_with(':')) {
        const auto band = ParseBand(TrimBlanks(tail));
        if (!band) {
            return band.error;
        }
        alarm.band = *band;
        text = TrimBlanks(text.substr(0, colon));
    }
    alarm.channel = text;
    if (text.empty()) {
        return "the channel's name is missing";
    }
    return alarm.ForAll() && alarm.band ? "\"all\" stands for several channels, for which one band cannot be right"
                                        : "";
}

std::string CheckHysteresis(const AlarmRule& rule, const ChannelInfo& channel) {
    const double width = rule.band ? rule.band->Width() : channel.below + channel.above;
    if (!rule.hysteresis || *rule.hysteresis * 2.0 < width) {
        return {};
    }
    return "a hysteresis of " + FormatShortest(*rule.hysteresis) + " leaves nothing of " + channel.key +
           "'s band, which is " + FormatShortest(width) + " wide: the alarm would never end";
}

/// The rules so far, and what is wrong.
struct Resolution {
    const std::vector<ChannelInfo>& channels;
    std::vector<std::optional<AlarmRule>> rules;  // one for each channel
    std::vector<std::string> errors;

    void Add(const AlarmText& text, std::size_t channel) {
        const AlarmRule rule{channel, text.band, text.delaySeconds, text.hysteresis, text.withinSeconds};
        const std::string error = CheckHysteresis(rule, channels[channel]);
        if (!error.empty()) {
            errors.push_back(error);
        }
        rules[channel] = rule;
    }

    void AddOne(const AlarmText& text) {
        const auto channel = FindChannel(channels, text.channel);
        if (!channel) {
            errors.push_back(channel.error);
            return;
        }
        const std::string& key = channels[*channel].key;
        if (!text.band && !HasTolerances(channels[*channel])) {
            errors.push_back(
                key + (channels[*channel].canSetTarget ? " has no tolerances" : " is a sensor without a target") +
                ": write the band, such as \"" + key + ": 20..25\"");
        } else if (rules[*channel]) {
            errors.push_back(key + " has two alarms: write one of them");
        } else {
            Add(text, *channel);
        }
    }

    void AddAll(const AlarmText& text) {
        bool any = false;
        for (std::size_t i = 0; i < channels.size(); ++i) {
            if (HasTolerances(channels[i])) {
                any = true;
                if (!rules[i]) {
                    Add(text, i);
                }
            }
        }
        if (!any) {
            errors.emplace_back("no channel has tolerances that \"all\" could go by: write a channel and its band");
        }
    }
};

}  // namespace

Parsed<AlarmText> ParseAlarm(std::string_view text) {
    AlarmText alarm;
    std::string_view left = TrimBlanks(text);
    const auto fail = [&](const std::string& why) {
        return Parsed<AlarmText>::Error("the alarm " + InQuotes(text) + " cannot be understood: " + why + "; " +
                                        std::string(kExample));
    };
    std::vector<std::string_view> seen;
    while (const auto option = FindLastOption(left)) {
        if (std::ranges::find(seen, option->name) != seen.end()) {
            return fail(InQuotes(option->name) + " stands twice");
        }
        seen.push_back(option->name);
        const std::string_view value = TrimBlanks(left.substr(option->begin + option->name.size() + 1));
        const std::string error = TakeOption(alarm, option->name, value);
        if (!error.empty()) {
            return fail("after " + InQuotes(option->name) + ", " + error);
        }
        left = TrimBlanks(left.substr(0, option->begin));
    }
    const std::string error = TakeSubject(alarm, left);
    return error.empty() ? Parsed<AlarmText>::Of(alarm) : fail(error);
}

Parsed<std::vector<AlarmRule>> ResolveAlarms(const std::vector<AlarmText>& texts,
                                             const std::vector<ChannelInfo>& channels) {
    Resolution resolution{channels, {}, {}};
    resolution.rules.resize(channels.size());
    const auto forAll = std::ranges::find_if(texts, &AlarmText::ForAll);
    for (const AlarmText& text : texts) {
        if (!text.ForAll()) {
            resolution.AddOne(text);
        }
    }
    if (forAll != texts.end()) {
        resolution.AddAll(*forAll);
    }
    if (std::ranges::count_if(texts, &AlarmText::ForAll) > 1) {
        resolution.errors.emplace_back("\"all\" has two alarms: write one of them");
    }
    std::vector<AlarmRule> rules;
    for (const auto& rule : resolution.rules) {
        if (rule) {
            rules.push_back(*rule);
        }
    }
    if (resolution.errors.empty()) {
        return Parsed<std::vector<AlarmRule>>::Of(std::move(rules));
    }
    std::string lines;
    for (const std::string& error : resolution.errors) {
        lines += (lines.empty() ? "" : "\n") + error;
    }
    return Parsed<std::vector<AlarmRule>>::Error(lines);
}
