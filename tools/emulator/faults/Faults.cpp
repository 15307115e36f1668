#include "faults/Faults.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "faults/FaultRule.h"
#include "protocol/Answer.h"
#include "text/Words.h"

namespace emulator {

namespace {

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

bool HasFired(const FaultStatus& status) { return status.fired > 0; }

}  // namespace

Faults::Faults(unsigned seed, OnFire onFire) : m_random(seed), m_onFire(std::move(onFire)) {}

int Faults::Add(FaultRule rule) {
    FaultStatus status{++m_last, rule.source, rule.origin, 0, 0};
    m_rules.push_back({std::move(rule), std::move(status)});
    return m_last;
}

bool Faults::Remove(int number) {
    const auto found = std::ranges::find_if(m_rules, [&](const Rule& rule) { return rule.status.number == number; });
    if (found == m_rules.end()) {
        return false;
    }
    if (!HasFired(found->status)) {
        m_removed.push_back(found->status);
    }
    m_rules.erase(found);
    return true;
}

std::vector<FaultStatus> Faults::List() const {
    std::vector<FaultStatus> list;
    list.reserve(m_rules.size());
    std::ranges::transform(m_rules, std::back_inserter(list), &Rule::status);
    return list;
}

std::vector<FaultStatus> Faults::NeverFired() const {
    std::vector<FaultStatus> list = List();
    list.insert(list.end(), m_removed.begin(), m_removed.end());
    std::erase_if(list, HasFired);
    std::ranges::sort(list, {}, &FaultStatus::number);
    return list;
}

bool Faults::Fires(const Rule& rule, double seconds) {
    const FaultTrigger& trigger = rule.rule.trigger;
    const auto number = static_cast<std::int64_t>(trigger.first);
    switch (trigger.kind) {
        case FaultTrigger::Kind::Always:
            return true;
        case FaultTrigger::Kind::Nth:
            return rule.status.met == number;
        case FaultTrigger::Kind::EveryNth:
            return rule.status.met % number == 0;
        case FaultTrigger::Kind::Window:
            return seconds >= trigger.first && seconds < trigger.second;
        case FaultTrigger::Kind::Chance:
            break;
    }
    return std::uniform_real_distribution<double>(0.0, 1.0)(m_random) < trigger.first;
}

std::vector<FaultEffect> Faults::Fire(const std::string& command, double seconds) {
    std::vector<FaultEffect> effects;
    for (Rule& rule : m_rules) {
        if (!rule.rule.pattern.Fits(command)) {
            continue;
        }
        ++rule.status.met;
        if (Fires(rule, seconds)) {
            ++rule.status.fired;
            effects.push_back(rule.rule.effect);
            if (m_onFire) {
                m_onFire(rule.rule, command);
            }
        }
    }
    return effects;
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

Transmission Faults::Transmit(const std::vector<FaultEffect>& effects, const std::string& command,
                              const Answer& answer) {
    Answer parts = answer;
    std::string echo = command;
    for (const FaultEffect& effect : effects) {
        ChangeParts(effect, parts, echo);
    }
    return TransmitBytes(effects, FormatReply(parts, echo));
}

Transmission Faults::TransmitBytes(const std::vector<FaultEffect>& effects, const std::string& datagram) {
    Datagram reply{datagram, 0};
    for (const FaultEffect& effect : effects) {
        Distort(effect, reply.bytes);
        reply.delayMs += effect.kind == FaultEffect::Kind::Late ? effect.number : 0;
    }
    const auto has = [&](FaultEffect::Kind kind) {
        return std::ranges::find(effects, kind, &FaultEffect::kind) != effects.end();
    };
    if (has(FaultEffect::Kind::Silent)) {
        return {};
    }
    return Transmission(has(FaultEffect::Kind::Twice) ? 2 : 1, reply);
}

std::string SayNeverFired(const FaultStatus& status) {
    const std::string place = status.origin.empty() ? "" : status.origin + ": ";
    return place + InQuotes(status.source) + " never fired: " +
           (status.met == 0 ? "no command fitted its pattern"
                            : "its trigger never came for any of the " + std::to_string(status.met) +
                                  (status.met == 1 ? " command" : " commands") + " that fitted its pattern");
}

}  // namespace emulator
