#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "faults/Faults.h"
#include "incubator/Incubator.h"
#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "server/IncubatorClock.h"

namespace emulator {

/// A fault that is there: a rule on the wire, or one of the device.
struct FaultState {
    int number = 0;
    std::string fault;   // as it was written
    std::string origin;  // where: "--fault 2", "my.json/faults/0", "remote control"
    bool onDevice = false;
    std::int64_t met = 0;               // commands that fitted a rule's pattern
    std::int64_t fired = 0;             // of these, those on which it took effect
    std::optional<double> secondsLeft;  // of a fault of the device that ends by itself
};

/// The server that is stood in for, without its port: an incubator, the rules of what goes wrong, and the incubator's
/// time. Not locked: one thread. What time it is, in real seconds since the start, it is told.
class EmulatedServer {
 public:
    /// What it has to say meanwhile: a rule that fires, an event that happens. A line without its end.
    using Say = std::function<void(const std::string& line)>;

    /// `scenario` is a ready-made one or a file. Throws ScenarioError.
    EmulatedServer(const std::string& scenario, unsigned seed, Say say);

    /// Begins anew with another scenario and its own rules, at time 0. The faults of other origin stay. Throws
    /// ScenarioError, and changes nothing then.
    void Load(const std::string& scenario, double now);

    const std::string& ScenarioName() const { return m_scenario; }

    /// What goes on the wire for a command that comes now.
    Transmission Answer(const std::string& command, double now);

    /// The incubator as it stands now.
    Incubator& At(double now);

    IncubatorClock& Clock() { return m_clock; }

    /// Adds a rule of what goes wrong, or begins a fault of the device, and gives its number. `origin` says where it
    /// was written; messages name it. Throws FaultError.
    int Start(const std::string& fault, const std::string& origin, double now);

    /// False when no such fault is there.
    bool Stop(int number);

    /// Ends all faults of this origin.
    void StopAll(const std::string& origin);

    std::vector<FaultState> ListFaults(double now);

    std::vector<FaultStatus> NeverFired() const { return m_faults.NeverFired(); }

 private:
    /// A fault under its own number: the rules' and the device's have their own.
    struct Started {
        bool onDevice = false;
        int number = 0;
        std::string fault;
        std::string origin;
    };

    int Enter(Started started);
    void Forget(const std::function<bool(const Started&)>& which);

    unsigned m_seed;
    Say m_say;
    std::string m_scenario;                  // as it was named
    Scenario m_loaded;                       // as it began
    std::unique_ptr<Incubator> m_incubator;  // never none after the first Load
    Faults m_faults;
    IncubatorClock m_clock;
    std::map<int, Started> m_started;  // by number
    int m_last = 0;
};

}  // namespace emulator
