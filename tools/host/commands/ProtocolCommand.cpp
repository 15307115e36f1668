// Sets targets over time, as a file says.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ExitCode.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/ProtocolFile.h"
#include "commands/WatchRequest.h"
#include "commands/WatchRun.h"
#include "commands/WatchTargets.h"
#include "commands/Watching.h"
#include "judge/ProtocolPlan.h"
#include "judge/ProtocolRun.h"
#include "model/ChannelInfo.h"
#include "model/DeviceMessage.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Snapshot.h"
#include "show/Output.h"
#include "show/PlanTable.h"
#include "show/SnapshotJson.h"
#include "text/Duration.h"
#include "text/Text.h"
#include "text/Time.h"

namespace {

struct ProtocolRequest {
    WatchRequest watch;
    std::filesystem::path file;
    bool dryRun = false;
    bool resume = false;
    bool json = false;
};

/// Each line of an error with the file's name before it.
int RefuseFile(const std::filesystem::path& file, const std::string& lines) {
    for (std::size_t begin = 0; begin < lines.size();) {
        const std::size_t end = std::min(lines.find('\n', begin), lines.size());
        TellUser(PathText(file) + ": " + lines.substr(begin, end - begin));
        begin = end + 1;
    }
    return kExitBadFile;
}

/// A protocol on its way: row by row it sets what is due, tells what happens, and keeps its progress.
class Conductor {
 public:
    Conductor(const ProtocolRequest& request, ProtocolText text) : m_request(request), m_text(std::move(text)) {}

    /// A mistake ends the watch before any target is set.
    int Begin(WatchRun& watch);
    void TakeRow(const Snapshot& snapshot);
    bool IsOver() const { return m_bPlanned || (m_run && m_run->State() != ProtocolState::Running); }

    /// The exit code, from the watch's own.
    int Conclude(int watched);

 private:
    int BeginRun(WatchRun& watch, const ProtocolPlan& plan);
    void Set(const ProtocolOrder& order);
    void TakeAnswer(const ProtocolOrder& order, const device_message::TargetSet& set);
    void KeepProgress(Moment now);
    void Tell(const std::string& text) const;

