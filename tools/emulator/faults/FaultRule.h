#pragma once

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "faults/Pattern.h"
#include "incubator/DeviceFault.h"
#include "protocol/Answer.h"

namespace emulator {

/// What goes wrong on purpose, as rules of three parts: "readcurval 9*; nth 3; code 2".

/// A rule that cannot be understood; the text says which part and why, and not where the rule came from.
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
        Value,        // this text in place of the payload
        Device        // nothing of the reply: a fault of the device begins, before the command is answered
    };
    Kind kind = Kind::Silent;
    int number = 0;
    std::string text;
    std::optional<DeviceFault> device;
};

/// An effect on the wire as it is written.
struct EffectWord {
    enum class Argument { None, Number, Text };
    std::string_view word;
    FaultEffect::Kind kind;
    Argument argument = Argument::None;
    int most = 0;  // of a number
    std::string_view example;
    std::string_view description;  // of the reply
};

constexpr int kHighestCode = 999;     // no server says more than one digit, but what would a client make of it?
constexpr int kLatestReply = 60'000;  // ms
constexpr int kHighestCount = 1'000'000'000;

inline constexpr std::array<EffectWord, 13> kEffectWords{{
    {"code", FaultEffect::Kind::Code, EffectWord::Argument::Number, kHighestCode, "code 2", "has this result code"},
    {"error", FaultEffect::Kind::Error, EffectWord::Argument::Text, 0, "error TEXT",
     "has the payload \"e\" and the text"},
    {"value", FaultEffect::Kind::Value, EffectWord::Argument::Text, 0, "value TEXT", "has this payload"},
    {"empty", FaultEffect::Kind::Empty, EffectWord::Argument::None, 0, "empty", "is a datagram without content"},
    {"long", FaultEffect::Kind::Long, EffectWord::Argument::Number, kLongestDatagram, "long 200",
     "is filled up to 200 bytes"},
    {"truncate", FaultEffect::Kind::Truncate, EffectWord::Argument::Number, kLongestDatagram, "truncate 5",
     "is cut to its first 5 bytes"},
    {"garbage", FaultEffect::Kind::Garbage, EffectWord::Argument::Number, kLongestDatagram, "garbage 30",
     "is 30 random bytes"},
    {"echo", FaultEffect::Kind::Echo, EffectWord::Argument::Text, 0, "echo TEXT", "echoes another command"},
    {"no-separator", FaultEffect::Kind::NoSeparator, EffectWord::Argument::None, 0, "no-separator", "lacks its \"_\""},
    {"no-return", FaultEffect::Kind::NoReturn, EffectWord::Argument::None, 0, "no-return", "lacks its carriage return"},
    {"late", FaultEffect::Kind::Late, EffectWord::Argument::Number, kLatestReply, "late 250", "comes 250 ms late"},
    {"silent", FaultEffect::Kind::Silent, EffectWord::Argument::None, 0, "silent", "does not come"},
    {"twice", FaultEffect::Kind::Twice, EffectWord::Argument::None, 0, "twice", "comes twice"},
}};

struct FaultRule {
    std::string source;  // as it was written
    std::string origin;  // where: "--fault 2", "my.json/faults/0"
    Pattern pattern;     // of the whole command
    FaultTrigger trigger;
    FaultEffect effect;
};

/// Refuses what could never take effect, too: a pattern that no command fits, a window that is empty, a number that is
/// out of its range. Throws FaultError.
FaultRule ParseFaultRule(std::string_view text, std::string origin = {});

}  // namespace emulator
