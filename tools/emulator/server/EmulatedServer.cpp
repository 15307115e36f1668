#include "server/EmulatedServer.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "faults/FaultRule.h"
#include "faults/Faults.h"
#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"

namespace emulator {

EmulatedServer::EmulatedServer(Scenario scenario, unsigned seed, Faults::OnFire onFire)
    : m_incubator(scenario, seed), m_faults(seed, std::move(onFire)) {
    for (std::size_t i = 0; i < scenario.faults.size(); ++i) {
        AddRule(scenario.faults[i], scenario.name + "/faults/" + std::to_string(i));
    }
}

int EmulatedServer::AddRule(const std::string& text, const std::string& origin) {
    try {
        return m_faults.Add(ParseFaultRule(text, origin));
    } catch (const FaultError& error) {
        throw FaultError(origin + ": " + error.what());
    }
}

void EmulatedServer::Advance(double now) {
    m_incubator.Advance((now - m_last) * m_speed);
    m_last = now;
}

Transmission EmulatedServer::Answer(const std::string& command, double now) {
    Advance(now);
    const std::vector<FaultEffect> effects = m_faults.Fire(command, now);
    for (const FaultEffect& effect : effects) {
        if (effect.device) {
            m_incubator.Begin(*effect.device);
        }
    }
    if (!m_incubator.IsServerUp()) {
        return {};
    }
    return m_faults.Transmit(effects, command, m_incubator.Execute(ParseCommand(command)));
}

}  // namespace emulator
