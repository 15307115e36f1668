#include "faults/Faults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "protocol/Answer.h"

namespace emulator {

namespace {

std::string_view Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// The first word, and what follows it.
struct Words {
    std::string_view first;
    std::string_view rest;
};

Words SplitWord(std::string_view text) {
    const std::size_t blank = text.find(' ');
    return blank == std::string_view::npos ? Words{text, {}} : Words{text.substr(0, blank), Trim(text.substr(blank))};
}

double ParseNumber(std::string_view text, const std::string& what) {
    double number = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc{} || result.ptr != text.data() + text.size() || !(number >= 0.0 && number <= 1e9)) {
        throw FaultError(what + " needs a number that is not negative, not \"" + std::string(text) + "\"");
    }
    return number;
}

FaultTrigger ParseTrigger(std::string_view text) {
    const auto [word, rest] = SplitWord(text);
    if (word == "always" && rest.empty()) {
        return {FaultTrigger::Kind::Always};
    }
    if (word == "nth" || word == "every") {
        const double number = ParseNumber(rest, "the trigger \"" + std::string(word) + "\"");
        if (number < 1.0) {
            throw FaultError("the trigger \"" + std::string(word) + "\" counts from 1");
        }
        return {word == "nth" ? FaultTrigger::Kind::Nth : FaultTrigger::Kind::EveryNth, number};
    }
    if (word == "between") {
        const auto [start, end] = SplitWord(rest);
        return {FaultTrigger::Kind::Window, ParseNumber(start, "the trigger \"between\""),
                ParseNumber(end, "the trigger \"between\"")};
    }
    if (word == "chance") {
        return {FaultTrigger::Kind::Chance, ParseNumber(rest, "the trigger \"chance\"")};
    }
    throw FaultError("\"" + std::string(text) +
                     "\" is no trigger; there are: always, nth N, every N, between SECONDS SECONDS, chance 0.1");
}

struct EffectWord {
    std::string_view word;
    FaultEffect::Kind kind;
    enum class Argument { None, Number, Text } argument;
};

constexpr std::array<EffectWord, 13> kEffects{{
    {"code", FaultEffect::Kind::Code, EffectWord::Argument::Number},
    {"error", FaultEffect::Kind::Error, EffectWord::Argument::Text},
    {"empty", FaultEffect::Kind::Empty, EffectWord::Argument::None},
    {"long", FaultEffect::Kind::Long, EffectWord::Argument::Number},
    {"truncate", FaultEffect::Kind::Truncate, EffectWord::Argument::Number},
    {"garbage", FaultEffect::Kind::Garbage, EffectWord::Argument::Number},
    {"echo", FaultEffect::Kind::Echo, EffectWord::Argument::Text},
    {"no-separator", FaultEffect::Kind::NoSeparator, EffectWord::Argument::None},
    {"no-return", FaultEffect::Kind::NoReturn, EffectWord::Argument::None},
    {"late", FaultEffect::Kind::Late, EffectWord::Argument::Number},
    {"silent", FaultEffect::Kind::Silent, EffectWord::Argument::None},
    {"twice", FaultEffect::Kind::Twice, EffectWord::Argument::None},
    {"value", FaultEffect::Kind::Value, EffectWord::Argument::Text},
}};

constexpr double kLargestNumber = 60'000.0;

FaultEffect ParseEffect(std::string_view text) {
    const auto [word, rest] = SplitWord(text);
    const auto found = std::ranges::find(kEffects, word, &EffectWord::word);
    if (found == kEffects.end()) {
        std::string known;
        for (const EffectWord& effect : kEffects) {
            known += (known.empty() ? "" : ", ") + std::string(effect.word);
        }
        throw FaultError("\"" + std::string(text) + "\" is no effect; there are: " + known);
    }
    FaultEffect effect{found->kind, 0, std::string(rest)};
    if (found->argument == EffectWord::Argument::Number) {
        const double number = ParseNumber(rest, "the effect \"" + std::string(word) + "\"");
        effect.number = static_cast<int>(std::min(number, kLargestNumber));
    } else if (found->argument == EffectWord::Argument::None && !rest.empty()) {
        throw FaultError("the effect \"" + std::string(word) + "\" takes nothing after it");
    }
    return effect;
}

/// The effects that change the parts of a reply rather than its bytes.
void ChangeParts(const FaultEffect& effect, Answer& answer, std::string& echo) {
    switch (effect.kind) {
        case FaultEffect::Kind::Code:
            answer.code = effect.number;
            break;
        case FaultEffect::Kind::Error:
            answer.payload = std::string("e").append(effect.text);
            break;
        case FaultEffect::Kind::Value:
            answer.payload = effect.text;
            break;
        case FaultEffect::Kind::Echo:
            echo = effect.text;
            break;
        default:
            break;
    }
}

}  // namespace

