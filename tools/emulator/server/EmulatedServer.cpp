#include "server/EmulatedServer.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "faults/Faults.h"
#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"

namespace emulator {

EmulatedServer::EmulatedServer(Scenario scenario, std::vector<FaultRule> rules, unsigned seed,
                               std::function<void(const FaultRule& rule, std::string_view command)> onFire)
    : m_incubator(std::move(scenario), seed), m_faults(std::move(rules), seed, std::move(onFire)) {}

void EmulatedServer::Advance(double now) {
    m_incubator.Advance((now - m_last) * m_speed);
    m_last = now;
}

Transmission EmulatedServer::Answer(const std::string& command, double now) {
    Advance(now);
    return m_faults.Apply(command, m_incubator.Execute(ParseCommand(command)), now);
}

}  // namespace emulator
