#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace check {

class Trial;

/// One sentence of the contract, and how it is tried.

/// What a read or a write of a channel comes to.
enum class Outcome {
    Taken,   // 0, and the server's value; of a new target only the 0
    Kept,    // 0, and what was to be read is as it was
    Failed,  // -1, and what was to be read is as it was
    Either   // 0 or -1; what was to be read is as it was, or a finite number
};

/// Something that goes wrong with a reply, in the words of the emulator's rules, and what it comes to.
struct Fault {
    const char* effect = nullptr;
    Outcome temperature = Outcome::Taken;
    Outcome gas = Outcome::Taken;
    Outcome humidity = Outcome::Taken;
};

/// What has to be given for a check to mean anything; without it the check is skipped.
enum class Needs {
    Nothing,
    ReplyTimeout,  // the library waits for ever else, on purpose
    NoServer,      // none that is installed: Init would start it
    Windows,       // the system's message queues and windows
};

struct Check {
    const char* name;    // "read-current/code-3": a group and what it is about
    const char* device;  // "simulator", "incubator", "both", or "-"
    Needs needs;
    Fault fault;  // for the checks that try one
    void (*run)(Trial& trial);
    const char* holds;   // the sentence
    bool boxes = false;  // the library has to show a box, which is answered here; elsewhere it is left standing
};

/// By subject, in the order in which they run.
std::span<const Check> ExportChecks();
std::span<const Check> LifeChecks();
std::span<const Check> StartChecks();
std::span<const Check> ChannelChecks();
std::span<const Check> ReadFaultChecks();
std::span<const Check> WriteFaultChecks();
std::span<const Check> SimulatorChecks();

/// All of them.
std::vector<const Check*> AllChecks();

/// Those that fit one of the patterns, "*" standing for any run of characters; all of them where there is none.
std::vector<const Check*> ChooseChecks(const std::vector<const Check*>& checks, const std::vector<std::string>& only);

/// Null where there is none of that name.
const Check* FindCheck(std::string_view name);

}  // namespace check
