#include "commands/Watching.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <utility>

#include "ExitCode.h"
#include "commands/WatchRequest.h"
#include "commands/WatchRun.h"
#include "commands/WatchTargets.h"
#include "model/Event.h"
#include "model/Snapshot.h"
#include "platform/Interrupt.h"
#include "platform/Now.h"
#include "show/Output.h"

namespace {

void TellUser(const std::string& sentence) { std::cerr << "oko-host: " << sentence << std::endl; }

/// The sinks that the request asks for, in the order in which they must not be missed: file, then actions, then view.
class Sinks {
 public:
    Sinks(WatchRun& run, const WatchParts& parts);

    bool Written() const { return !OutputFailed(); }
};

Sinks::Sinks(WatchRun& run, const WatchParts& parts) {
    run.AddSink(
        [&parts](const Snapshot& snapshot) {
            if (parts.onRow) {
                parts.onRow(snapshot);
            }
        },
        [&parts](const Event& event) {
            if (parts.onEvent) {
                parts.onEvent(event);
            }
        });
}

/// Targets first, then what the command does once the device is open.
int Begin(WatchRun& run, const WatchParts& parts) {
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
    const auto& seconds = run.Request().seconds;
    run.RunUntil([&] {
        const bool over = seconds && Now().seconds - begun >= *seconds;
        // Nobody reads what is shown, and nothing else is asked for.
        const bool useless = OutputFailed() && run.Request().csv.empty() && run.Request().onAlarm.empty();
        return over || useless || (parts.isEnough && parts.isEnough());
    });
}

}  // namespace

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
    if (parts.announce) {
        parts.announce(Announcement(request));
    }
    WatchRun run(std::move(request));
    const Sinks sinks(run, parts);
    int code = run.Open();
    if (code == kExitDone) {
        code = Begin(run, parts);
        if (code == kExitDone || code == kExitClamped) {
            RunRows(run, parts);
            const int end = JudgeEnd(run.Now(), sinks.Written());
            code = end != kExitDone ? end : code;
            if (parts.beforeClose) {
                parts.beforeClose(run);
            }
        }
    } else {
        TellUser(run.Sentence());
    }
    run.Close();
    if (run.WasLeft()) {
        TellUser("the device does not answer: ended without closing it");
        EndNow(code == kExitDone ? kExitNoAnswer : code);
    }
    return code;
}
