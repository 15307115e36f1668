// A fault rule and the commands that it meets: the first line is the rule, each of the others a command.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "faults/FaultRule.h"
#include "faults/Faults.h"
#include "faults/Pattern.h"
#include "fuzz/Fuzz.h"
#include "incubator/DeviceFault.h"
#include "protocol/Answer.h"

namespace {

using namespace emulator;

/// Whether the command fits, by a table of all beginnings of both.
bool FitsByTable(std::string_view command, std::string_view pattern) {
    std::vector<bool> fits(command.size() + 1, false);  // by length of the command's beginning
    fits[0] = true;
    for (const char c : pattern) {
        std::vector<bool> next(fits.size(), false);
        next[0] = c == '*' && fits[0];
        for (std::size_t i = 1; i < fits.size(); ++i) {
            next[i] = c == '*' ? fits[i] || next[i - 1] : fits[i - 1] && command[i - 1] == c;
        }
        fits = next;
    }
    return fits.back();
}

void CheckRule(const FaultRule& rule, std::string_view text) {
    Require(rule.source == text, "a rule keeps its text");
    Require(!rule.pattern.Text().empty(), "a pattern is not empty");
    Require(rule.pattern.Fits(rule.pattern.Text()), "a star stands for itself, too");
    const FaultTrigger& trigger = rule.trigger;
    Require(trigger.kind != FaultTrigger::Kind::Window || trigger.first < trigger.second, "a window has a length");
    Require(trigger.kind != FaultTrigger::Kind::Chance || (trigger.first >= 0.0 && trigger.first <= 1.0),
            "a chance lies between never and always");
    Require((trigger.kind != FaultTrigger::Kind::Nth && trigger.kind != FaultTrigger::Kind::EveryNth) ||
                trigger.first >= 1.0,
            "counts begin at 1");
    Require(rule.effect.number >= 0 && rule.effect.number <= static_cast<int>(kLongestDatagram),
            "an effect's number is within its limits");
    Require(rule.effect.device.has_value() == (rule.effect.kind == FaultEffect::Kind::Device),
            "an effect on the device names its fault");
    if (rule.effect.device) {
        const std::string words = FormatDeviceFault(*rule.effect.device);
        Require(ParseDeviceFault(words) == *rule.effect.device, "a fault comes back from its words");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLargestTable = 100'000;
    InputLines lines(AsText(data, size));
    const std::string_view text = lines.Next();
    Faults faults(1);
    try {
        FaultRule rule = ParseFaultRule(text, "here");
        CheckRule(rule, text);
        faults.Add(std::move(rule));
    } catch (const FaultError& error) {
        Require(std::string_view(error.what()).size() > 10, "what is wrong is said");
        return 0;
    }
    const Pattern pattern = ParseFaultRule(text).pattern;
    double seconds = 0.0;
    while (!lines.AtEnd()) {
        const std::string command(lines.Next());
        const bool fits = pattern.Fits(command);
        if (command.size() * pattern.Text().size() < kLargestTable) {
            Require(fits == FitsByTable(command, pattern.Text()), "a command fits as the pattern says");
        }
        const auto met = faults.List().front().met;
        const std::vector<FaultEffect> effects = faults.Fire(command, seconds);
        Require(faults.List().front().met == met + (fits ? 1 : 0), "a command that fits is counted");
        Require(fits || effects.empty(), "only a command that fits is hit");
        for (const Datagram& datagram : faults.Transmit(effects, command, {0, "37.000"})) {
            Require(datagram.delayMs >= 0 && datagram.delayMs <= kLatestReply, "a reply comes within its time");
        }
        seconds += 0.5;
    }
    const FaultStatus status = faults.List().front();
    Require(status.fired <= status.met, "a rule fires on commands that it met");
    Require(faults.NeverFired().empty() == (status.fired > 0), "a rule that never fired is told");
    return 0;
}
