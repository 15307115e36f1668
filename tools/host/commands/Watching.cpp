#include "commands/Watching.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ExitCode.h"
#include "commands/AlarmActions.h"
#include "commands/WatchRequest.h"
#include "commands/WatchRun.h"
#include "commands/WatchTargets.h"
#include "judge/Alarm.h"
#include "judge/AlarmRule.h"
#include "keep/CsvLog.h"
#include "model/Event.h"
#include "model/Snapshot.h"
#include "platform/Interrupt.h"
#include "platform/Now.h"
#include "show/Output.h"

void TellUser(const std::string& sentence) { std::cerr << "oko-host: " << sentence << std::endl; }

namespace {

/// The watch goes on without a view that cannot be written: it may have a log to keep.
template <class Action>
void Show(const Action& action) {
    try {
        action();
    } catch (const OutputError& error) {
        TellUser(error.what());
    }
}

/// What becomes of rows and events, in the order in which they must not be missed: the log, then the view. What comes
/// before the device is open waits for the log to begin.
class Sinks {
 public:
    Sinks(WatchRun& run, const WatchParts& parts) : m_run(run), m_parts(parts) {
        run.OnAlarms([this](const std::vector<AlarmChange>& changes) { Act(changes); });
        run.AddSink([this](const Snapshot& snapshot) { TakeRow(snapshot); },
                    [this](const Event& event) { TakeEvent(event); });
    }

    /// Begins the log. Throws CsvError and FileError.
    void BeginLog();

    bool Written() const { return !OutputFailed() && (!m_log || m_log->LostRows() == 0); }

 private:
    void Act(const std::vector<AlarmChange>& changes);
    void TakeRow(const Snapshot& snapshot);
    void TakeEvent(const Event& event);
    void ShowEvent(const Event& event) const;
    void ShowTrouble(const std::optional<Event>& trouble) const;

    WatchRun& m_run;
    const WatchParts& m_parts;
    AlarmActions m_actions{{m_run.Request().beep, m_run.Request().onAlarm}};
    std::vector<Event> m_early;
    std::optional<CsvLog> m_log;
};

void Sinks::BeginLog() {
    const WatchRequest& request = m_run.Request();
    if (request.csv.empty()) {
        return;
    }
    m_log.emplace(request.csv, m_run.Now(), request.append ? CsvLog::IfThere::Append : CsvLog::IfThere::Refuse);
    for (const Event& event : m_early) {
        ShowTrouble(m_log->AddEvent(event));
    }
    m_early.clear();
}

void Sinks::Act(const std::vector<AlarmChange>& changes) {
    if (const auto trouble = m_actions.Act(changes, m_run.Now())) {
        m_run.AddEvent(EventKind::Trouble, *trouble);
    }
}

void Sinks::TakeRow(const Snapshot& snapshot) {
    if (m_log) {
        ShowTrouble(m_log->AddSample(snapshot));
        m_run.SetLogWriteErrors(m_log->LostRows());
    }
    Show([&] {
        if (m_parts.onRow) {
            m_parts.onRow(snapshot);
        }
    });
}

void Sinks::TakeEvent(const Event& event) {
    if (m_log) {
        ShowTrouble(m_log->AddEvent(event));
    } else if (!m_run.Request().csv.empty()) {
        m_early.push_back(event);
    }
    ShowEvent(event);
}

void Sinks::ShowEvent(const Event& event) const {
    Show([&] {
        if (m_parts.onEvent) {
            m_parts.onEvent(event);
        }
    });
}

/// The log's own: it has written it where it can.
void Sinks::ShowTrouble(const std::optional<Event>& trouble) const {
    if (trouble) {
        Event event = *trouble;
        event.id = m_run.TakeEventId();
        ShowEvent(event);
    }
}

/// The log and the alarms, then the targets, then what the command does once the device is open.
int Begin(WatchRun& run, const WatchParts& parts, Sinks& sinks) {
    const auto rules = ResolveAlarms(run.Request().alarms, run.Now().channels);
    if (!rules) {
        TellUser(rules.error);
        return kExitBadTarget;
    }
    sinks.BeginLog();
    run.WatchFor(*rules);
    const TargetsOutcome targets = SetTargets(run, run.Request().targets, run.Request().strict);
    std::ranges::for_each(targets.sentences, TellUser);
    if (targets.exitCode != kExitDone && targets.exitCode != kExitClamped) {
        return targets.exitCode;
    }
    const int code = parts.onOpened ? parts.onOpened(run) : kExitDone;
    return code != kExitDone ? code : targets.exitCode;
}

void RunRows(WatchRun& run, const WatchParts& parts) {
    const double begun = Now().seconds;
    // A row that was begun before the targets were set may show a channel as it was before.
    const bool oldRow = !run.Request().targets.empty() && run.IsWithinRound();
    const std::uint64_t rowsBefore = run.Now().row + (oldRow ? 1 : 0);
    const auto& seconds = run.Request().seconds;
    const auto& rows = run.Request().rows;
    run.RunUntil([&] {
        const bool over =
            (seconds && Now().seconds - begun >= *seconds) || (rows && run.Now().row >= rowsBefore + *rows);
        // Nobody reads what is shown, and nothing else is asked for.
        const bool useless =
            !parts.needsNoView && OutputFailed() && run.Request().csv.empty() && run.Request().onAlarm.empty();
        return over || useless || (parts.isEnough && parts.isEnough());
    });
}

}  // namespace