    const ProtocolRequest& m_request;
    ProtocolText m_text;
    WatchRun* m_watch = nullptr;
    std::unique_ptr<ProtocolRun> m_run;
    bool m_bPlanned = false;  // a dry run, and all is told
    bool m_bRefused = false;  // by the device, which ended the run
    bool m_bNotKept = false;
    std::uint64_t m_nKeptRevision = 0;
    double m_dKept = 0.0;  // Moment::seconds
};

int Conductor::Begin(WatchRun& watch) {
    m_watch = &watch;
    const std::vector<ChannelInfo>& channels = watch.Now().channels;
    const auto plan = ResolveProtocol(m_text, channels);
    if (!plan) {
        return RefuseFile(m_request.file, plan.error);
    }
    if (!m_request.dryRun) {
        return BeginRun(watch, *plan);
    }
    m_bPlanned = true;
    Print(m_request.json ? PlanJson(*plan, channels) + "\n" : JoinLines(FormatPlan(*plan, channels)));
    return kExitDone;
}

int Conductor::BeginRun(WatchRun& watch, const ProtocolPlan& plan) {
    const Snapshot& snapshot = watch.Now();
    if (!m_request.resume) {
        m_run = std::make_unique<ProtocolRun>(plan, snapshot.channels);
        Tell("begins: " + std::to_string(plan.steps.size()) + " steps, at least " +
             FormatDuration(plan.ShortestSeconds()));
        return kExitDone;
    }
    const std::filesystem::path file = ProgressFile(m_request.file);
    const auto progress = ParseProgress(ReadSmallFile(file).value_or(""), plan, snapshot.device.name);
    if (!progress) {
        return RefuseFile(file, progress.error);
    }
    m_run = std::make_unique<ProtocolRun>(plan, snapshot.channels, *progress);
    Tell("goes on after step " + std::to_string(progress->begun) + " of " + std::to_string(plan.steps.size()) +
         ", where it was at " + FormatUtc(progress->savedMs));
    return kExitDone;
}

void Conductor::TakeRow(const Snapshot& snapshot) {
    if (!m_run) {
        return;
    }
    for (const ProtocolOrder& order : m_run->Update(ReadingsOf(snapshot), snapshot.when)) {
        Set(order);
    }
    for (const std::string& note : m_run->TakeNotes()) {
        Tell(note);
    }
    KeepProgress(snapshot.when);
}

void Conductor::Set(const ProtocolOrder& order) {
    m_watch->SetTarget(order.channel, order.value, [this, order](const auto& set) { TakeAnswer(order, set); });
}

void Conductor::TakeAnswer(const ProtocolOrder& order, const device_message::TargetSet& set) {
    const Snapshot& snapshot = m_watch->Now();
    const std::string sentence = DescribeTaken(snapshot.channels[order.channel], set);
    if (!set.accepted) {
        Tell("step " + std::to_string(order.step + 1) + ": " + sentence);
        m_run->Refused(order, snapshot.when);
        m_bRefused = m_run->State() == ProtocolState::Failed;
        return;
    }
    if (set.taken && !sentence.empty()) {
        m_bRefused = true;
        m_run->Fail("step " + std::to_string(order.step + 1) + ": " + sentence);
        return;
    }
    m_run->Took(order, set.taken.value_or(set.asked));
}

/// At once when something happened, else now and then: a crash loses no more of the clock than that.
void Conductor::KeepProgress(Moment now) {
    constexpr double kInterval = 10.0;
    if (m_run->Revision() == m_nKeptRevision && now.seconds - m_dKept < kInterval) {
        return;
    }
    m_nKeptRevision = m_run->Revision();
    m_dKept = now.seconds;
    const std::filesystem::path file = ProgressFile(m_request.file);
    const bool kept = ReplaceFile(file, ProgressJson(m_run->Progress(m_watch->Now().device.name, now)));
    if (!kept && !m_bNotKept) {
        m_watch->AddEvent(EventKind::Trouble, "the progress cannot be written to " + PathText(file));
    }
    m_bNotKept = !kept;
}

void Conductor::Tell(const std::string& text) const { m_watch->AddEvent(EventKind::Protocol, text); }

int Conductor::Conclude(int watched) {
    if (m_bPlanned) {
        return OutputFailed() ? kExitNotWritten : kExitDone;
    }
    if (!m_run) {
        return watched;  // it did not begin, and that is told already
    }
    KeepProgress(m_watch->Now().when);
    Tell(m_run->State() == ProtocolState::Running ? "ended before it was over: go on with --resume"
                                                  : m_run->Describe());
    if (m_run->State() == ProtocolState::Running) {
        return kExitInterrupted;
    }
    if (m_run->State() == ProtocolState::Failed) {
        return m_bRefused ? kExitBadTarget : kExitNotSettled;
    }
    return watched == kExitDone && m_bNotKept ? kExitNotWritten : watched;
}

/// An event as a line: of JSON for programs, else for people.
void ShowEvent(const Event& event, bool json) {
    if (json) {
        Print("{\"event\":" + EventJson(event) + "}\n");
        return;
    }
    const std::string subject = event.channel.empty() ? "" : " " + event.channel;
    const std::string text = event.text.empty() ? "" : ": " + event.text;
    Print(FormatLocal(event.when.utcMs) + "  " + EventKindName(event.kind) + subject + text + "\n");
}

/// Nothing, or why it must not begin over what another run left.
std::string CheckProgress(const ProtocolRequest& request) {
    const std::filesystem::path file = ProgressFile(request.file);
    const bool there = std::filesystem::exists(file);
    if (request.resume && !there) {
        return "there is nothing to go on from: " + PathText(file) + " is not there; leave out --resume to begin";
    }
    const bool over = there && IsOverProgress(ReadSmallFile(file).value_or(""));
    if (request.resume && over) {
        return "the protocol is over; leave out --resume to begin anew";
    }
    if (!request.resume && !request.dryRun && there && !over) {
        return PathText(file) +
               " is there: it was begun and is not over; go on with --resume, or delete it to begin anew";
    }
    return {};
}

int RunProtocol(const ProtocolRequest& request) {
    const auto json = ReadSmallFile(request.file);
    if (!json) {
        return RefuseFile(request.file, "cannot be read");
    }
    auto text = ParseProtocol(*json);
    if (!text) {
        return RefuseFile(request.file, text.error);
    }
    if (const std::string error = CheckProgress(request); !error.empty()) {
        return RefuseFile(request.file, error);
    }
    Conductor conductor(request, *text);
    WatchParts parts;
    parts.announce = AnnounceForPeople(request.json);
    parts.onOpened = [&](WatchRun& run) { return conductor.Begin(run); };
    parts.onRow = [&](const Snapshot& snapshot) { conductor.TakeRow(snapshot); };
    parts.onEvent = [&](const Event& event) {
        if (!request.dryRun) {
            ShowEvent(event, request.json);
        }
    };
    parts.isEnough = [&] { return conductor.IsOver(); };
    parts.needsNoView = true;
    parts.judge = [&](int watched) { return conductor.Conclude(watched); };
    return RunWatch(request.watch, parts);
}

}  // namespace

void AddProtocolCommand(Command& program) {
    Command command = program.AddCommand("protocol", "Sets targets over time, as a file says");
    const auto request = std::make_shared<ProtocolRequest>();
    command.AddOption("FILE", request->file, "The protocol, in JSON").Required();
    command.AddFlag("--dry-run", request->dryRun, "Checks it against the device, shows the plan, and sets nothing");
    command.AddFlag("--resume", request->resume, "Goes on where it was when it was ended, or crashed");
    AddDeviceOptions(command, request->watch);
    AddWatchOptions(command, request->watch);
    command.AddFlag("--json", request->json, "A line of JSON for each event, and for the plan");
    command.Footer(
        "A protocol:\n"
        "  {\"name\": \"Hypoxia\", \"settle\": \"1m\", \"within\": \"2h\",\n"
        "   \"steps\": [{\"at\": \"0s\",    \"channel\": \"H301-T\", \"value\": 37},\n"
        "             {\"at\": \"0s\",    \"channel\": \"O2\",     \"value\": 5, \"hold\": \"30m\"},\n"
        "             {\"at\": \"1h30m\", \"channel\": \"O2\",     \"value\": 1}]}\n"
        "\n"
        "\"at\" is a time of the protocol's own clock. It stands still while a step with \"hold\" settles (in band "
        "for\n"
        "\"settle\") and for that long after, and while the program does not run. Steps of one time are set together.\n"
        "\"within\": what has not settled by then ends the protocol with exit code 13; left out, it waits on.\n"
        "The progress is kept in FILE.progress.");
    command.Run([request] { return RunProtocol(*request); });
}
