#pragma once

#include <cstddef>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/Answer.h"

namespace emulator {

/// What goes wrong on purpose, as rules of three parts: "readcurval 9*; nth 3; code 2".

/// A rule that cannot be understood; the text says which part and why.
class FaultError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// When a rule fires, of the commands that fit its pattern.
struct FaultTrigger {
    enum class Kind { Always, Nth, EveryNth, Window, Chance };
    Kind kind = Kind::Always;
    double first = 0.0;   // the N, the window's start in seconds, or the chance from 0 to 1
    double second = 0.0;  // the window's end in seconds
};

struct FaultEffect {
    enum class Kind {
        Code,         // this result code
        Error,        // an error text in place of the payload
        Empty,        // a datagram without content
        Long,         // filled up to this many bytes
        Truncate,     // cut to this many bytes
        Garbage,      // this many random bytes
        Echo,         // this text in place of the echo
        NoSeparator,  // without any "_"
        NoReturn,     // without the carriage return
        Late,         // by this many milliseconds
        Silent,       // no answer
        Twice,        // the same answer again
        Value         // this text in place of the payload
    };
    Kind kind = Kind::Silent;
    int number = 0;
    std::string text;
};

struct FaultRule {
    std::string source;   // as it was written
    std::string pattern;  // of the whole command; "*" stands for any run of characters
    FaultTrigger trigger;
    FaultEffect effect;
};

/// Throws FaultError.
FaultRule ParseFaultRule(std::string_view text);

/// Whether a command fits a pattern.
bool FitsPattern(std::string_view command, std::string_view pattern);

/// The rules of a run and how often each was met.
class Faults {
 public:
    /// `onFire` hears of every rule that fires, with the command.
    Faults(std::vector<FaultRule> rules, unsigned seed,
           std::function<void(const FaultRule& rule, std::string_view command)> onFire);

    /// What goes on the wire for an answer, `seconds` after the start.
    Transmission Apply(const std::string& command, const Answer& answer, double seconds);

 private:
    bool Fires(std::size_t index, double seconds);
    void Distort(const FaultEffect& effect, std::string& datagram);

    std::vector<FaultRule> m_rules;
    std::vector<int> m_met;  // by rule
    std::mt19937 m_random;
    std::function<void(const FaultRule&, std::string_view)> m_onFire;
};

}  // namespace emulator
