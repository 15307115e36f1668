// Sets one target, and waits until its value has come there.

#include <cmath>
#include <cstddef>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "ExitCode.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/WatchRequest.h"
#include "commands/WatchRun.h"
#include "commands/WatchTargets.h"
#include "commands/Watching.h"
#include "judge/Band.h"
#include "judge/Settling.h"
#include "model/ChannelInfo.h"
#include "model/DeviceMessage.h"
#include "model/FindChannel.h"
#include "model/Moment.h"
#include "model/Snapshot.h"
#include "platform/Now.h"
#include "show/OrNull.h"
#include "show/Output.h"
#include "text/Duration.h"
#include "text/Number.h"

namespace {

struct SetRequest {
    WatchRequest watch;
    std::string name;
    double value = 0.0;
    bool wait = false;
    double settleSeconds = 60.0;
    double withinSeconds = 1800.0;
    bool json = false;
};

/// What became of it; told when the device is closed.
struct SetOutcome {
    std::optional<int> exitCode;  // none: nothing is decided yet
    std::string sentence;
    DeviceInfo device;
    std::string channel;
    std::optional<double> taken;
    bool clamped = false;
    std::optional<bool> settled;  // none: nobody waited
    std::optional<double> current;
    double seconds = 0.0;  // from the target on

