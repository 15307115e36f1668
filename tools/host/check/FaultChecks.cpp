// What a reply that is not as it should be comes to, for each kind of channel.

#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "check/Check.h"
#include "check/Incubator.h"
#include "check/Trial.h"
#include "check/Watched.h"
#include "oko/Result.h"
#include "text/Number.h"

namespace check {

namespace {

/// A channel, the number that the server has for it, and what the fault comes to.
struct Row {
    WatchedChannel channel;
    double value;
    Outcome outcome;
};

bool Fits(const CheckedRead& read, Outcome outcome, double value) {
    switch (outcome) {
        case Outcome::Taken:
            return read.result == oko::kSuccess && read.value == value;
        case Outcome::Kept:
            return read.result == oko::kSuccess && !read.value;
        case Outcome::Failed:
            return read.result == oko::kFailure && !read.value;
        case Outcome::Either:
            break;
    }
    const bool result = read.result == oko::kSuccess || read.result == oko::kFailure;
    return result && (!read.value || std::isfinite(*read.value));
}

std::string Expected(Outcome outcome, double value) {
    switch (outcome) {
        case Outcome::Taken:
            return "0 and " + FormatShortest(value);
        case Outcome::Kept:
            return "0 and nothing";
        case Outcome::Failed:
            return "-1 and nothing";
        case Outcome::Either:
            break;
    }
    return "0 or -1, and no number that is not finite";
}

using ReadSlot = CheckedRead (WatchedChannel::*)() const;
using NameSlot = std::string (WatchedChannel::*)() const;

void ExpectReads(const std::vector<Row>& rows, ReadSlot read, NameSlot name, const std::string& when, bool faulty) {
    for (const Row& row : rows) {
        const Outcome outcome = faulty ? row.outcome : Outcome::Taken;
        const CheckedRead got = (row.channel.*read)();
        Expect(Fits(got, outcome, row.value), (row.channel.*name)() + when, Expected(outcome, row.value),
               ReadText(got));
    }
}

/// Reads before, under and after the fault.
void ReadUnderFault(Trial& trial, const std::vector<Row>& rows, ReadSlot read, NameSlot name,
                    const std::vector<std::string>& patterns) {
    const std::string effect = trial.Which().fault.effect;
    ExpectReads(rows, read, name, "", false);
    std::vector<std::string> rules;
    rules.reserve(patterns.size());
    for (const std::string& pattern : patterns) {
        rules.push_back(std::string(pattern).append("; always; ").append(effect));
    }
    trial.Rules(rules);
    ExpectReads(rows, read, name, " under \"" + effect + "\"", true);
    trial.Rules({});
    ExpectReads(rows, read, name, " after \"" + effect + "\"", false);
}

void Read(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const Fault& fault = trial.Which().fault;
    device.Gas(1).Current();  // whose echo is a foreign one later
    ReadUnderFault(trial,
                   {{device.Temperature(0), incubator::kZone, fault.temperature},
                    {device.Temperature(1), incubator::kBase, fault.temperature},
                    {device.Gas(0), incubator::kCo2, fault.gas},
                    {device.Humidity(0), incubator::kHumidity, fault.humidity}},
                   &WatchedChannel::Current, &WatchedChannel::CurrentName, {"readcurval*", "bl-param-read*"});
    ReadUnderFault(trial,
                   {{device.Temperature(0), incubator::kZoneTarget, fault.temperature},
                    {device.Gas(0), incubator::kCo2Target, fault.gas},
                    {device.Humidity(0), incubator::kHumidityTarget, fault.humidity}},
                   &WatchedChannel::Target, &WatchedChannel::TargetName, {"readsetpoint*"});
}

constexpr Fault Alike(const char* effect, Outcome outcome) { return {effect, outcome, outcome, outcome}; }

/// A new target under the fault, and another one after it.
void SetTargetUnderFault(Trial& trial, const WatchedDevice& device) {
    const Fault& fault = trial.Which().fault;
    device.Gas(1).Current();
    trial.Commands();
    const std::array<Row, 3> rows{{{device.Temperature(0), 40.5, fault.temperature},
                                   {device.Gas(0), 7.25, fault.gas},
                                   {device.Humidity(0), 61.0, fault.humidity}}};
    const std::string effect = fault.effect;
    for (const Row& row : rows) {
        trial.Rules({"writesetpoint*; always; " + effect});
        const std::int32_t result = row.channel.SetTarget(row.value);
        const std::string what = row.channel.SetName(row.value) + " under \"" + effect + "\"";
        if (row.outcome == Outcome::Either) {
            Expect(result == oko::kSuccess || result == oko::kFailure, what, "0 or -1", std::to_string(result));
        } else {
            ExpectEqual(what, row.outcome == Outcome::Failed ? oko::kFailure : oko::kSuccess, result);
        }
        int writes = 0;
        for (const std::string& command : trial.Commands()) {
            writes += command.starts_with("writesetpoint") ? 1 : 0;
        }
        ExpectEqual(what + ", how often it was sent", 1, writes);

        trial.Rules({});
        ExpectDone(row.channel.SetName(row.value + 1.0), row.channel.SetTarget(row.value + 1.0));
        const CheckedRead target = row.channel.Target();
        Expect(Fits(target, Outcome::Taken, row.value + 1.0), row.channel.TargetName() + " after \"" + effect + "\"",
               Expected(Outcome::Taken, row.value + 1.0), ReadText(target));
        trial.Commands();
    }
}

void SetTarget(Trial& trial) { SetTargetUnderFault(trial, StartIncubator(trial)); }

/// The server has echoed a new target to the letter before.
void SetTargetOfExactServer(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    ExpectDone(device.Temperature(0).SetName(39.0), device.Temperature(0).SetTarget(39.0));
    SetTargetUnderFault(trial, device);
}

std::string LateBy(const Trial& trial, double replyTimeouts) {
    return "late " + std::to_string(static_cast<int>(trial.ReplyTimeoutSeconds() * replyTimeouts * 1000.0));
}

/// The late answer to one command comes while the next one waits for its own. Where the computer is so slow that an
/// answer still comes in time, or not even its own does, nothing wrong was read all the same.
void LateForAnother(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const auto expect = [](const WatchedChannel& channel, double own) {
        const CheckedRead read = channel.Current();
        Expect(Fits(read, Outcome::Failed, 0.0) || Fits(read, Outcome::Taken, own),
               channel.CurrentName() + " around a late answer", "-1 and nothing, or 0 and " + FormatShortest(own),
               ReadText(read));
    };
    trial.Rules({"readcurval 9; always; " + LateBy(trial, 1.4), "readcurval 12(0); always; " + LateBy(trial, 0.6)});
    for (int i = 0; i < 2; ++i) {
        expect(device.Temperature(0), incubator::kZone);
        expect(device.Gas(0), incubator::kCo2);
        expect(device.Humidity(0), incubator::kHumidity);
    }
}

void FirstToken(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    trial.Rules({"readcurval*; always; value 36.512 and more"});
    for (const WatchedChannel& channel : {device.Temperature(0), device.Gas(0), device.Humidity(0)}) {
        const CheckedRead read = channel.Current();
        Expect(Fits(read, Outcome::Taken, 36.512), channel.CurrentName(), "0 and 36.512", ReadText(read));
    }
}

/// What the plug-in cannot read back is taken back.
void ReadBackFails(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const WatchedChannel zone = device.Temperature(0);
    zone.Target();
    trial.Commands();
    trial.Rules({"readsetpoint 9 0 -1; always; empty"});
    ExpectDone(zone.SetName(40.5), zone.SetTarget(40.5));
    ExpectCommands(zone.SetName(40.5), {"writesetpoint 9 0 40.5", "readsetpoint 9 0 -1", "writesetpoint 9 0 37.1"},
                   trial.Commands());
}

constexpr auto kTaken = Outcome::Taken;
constexpr auto kKept = Outcome::Kept;
constexpr auto kFailed = Outcome::Failed;
constexpr auto kEither = Outcome::Either;

constexpr const char* kLoggedAndTaken = "Result codes 1 and 2 are logged; the value counts.";
constexpr const char* kRefused = "Result code 3 gives -1, and what was to be read stays as it was.";
constexpr const char* kOtherCode = "Result codes from 4 on give 0 without a value.";
constexpr const char* kErrorText = "An error text gives -1, and what was to be read stays as it was.";
constexpr const char* kNotANumber = "\"nan\" is no value: a temperature's read fails, the others' leave the number.";
constexpr const char* kNotFinite = "An infinite number is no value: 0, and the number stays as it was.";
constexpr const char* kNothing = "A reply without a payload is no value: 0, and the number stays as it was.";
constexpr const char* kEmpty = "An empty datagram is no answer: -1.";
constexpr const char* kLong = "A reply that is longer than it may be is no answer: -1.";
constexpr const char* kTruncated = "Half a reply has no value: 0, and the number stays as it was.";
constexpr const char* kGarbage = "Random bytes give 0 or -1, and never a number that is not finite.";
constexpr const char* kNoSeparator = "A reply without separators has no value: 0, and the number stays as it was.";
constexpr const char* kNoReturn = "A reply without its end has no value: 0, and the number stays as it was.";
constexpr const char* kLate = "A reply that takes its time is taken.";
constexpr const char* kTwice = "A reply that comes twice is taken once, and never for the next command's.";
constexpr const char* kSilent = "A silent server gives -1 once the ReplyTimeout has passed.";
constexpr const char* kForeign =
    "The echo of an earlier command, from a server that echoes to the letter, is no answer to this one: -1, and never "
    "a reading.";
constexpr const char* kLoose = "An echo that is nobody's is taken: a server may echo loosely.";

constexpr const char* kForeignEcho = "echo readcurval 12(1)";
constexpr const char* kLooseEcho = "echo readcurval 99(9)";

constexpr std::array<Check, 21> kReadFaultChecks{{
    {"read/code-1", "incubator", Needs::Nothing, Alike("code 1", kTaken), Read, kLoggedAndTaken},
    {"read/code-2", "incubator", Needs::Nothing, Alike("code 2", kTaken), Read, kLoggedAndTaken},
    {"read/code-3", "incubator", Needs::Nothing, Alike("code 3", kFailed), Read, kRefused},
    {"read/code-4", "incubator", Needs::Nothing, Alike("code 4", kKept), Read, kOtherCode},
    {"read/error", "incubator", Needs::Nothing, Alike("error no sensor", kFailed), Read, kErrorText},
    {"read/nan", "incubator", Needs::Nothing, {"value nan", kFailed, kKept, kKept}, Read, kNotANumber},
    {"read/infinite", "incubator", Needs::Nothing, Alike("value inf", kKept), Read, kNotFinite},
    {"read/no-payload", "incubator", Needs::Nothing, Alike("value", kKept), Read, kNothing},
    {"read/empty", "incubator", Needs::Nothing, Alike("empty", kFailed), Read, kEmpty},
    {"read/long", "incubator", Needs::Nothing, Alike("long 200", kFailed), Read, kLong},
    {"read/truncate", "incubator", Needs::Nothing, Alike("truncate 5", kKept), Read, kTruncated},
    {"read/garbage", "incubator", Needs::Nothing, Alike("garbage 30", kEither), Read, kGarbage},
    {"read/no-separator", "incubator", Needs::Nothing, Alike("no-separator", kKept), Read, kNoSeparator},
    {"read/no-return", "incubator", Needs::Nothing, Alike("no-return", kKept), Read, kNoReturn},
    {"read/late", "incubator", Needs::Nothing, Alike("late 30", kTaken), Read, kLate},
    {"read/twice", "incubator", Needs::Nothing, Alike("twice", kTaken), Read, kTwice},
    {"read/silent", "incubator", Needs::ReplyTimeout, Alike("silent", kFailed), Read, kSilent},
    {"read/foreign-echo", "incubator", Needs::ReplyTimeout, Alike(kForeignEcho, kFailed), Read, kForeign},
    {"read/loose-echo", "incubator", Needs::Nothing, Alike(kLooseEcho, kTaken), Read, kLoose},
    {"read/late-for-another",
     "incubator",
     Needs::ReplyTimeout,
     {},
     LateForAnother,
     "The late reply to an earlier command is never taken for a later one's."},
    {"read/first-token", "incubator", Needs::Nothing, {}, FirstToken, "A value ends at the first blank."},
}};

constexpr const char* kCodeAlone = "Of the reply to a new target only its code counts, and it is sent once.";

constexpr std::array<Check, 17> kWriteFaultChecks{{
    {"set-target/code-1", "incubator", Needs::Nothing, Alike("code 1", kTaken), SetTarget,
     "Result codes 1 and 2 are logged; the target counts."},
    {"set-target/code-2", "incubator", Needs::Nothing, Alike("code 2", kTaken), SetTarget,
     "Result codes 1 and 2 are logged; the target counts."},
    {"set-target/code-3", "incubator", Needs::Nothing, Alike("code 3", kFailed), SetTarget, "Result code 3 gives -1."},
    {"set-target/code-4", "incubator", Needs::Nothing, Alike("code 4", kTaken), SetTarget, kCodeAlone},
    {"set-target/error", "incubator", Needs::Nothing, Alike("error out of range", kTaken), SetTarget, kCodeAlone},
    {"set-target/value", "incubator", Needs::Nothing, Alike("value 12", kTaken), SetTarget, kCodeAlone},
    {"set-target/empty", "incubator", Needs::Nothing, Alike("empty", kFailed), SetTarget, kEmpty},
    {"set-target/long", "incubator", Needs::Nothing, Alike("long 200", kFailed), SetTarget, kLong},
    {"set-target/truncate", "incubator", Needs::Nothing, Alike("truncate 5", kTaken), SetTarget, kCodeAlone},
    {"set-target/garbage", "incubator", Needs::Nothing, Alike("garbage 30", kEither), SetTarget,
     "Random bytes give 0 or -1, and the target is sent once."},
    {"set-target/no-separator", "incubator", Needs::Nothing, Alike("no-separator", kTaken), SetTarget, kCodeAlone},
    {"set-target/no-return", "incubator", Needs::Nothing, Alike("no-return", kTaken), SetTarget, kCodeAlone},
    {"set-target/late", "incubator", Needs::Nothing, Alike("late 30", kTaken), SetTarget, kLate},
    {"set-target/twice", "incubator", Needs::Nothing, Alike("twice", kTaken), SetTarget, kTwice},
    {"set-target/silent", "incubator", Needs::ReplyTimeout, Alike("silent", kFailed), SetTarget, kSilent},
    {"set-target/foreign-echo", "incubator", Needs::ReplyTimeout, Alike(kForeignEcho, kFailed), SetTargetOfExactServer,
     kForeign},
    {"set-target/not-read-back",
     "incubator",
     Needs::Nothing,
     {},
     ReadBackFails,
     "A target temperature that cannot be read back is taken back, and the result is 0."},
}};

}  // namespace

std::span<const Check> ReadFaultChecks() { return kReadFaultChecks; }
std::span<const Check> WriteFaultChecks() { return kWriteFaultChecks; }

}  // namespace check