FaultRule ParseFaultRule(std::string_view text) {
    const std::size_t first = text.find(';');
    const std::size_t second = first == std::string_view::npos ? first : text.find(';', first + 1);
    if (second == std::string_view::npos) {
        throw FaultError("\"" + std::string(text) + "\" is not of the form PATTERN; TRIGGER; EFFECT");
    }
    return {std::string(text), std::string(Trim(text.substr(0, first))),
            ParseTrigger(Trim(text.substr(first + 1, second - first - 1))), ParseEffect(Trim(text.substr(second + 1)))};
}

bool FitsPattern(std::string_view command, std::string_view pattern) {
    if (pattern.empty()) {
        return command.empty();
    }
    if (pattern.front() == '*') {
        return FitsPattern(command, pattern.substr(1)) || (!command.empty() && FitsPattern(command.substr(1), pattern));
    }
    return !command.empty() && command.front() == pattern.front() && FitsPattern(command.substr(1), pattern.substr(1));
}

Faults::Faults(std::vector<FaultRule> rules, unsigned seed,
               std::function<void(const FaultRule& rule, std::string_view command)> onFire)
    : m_rules(std::move(rules)), m_met(m_rules.size()), m_random(seed), m_onFire(std::move(onFire)) {}

bool Faults::Fires(std::size_t index, double seconds) {
    const FaultTrigger& trigger = m_rules[index].trigger;
    const int met = ++m_met[index];
    const int number = static_cast<int>(trigger.first);
    switch (trigger.kind) {
        case FaultTrigger::Kind::Always:
            return true;
        case FaultTrigger::Kind::Nth:
            return met == number;
        case FaultTrigger::Kind::EveryNth:
            return met % number == 0;
        case FaultTrigger::Kind::Window:
            return seconds >= trigger.first && seconds < trigger.second;
        case FaultTrigger::Kind::Chance:
            break;
    }
    return std::uniform_real_distribution<double>(0.0, 1.0)(m_random) < trigger.first;
}

void Faults::Distort(const FaultEffect& effect, std::string& datagram) {
    const auto size = static_cast<std::size_t>(effect.number);
    switch (effect.kind) {
        case FaultEffect::Kind::Empty:
            datagram.clear();
            break;
        case FaultEffect::Kind::Long:
            datagram.resize(std::max(datagram.size(), size), 'x');
            break;
        case FaultEffect::Kind::Truncate:
            datagram.resize(std::min(datagram.size(), size));
            break;
        case FaultEffect::Kind::Garbage:
            datagram.resize(size);
            std::ranges::generate(datagram, [this] { return static_cast<char>(m_random() & 0xFFU); });
            break;
        case FaultEffect::Kind::NoSeparator:
            std::erase(datagram, '_');
            break;
        case FaultEffect::Kind::NoReturn:
            std::erase(datagram, '\r');
            break;
        default:
            break;
    }
}

Transmission Faults::Apply(const std::string& command, const Answer& answer, double seconds) {
    std::vector<const FaultEffect*> effects;
    for (std::size_t i = 0; i < m_rules.size(); ++i) {
        if (FitsPattern(command, m_rules[i].pattern) && Fires(i, seconds)) {
            effects.push_back(&m_rules[i].effect);
            m_onFire(m_rules[i], command);
        }
    }

    Answer parts = answer;
    std::string echo = command;
    for (const FaultEffect* const effect : effects) {
        ChangeParts(*effect, parts, echo);
    }
    Datagram reply{FormatReply(parts, echo), 0};
    for (const FaultEffect* const effect : effects) {
        Distort(*effect, reply.bytes);
        reply.delayMs += effect->kind == FaultEffect::Kind::Late ? effect->number : 0;
    }
    const auto has = [&](FaultEffect::Kind kind) {
        return std::ranges::any_of(effects, [kind](const FaultEffect* effect) { return effect->kind == kind; });
    };
    if (has(FaultEffect::Kind::Silent)) {
        return {};
    }
    return Transmission(has(FaultEffect::Kind::Twice) ? 2 : 1, reply);
}

}  // namespace emulator