    void Decide(int code, const std::string& text) {
        exitCode = code;
        sentence = text;
    }
};

std::string OutcomeJson(const SetRequest& request, const SetOutcome& outcome, int exitCode) {
    const nlohmann::ordered_json json{{"channel", outcome.channel.empty() ? request.name : outcome.channel},
                                      {"asked", request.value},
                                      {"taken", OrNull(outcome.taken)},
                                      {"clamped", outcome.clamped},
                                      {"settled", OrNull(outcome.settled)},
                                      {"current", OrNull(outcome.current)},
                                      {"seconds", outcome.seconds},
                                      {"device", outcome.device.name},
                                      {"simulated", outcome.device.simulated},
                                      {"text", outcome.sentence},
                                      {"exitCode", exitCode}};
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

/// One target on its way: asked for when the device is open, then watched row by row.
class Setting {
 public:
    explicit Setting(const SetRequest& request) : m_request(request) {}

    /// A mistake ends the watch before anything is sent.
    int Begin(WatchRun& run);
    void TakeRow(const Snapshot& snapshot);
    bool IsOver() const { return m_outcome.exitCode.has_value(); }
    const SetOutcome& Result() const { return m_outcome; }

 private:
    int Refuse(int code, const std::string& sentence) {
        m_outcome.Decide(code, sentence);
        return code;
    }
    int TakeAnswer(const ChannelInfo& channel, const device_message::TargetSet& set);

    const SetRequest& m_request;
    SetOutcome m_outcome;
    std::size_t m_channel = 0;
    Moment m_begun;
    std::optional<Settling> m_settling;
};

int Setting::Begin(WatchRun& run) {
    const Snapshot& snapshot = run.Now();
    m_outcome.device = snapshot.device;
    const auto found = FindChannelWithTarget(snapshot.channels, m_request.name);
    if (!found) {
        return Refuse(kExitBadTarget, found.error);
    }
    m_channel = *found;
    const ChannelInfo channel = snapshot.channels[m_channel];
    m_outcome.channel = channel.key;
    if (m_request.wait && !HasTolerances(channel)) {
        return Refuse(kExitBadTarget,
                      channel.key + " has no tolerances, so nobody can see whether it settles: leave out --wait");
    }
    const auto answer = run.SetTargetAndWait(m_channel, m_request.value);
    m_begun = Now();
    if (!answer) {
        const bool endedWaiting = m_request.wait && !run.IsSilent();
        return Refuse(endedWaiting ? kExitNotSettled : kExitNoAnswer, DescribeUnanswered(run, channel.key));
    }
    return TakeAnswer(channel, *answer);
}

int Setting::TakeAnswer(const ChannelInfo& channel, const device_message::TargetSet& set) {
    const std::string sentence = DescribeTaken(channel, set);
    if (!set.accepted) {
        return Refuse(kExitBadTarget, sentence);
    }
    m_outcome.taken = set.taken;
    m_outcome.clamped = set.taken && !sentence.empty();
    if (m_outcome.clamped && m_request.watch.strict) {
        return Refuse(kExitClamped, sentence);
    }
    if (!sentence.empty()) {
        std::cerr << "oko-host: " << sentence << std::endl;
    }
    if (!m_request.wait) {
        m_outcome.Decide(kExitDone, channel.key + " is to go to " + FormatShortest(set.taken.value_or(set.asked)) +
                                        " " + UnitOf(channel.kind));
        return kExitDone;
    }
    m_settling.emplace(m_request.settleSeconds, m_request.withinSeconds, m_begun);
    return kExitDone;
}

void Setting::TakeRow(const Snapshot& snapshot) {
    if (!m_settling || IsOver()) {
        return;
    }
    const ChannelInfo& channel = snapshot.channels[m_channel];
    m_outcome.current = snapshot.statuses[m_channel].reading.current;
    m_outcome.seconds = snapshot.when.seconds - m_begun.seconds;
    m_outcome.settled = false;
    const Band band = BandAround(m_outcome.taken.value_or(m_request.value), channel);
    const SettlingState state = m_settling->Update(m_outcome.current, band, snapshot.when);
    const std::string where = m_settling->Describe(channel);
    if (state == SettlingState::Settled) {
        m_outcome.settled = true;
        m_outcome.Decide(kExitDone,
                         "settled after " + FormatDuration(std::round(m_outcome.seconds * 10.0) / 10.0) + ": " + where);
    } else if (state == SettlingState::GivenUp) {
        m_outcome.Decide(kExitNotSettled,
                         "not settled within " + FormatDuration(m_request.withinSeconds) + ": " + where);
    } else {
        m_outcome.sentence = "ended before it settled: " + where;
    }
}

/// Tells the outcome. Other channels' missing data are none of this command's business.
int Conclude(const SetRequest& request, const SetOutcome& outcome, int watched) {
    if (outcome.device.name.empty()) {
        return watched;  // it was not opened, and that is told already
    }
    const int exitCode = outcome.exitCode.value_or(request.wait ? kExitNotSettled : watched);
    if (exitCode != kExitDone && !outcome.sentence.empty()) {
        std::cerr << "oko-host: " << outcome.sentence << std::endl;
    }
    try {
        if (request.json) {
            Print(OutcomeJson(request, outcome, exitCode));
        } else if (exitCode == kExitDone) {
            Print(outcome.sentence + "\n");
        }
    } catch (const OutputError& error) {
        std::cerr << "oko-host: " << error.what() << std::endl;
    }
    return exitCode == kExitDone && OutputFailed() ? kExitNotWritten : exitCode;
}

int RunSet(const SetRequest& request) {
    Setting setting(request);
    WatchParts parts;
    parts.announce = AnnounceForPeople(request.json);
    parts.onOpened = [&](WatchRun& run) { return setting.Begin(run); };
    parts.onRow = [&](const Snapshot& snapshot) { setting.TakeRow(snapshot); };
    parts.isEnough = [&] { return setting.IsOver(); };
    parts.needsNoView = true;
    parts.judge = [&](int watched) { return Conclude(request, setting.Result(), watched); };
    return RunWatch(request.watch, parts);
}

void AddWaiting(Command& command, SetRequest& request) {
    command.AddFlag("--wait", request.wait, "Waits until the value has settled");
    AddDuration(command, "--settle", request.settleSeconds, "In band for that long has settled; 60s when left out");
    AddDuration(command, "--within", request.withinSeconds, "Gives up after that; 30m when left out");
}

}  // namespace

void AddSetCommand(Command& program) {
    Command command = program.AddCommand("set", "Sets a target, and waits for it if asked to");
    const auto request = std::make_shared<SetRequest>();
    command.AddOption("NAME", request->name, "The channel: a name, or KIND:NAME").Required();
    const auto takeValue = [request](const std::string& text) {
        const auto value = ParseNumber(text);
        if (value) {
            request->value = *value;
        }
        return value.error;
    };
    command.AddOption("VALUE", takeValue, "The target").Required();
    AddDeviceOptions(command, request->watch);
    AddDuration(command, "--every", request->watch.device.intervalSeconds, "Time between two reads; 1s when left out");
    AddWaiting(command, *request);
    command.AddFlag("--strict", request->watch.strict, "A target that the device changes is a failure");
    command.AddFlag("--json", request->json, "The outcome as JSON");
    command.Footer(
        "Examples:\n"
        "  oko-host set H301-T 38.5\n"
        "  oko-host set gas:CO2 7 --device incubator --wait --settle 2min --within 1h\n"
        "\n"
        "In band: no further from the target than the channel's tolerances. A value outside and a read without a "
        "value\n"
        "start the time over. Exit code 13: it did not settle.");
    command.Run([request] { return RunSet(*request); });
}
