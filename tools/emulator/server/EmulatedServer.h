#pragma once

#include <string>
#include <vector>

#include "faults/Faults.h"
#include "incubator/Incubator.h"
#include "incubator/Scenario.h"
#include "protocol/Answer.h"

namespace emulator {

/// The server that is stood in for, without its port: an incubator, the rules of what goes wrong, and the incubator's
/// time. Not locked: one thread. What time it is, in real seconds since the start, it is told.
class EmulatedServer {
 public:
    /// `onFire` hears of every rule that fires, with the command.
    EmulatedServer(Scenario scenario, unsigned seed, Faults::OnFire onFire);

    /// How much faster than the real one the incubator's time runs.
    void SetSpeed(double speed) { m_speed = speed; }

    /// Adds a rule of what goes wrong, and gives its number. `origin` says where it was written. Throws FaultError,
    /// which names the place.
    int AddRule(const std::string& text, const std::string& origin);

    std::vector<FaultStatus> NeverFired() const { return m_faults.NeverFired(); }

    /// What goes on the wire for a command that comes now.
    Transmission Answer(const std::string& command, double now);

 private:
    void Advance(double now);

    Incubator m_incubator;
    Faults m_faults;
    double m_speed = 1.0;
    double m_last = 0.0;  // when time was last let pass
};

}  // namespace emulator