std::function<void(const std::vector<std::string>&)> AnnounceForPeople(bool outputIsForPrograms) {
    if (outputIsForPrograms) {
        return [](const std::vector<std::string>& lines) { std::cerr << JoinLines(lines) << std::flush; };
    }
    return [](const std::vector<std::string>& lines) { Print(JoinLines(lines)); };
}

int JudgeEnd(const Snapshot& snapshot, bool written) {
    if (std::ranges::any_of(snapshot.alarms, [](const auto& alarm) { return alarm.phase == AlarmPhase::On; })) {
        return kExitAlarm;
    }
    if (std::ranges::any_of(snapshot.statuses, [](const auto& status) { return !status.reading.Valid(); })) {
        return kExitDataMissing;
    }
    return written ? kExitDone : kExitNotWritten;
}

int RunWatch(WatchRequest request, const WatchParts& parts) {
    CatchInterrupts();
    if (const Readiness readiness = ReadSettingsInto(request); readiness.exitCode != kExitDone) {
        TellUser(readiness.sentence);
        return readiness.exitCode;
    }
    if (!request.csv.empty() && !request.append && std::filesystem::is_regular_file(request.csv)) {
        TellUser(request.csv.string() + " is there already: name another file, or go on in it with --append");
        return kExitNotWritten;
    }
    if (parts.announce) {
        parts.announce(Announcement(request));
    }
    WatchRun run(std::move(request));
    Sinks sinks(run, parts);
    run.SetMessageSink(parts.onMessage);
    int code = run.Open();
    if (code == kExitDone) {
        code = Begin(run, parts, sinks);
        if (code == kExitDone || code == kExitClamped) {
            RunRows(run, parts);
            // Who asked for no values misses none.
            const bool judged = run.Request().device.readChannels;
            const int end = judged ? JudgeEnd(run.Now(), sinks.Written()) : kExitDone;
            code = end != kExitDone ? end : code;
            Show([&] {
                if (parts.beforeClose) {
                    parts.beforeClose(run);
                }
            });
        }
    } else {
        TellUser(run.Sentence());
    }
    if (parts.judge) {
        code = parts.judge(code);
    }
    run.Close();
    if (run.WasLeft()) {
        TellUser("the device does not answer: ended without closing it");
        EndNow(code == kExitDone ? kExitNoAnswer : code);
    }
    return code;
}
