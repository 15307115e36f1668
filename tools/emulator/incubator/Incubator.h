#pragma once

#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>

#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"

namespace emulator {

/// The emulated server's products, and what it answers for them. Not locked: one thread.
class Incubator {
 public:
    Incubator(Scenario scenario, unsigned seed);

    /// Lets this much of the incubator's own time pass.
    void Advance(double seconds);

    /// Answers a command. Never fails: what it does not understand gets result code 3 and an error text.
    Answer Execute(const Command& command);

 private:
    /// A device's moving state.
    struct Motion {
        double value;
        double speed = 0.0;  // units a second
        double target;
    };

    const ProductScenario* FindProduct(std::optional<int> number) const;
    Motion& MotionOf(const ProductScenario& product, const DeviceScenario& device);
    double Noise(double deviation);

    static Answer ListKnown();
    Answer ListConnected() const;
    Answer ComPort(const Command& command);
    Answer ListDevices(const Command& command) const;
    Answer ListParameters(const Command& command) const;
    Answer CheckConnection(const Command& command) const;
    Answer Status() const;
    Answer Find(const Command& command);
    Answer FindStatus();
    Answer ReadCurrent(const Command& command);
    Answer ReadSetPoint(const Command& command);
    Answer WriteSetPoint(const Command& command);
    Answer ReadLimit(const Command& command, double DeviceScenario::* limit) const;
    Answer ReadParameter(const Command& command);
    Answer WriteParameter(const Command& command);
    static Answer Alarm(const Command& command);

    Scenario m_scenario;
    std::map<std::pair<int, int>, Motion> m_motions;       // by product and device
    std::map<std::pair<int, int>, std::string> m_written;  // parameters by product and number
    std::map<std::pair<int, int>, int> m_comPorts;         // by product and link, where somebody set one
    std::mt19937 m_random;
    double m_now = 0.0;        // seconds of the incubator's time
    double m_findStart = 0.0;  // of the running search
    double m_findEnd = 0.0;
};

}  // namespace emulator
