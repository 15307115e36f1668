#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "incubator/DeviceFault.h"
#include "incubator/Motion.h"
#include "incubator/RunningFaults.h"
#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"

namespace emulator {

struct DeviceState {
    int product = 0;
    int device = 0;
    double value = 0.0;  // itself, not what its sensor shows
    double target = 0.0;
    double min = 0.0;
    double max = 0.0;
    double noise = 0.0;
    std::string error;    // not empty: its readings give this
    bool plugged = true;  // its product
};

/// How an incubator stands.
struct IncubatorState {
    double seconds = 0.0;  // of its own time
    bool serverUp = true;
    std::vector<DeviceState> devices;
    std::vector<StatusScenario> status;
    std::vector<RunningFault> faults;
};

/// The emulated server's products, and what it answers for them. Not locked: one thread.
class Incubator {
 public:
    /// `onEvent` hears of every event of the scenario that happens.
    explicit Incubator(Scenario scenario, unsigned seed, std::function<void(const EventScenario&)> onEvent = {});

    /// Lets this much of the incubator's own time pass. Events happen and faults end in their turn and at their time,
    /// whether it passes in one piece or in many.
    void Advance(double seconds);

    /// Seconds of the incubator's own time since it was made.
    double Time() const { return m_now; }

    /// Answers a command. Never fails: what it does not understand gets result code 3 and an error text. Nobody who
    /// finds the server away would be answered at all.
    Answer Execute(const Command& command);

    /// Whether the server is there at all. A fault can take it away for some time.
    bool IsServerUp() const { return !m_faults.Has(DeviceFault::Kind::Restart, 0, 0); }

    /// Begins a fault and gives its number; the same fault that runs already goes on for longer under its own. Throws
    /// DeviceFaultError when it names what the scenario does not have.
    int Begin(const DeviceFault& fault);

    /// Ends a fault before its time. False when none of that number runs.
    bool End(int number) { return m_faults.End(number); }

    std::vector<RunningFault> Running() const { return m_faults.List(); }

    /// Sets a device's value, target, noise or error. Throws SettingError.
    void Set(int product, int device, std::string_view what, std::string_view value);

    /// Sets a parameter's text. Throws SettingError.
    void SetParameter(int product, int number, const std::string& text);

    /// Sets a device's error in the status report; 0 takes it out. Throws SettingError.
    void SetStatus(int product, int device, int error);

    IncubatorState State() const;

 private:
    const ProductScenario* FindPlugged(std::optional<int> number) const;
    DeviceScenario* FindPlugged(std::optional<int> product, std::optional<int> device);
    bool IsPlugged(int product) const { return !m_faults.Has(DeviceFault::Kind::Unplug, product, 0); }
    Motion& MotionOf(int product, int device) { return m_motions.at({product, device}); }
    double Noise(double deviation);

    void MoveAll(double seconds);
    void HappenUntilNow();
    void Happen(const EventScenario& event);
    void StoreParameter(int product, int number, const std::string& text);

    static Answer ListKnown();
    Answer ListConnected() const;
    Answer ComPort(const Command& command);
    Answer ListDevices(const Command& command) const;
    Answer ListParameters(const Command& command) const;
    Answer CheckConnection(const Command& command) const;
    Answer Status() const;
    Answer Find(const Command& command);
    Answer FindStatus() const;
    Answer ReadCurrent(const Command& command);
    Answer ReadSetPoint(const Command& command);
    Answer WriteSetPoint(const Command& command);
    Answer ReadLimit(const Command& command, double DeviceScenario::* limit);
    Answer ReadParameter(const Command& command);
    Answer WriteParameter(const Command& command);
    static Answer Alarm(const Command& command);

    Scenario m_scenario;                              // its targets, errors and texts as they stand now
    std::map<std::pair<int, int>, Motion> m_motions;  // by product and device
    RunningFaults m_faults;
    std::size_t m_nextEvent = 0;
    std::mt19937 m_random;
    double m_now = 0.0;  // seconds of the incubator's time
    std::function<void(const EventScenario&)> m_onEvent;

    // What the server alone remembers.
    std::map<std::pair<int, int>, int> m_comPorts;  // by product and link, where somebody set one
    double m_findStart = 0.0;                       // of the running search
    double m_findEnd = 0.0;
};

}  // namespace emulator
