#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "faults/FaultRule.h"
#include "protocol/Answer.h"

namespace emulator {

/// A rule of a run and what came of it.
struct FaultStatus {
    int number = 0;
    std::string source;      // the rule as it was written
    std::string origin;      // where it was written: "--fault 2"
    std::int64_t met = 0;    // commands that fitted its pattern
    std::int64_t fired = 0;  // of these, those on which it took effect
};

/// The rules of a run, which come and go while it lasts. Not locked: one thread.
class Faults {
 public:
    using OnFire = std::function<void(const FaultRule& rule, std::string_view command)>;

    /// `onFire` hears of every rule that fires, with the command. The same seed repeats a run.
    explicit Faults(unsigned seed, OnFire onFire = {});

    /// Gives the rule's number. Numbers count from 1, and none is given twice.
    int Add(FaultRule rule);

    /// False when there is no such rule, or no more.
    bool Remove(int number);

    /// The rules that are there, in the order in which they came.
    std::vector<FaultStatus> List() const;

    /// The rules that never fired, those that were removed among them.
    std::vector<FaultStatus> NeverFired() const;

    /// Meets a command, `seconds` after the start: the effects of all rules that fire on it, in the rules' order.
    std::vector<FaultEffect> Fire(const std::string& command, double seconds);

    /// What goes on the wire for a command's answer under these effects, which add up.
    Transmission Transmit(const std::vector<FaultEffect>& effects, const std::string& command, const Answer& answer);

    /// The same for a reply that has no such parts: only what acts on bytes and on their way has an effect.
    Transmission TransmitBytes(const std::vector<FaultEffect>& effects, const std::string& datagram);

 private:
    struct Rule {
        FaultRule rule;
        FaultStatus status;
    };

    bool Fires(const Rule& rule, double seconds);
    void Distort(const FaultEffect& effect, std::string& datagram);

    std::vector<Rule> m_rules;
    std::vector<FaultStatus> m_removed;  // those that never fired
    int m_last = 0;                      // number
    std::mt19937 m_random;
    OnFire m_onFire;
};

/// A sentence for people about a rule that never fired: whether no command fitted its pattern, or its trigger never
/// came.
std::string SayNeverFired(const FaultStatus& status);

}  // namespace emulator
