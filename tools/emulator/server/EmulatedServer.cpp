#include "server/EmulatedServer.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "faults/FaultRule.h"
#include "faults/Faults.h"
#include "incubator/DeviceFault.h"
#include "incubator/Incubator.h"
#include "incubator/RunningFaults.h"
#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "scenarios/ScenarioReader.h"
#include "text/Words.h"

namespace emulator {

namespace {

constexpr const char* kScenarioOrigin = "an event or a rule";

}  // namespace

EmulatedServer::EmulatedServer(const std::string& scenario, unsigned seed, Say say)
    : m_seed(seed), m_say(std::move(say)), m_faults(seed, [this](const FaultRule& rule, std::string_view command) {
          m_say("fault " + InQuotes(rule.source) + " on " + InQuotes(command));
      }) {
    Load(scenario, 0.0);
}

void EmulatedServer::Load(const std::string& scenario, double now) {
    Scenario loaded = LoadScenario(scenario);
    Forget([&](const Started& started) { return started.onDevice || started.origin.starts_with(m_scenario + "/"); });
    m_clock.TakePassed(now);
    m_loaded = std::move(loaded);
    m_incubator = std::make_unique<Incubator>(
        m_loaded, m_seed, [this](const EventScenario& event) { m_say("event " + InQuotes(event.action)); });
    m_scenario = scenario;
    for (std::size_t i = 0; i < m_loaded.faults.size(); ++i) {
        Start(m_loaded.faults[i], scenario + "/faults/" + std::to_string(i), now);
    }
}

Incubator& EmulatedServer::At(double now) {
    m_incubator->Advance(m_clock.TakePassed(now));
    return *m_incubator;
}

Transmission EmulatedServer::Answer(const std::string& command, double now) {
    Incubator& incubator = At(now);
    const std::vector<FaultEffect> effects = m_faults.Fire(command, now);
    for (const FaultEffect& effect : effects) {
        if (effect.device) {
            incubator.Begin(*effect.device);
        }
    }
    if (!incubator.IsServerUp()) {
        return {};
    }
    return m_faults.Transmit(effects, command, incubator.Execute(ParseCommand(command)));
}

int EmulatedServer::Enter(Started started) {
    // A fault of the device that runs already goes on under its number.
    const auto same = std::ranges::find_if(m_started, [&](const auto& entry) {
        return entry.second.onDevice == started.onDevice && entry.second.number == started.number;
    });
    if (same != m_started.end()) {
        return same->first;
    }
    m_started.emplace(++m_last, std::move(started));
    return m_last;
}

int EmulatedServer::Start(const std::string& fault, const std::string& origin, double now) {
    try {
        if (fault.find(';') != std::string::npos) {
            FaultRule rule = ParseFaultRule(fault, origin);
            if (rule.effect.device) {
                CheckDeviceFault(m_loaded, *rule.effect.device);
            }
            return Enter({false, m_faults.Add(std::move(rule)), fault, origin});
        }
        return Enter({true, At(now).Begin(ParseDeviceFault(fault)), fault, origin});
    } catch (const FaultError& error) {
        throw FaultError(origin + ": " + error.what());
    } catch (const DeviceFaultError& error) {
        throw FaultError(origin + ": " + error.what());
    }
}

bool EmulatedServer::Stop(int number) {
    const auto found = m_started.find(number);
    if (found == m_started.end()) {
        return false;
    }
    const Started started = found->second;
    m_started.erase(found);
    return started.onDevice ? m_incubator->End(started.number) : m_faults.Remove(started.number);
}

void EmulatedServer::Forget(const std::function<bool(const Started&)>& which) {
    std::vector<int> numbers;
    for (const auto& [number, started] : m_started) {
        if (which(started)) {
            numbers.push_back(number);
        }
    }
    for (const int number : numbers) {
        Stop(number);
    }
}

std::vector<FaultState> EmulatedServer::ListFaults(double now) {
    const IncubatorState state = At(now).State();
    // Events and rules begin faults of the device, too.
    for (const RunningFault& running : state.faults) {
        Enter({true, running.number, FormatDeviceFault(running.fault), kScenarioOrigin});
    }
    const std::vector<FaultStatus> rules = m_faults.List();
    std::erase_if(m_started, [&](const auto& entry) {
        const Started& started = entry.second;  // whose time is over
        return started.onDevice &&
               std::ranges::find(state.faults, started.number, &RunningFault::number) == state.faults.end();
    });
    std::vector<FaultState> faults;
    for (const auto& [number, started] : m_started) {
        FaultState fault{number, started.fault, started.origin, started.onDevice, 0, 0, std::nullopt};
        if (started.onDevice) {
            const std::optional<double> until =
                std::ranges::find(state.faults, started.number, &RunningFault::number)->until;
            if (until) {
                fault.secondsLeft = *until - state.seconds;
            }
        } else if (const auto rule = std::ranges::find(rules, started.number, &FaultStatus::number);
                   rule != rules.end()) {
            fault.met = rule->met;
            fault.fired = rule->fired;
        }
        faults.push_back(std::move(fault));
    }
    return faults;
}

void EmulatedServer::StopAll(const std::string& origin) {
    Forget([&](const Started& started) { return started.origin == origin; });
}

}  // namespace emulator
