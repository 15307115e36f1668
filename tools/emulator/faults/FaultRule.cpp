#include "faults/FaultRule.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "faults/Pattern.h"
#include "incubator/DeviceFault.h"
#include "protocol/Command.h"
#include "protocol/CommandTable.h"
#include "text/Duration.h"
#include "text/Number.h"
#include "text/Words.h"

namespace emulator {

namespace {

/// The first word, and what follows it.
struct Split {
    std::string_view first;
    std::string_view rest;
};

Split SplitWord(std::string_view text) {
    const std::string_view word = TakeWord(text);
    return {word, text};
}

/// The first words of all rows of a table.
template <class Table, class Member>
std::vector<std::string> WordsOf(const Table& table, Member word) {
    std::vector<std::string> words(table.size());
    std::ranges::transform(table, words.begin(), [word](const auto& row) { return std::string(row.*word); });
    return words;
}

std::string ListOfCommands() {
    std::vector<std::string> keywords = WordsOf(kCommands, &CommandEntry::keyword);
    std::ranges::sort(keywords);
    return JoinWords(keywords, "and");
}

std::string CountOfArguments(std::size_t fewest, std::size_t most) {
    const std::string largest = std::to_string(most) + (most == 1 ? " argument" : " arguments");
    return fewest == most ? (most == 0 ? "no arguments" : largest) : std::to_string(fewest) + " to " + largest;
}

/// How many arguments a command has at least that fits the pattern.
std::size_t FewestArguments(const Pattern& pattern) {
    std::string_view text = pattern.Text();
    while (text.ends_with('*')) {
        text.remove_suffix(1);
    }
    return ParseCommand(text).arguments.size();
}

/// The pattern, of which at least one command can be thought that fits it and is answered.
Pattern ParsePattern(std::string_view text) {
    if (text.empty()) {
        throw FaultError("the pattern is empty: write * for every command");
    }
    Pattern pattern(text);
    const std::string named = "the pattern " + InQuotes(text) + " fits no command: ";
    const std::string_view start = pattern.Start();
    const std::string keyword = ParseCommand(start).keyword;
    const bool whole = !pattern.HasStar() || start.size() > keyword.size();
    const std::size_t arguments = FewestArguments(pattern);
    const CommandEntry* entry = nullptr;  // the one with the most arguments of those that the pattern may mean
    for (const CommandEntry& command : kCommands) {
        const bool meant = whole ? command.keyword == keyword : command.keyword.starts_with(keyword);
        if (meant && (entry == nullptr || command.most > entry->most)) {
            entry = &command;
        }
    }
    if (entry == nullptr) {
        throw FaultError(named + "none " + (whole ? "is " : "begins with ") + InQuotes(keyword) + "; there are " +
                         ListOfCommands());
    }
    if (arguments > entry->most || (!pattern.HasStar() && arguments < entry->fewest)) {
        throw FaultError(named + InQuotes(entry->keyword) + " takes " + CountOfArguments(entry->fewest, entry->most));
    }
    return pattern;
}

/// A whole number of the part of a rule that `what` names.
int ParseWhole(std::string_view text, const std::string& what, int least, int most) {
    const auto number = ReadExactly<int>(text);
    if (!number || *number < least || *number > most) {
        throw FaultError(what + " needs a whole number from " + std::to_string(least) + " to " + std::to_string(most) +
                         ", not " + InQuotes(text));
    }
    return *number;
}

double ParseSeconds(std::string_view text) {
    const auto seconds = ParseDuration(text);
    if (!seconds) {
        throw FaultError("the trigger \"between\" needs two times: " + seconds.error);
    }
    return *seconds;
}

FaultTrigger ParseWindow(std::string_view text) {
    const auto [start, end] = SplitWord(text);
    const FaultTrigger trigger{FaultTrigger::Kind::Window, ParseSeconds(start), ParseSeconds(end)};
    if (trigger.first >= trigger.second) {
        throw FaultError("the trigger \"between " + std::string(text) +
                         "\" never fires: the first time must lie before the second");
    }
    return trigger;
}

FaultTrigger ParseChance(std::string_view text) {
    const auto chance = ParseNumber(text);
    if (!chance || *chance < 0.0 || *chance > 1.0) {
        throw FaultError("the trigger \"chance\" needs a number from 0 to 1, not " + InQuotes(text));
    }
    return {FaultTrigger::Kind::Chance, *chance, 0.0};
}

FaultTrigger ParseTrigger(std::string_view text) {
    const auto [word, rest] = SplitWord(text);
    if (word == "always" && rest.empty()) {
        return {FaultTrigger::Kind::Always, 0.0, 0.0};
    }
    if (word == "nth" || word == "every") {
        const int number = ParseWhole(rest, "the trigger " + InQuotes(word), 1, kHighestCount);
        return {word == "nth" ? FaultTrigger::Kind::Nth : FaultTrigger::Kind::EveryNth, static_cast<double>(number),
                0.0};
    }
    if (word == "between") {
        return ParseWindow(rest);
    }
    if (word == "chance") {
        return ParseChance(rest);
    }
    throw FaultError(InQuotes(text) +
                     " is no trigger; there are: always, nth N, every N, between SECONDS SECONDS, chance 0.1");
}

FaultEffect ParseDeviceEffect(std::string_view text) {
    try {
        return {FaultEffect::Kind::Device, 0, {}, ParseDeviceFault(text)};
    } catch (const DeviceFaultError& error) {
        throw FaultError(std::string("the effect: ") + error.what());
    }
}

FaultEffect ParseEffect(std::string_view text) {
    if (IsDeviceFault(text)) {
        return ParseDeviceEffect(text);
    }
    const auto [word, rest] = SplitWord(text);
    const auto* const found = std::ranges::find(kEffectWords, word, &EffectWord::word);
    if (found == kEffectWords.end()) {
        std::vector<std::string> known = WordsOf(kEffectWords, &EffectWord::word);
        std::ranges::copy(WordsOf(kDeviceFaultWords, &DeviceFaultWord::word), std::back_inserter(known));
        throw FaultError(InQuotes(text) + " is no effect; there are " + JoinWords(known, "and"));
    }
    FaultEffect effect{found->kind, 0, std::string(rest), std::nullopt};
    if (found->argument == EffectWord::Argument::Number) {
        effect.number = ParseWhole(rest, "the effect " + InQuotes(word), 0, found->most);
    } else if (found->argument == EffectWord::Argument::None && !rest.empty()) {
        throw FaultError("the effect " + InQuotes(word) + " takes nothing after it");
    }
    return effect;
}

}  // namespace

FaultRule ParseFaultRule(std::string_view text, std::string origin) {
    const std::size_t first = text.find(';');
    const std::size_t second = first == std::string_view::npos ? first : text.find(';', first + 1);
    if (second == std::string_view::npos) {
        throw FaultError(InQuotes(text) + " is not of the form PATTERN; TRIGGER; EFFECT");
    }
    return {std::string(text), std::move(origin), ParsePattern(TrimBlanks(text.substr(0, first))),
            ParseTrigger(TrimBlanks(text.substr(first + 1, second - first - 1))),
            ParseEffect(TrimBlanks(text.substr(second + 1)))};
}

}  // namespace emulator
