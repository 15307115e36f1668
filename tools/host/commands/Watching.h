#pragma once

#include <functional>
#include <string>
#include <vector>

#include "commands/WatchRequest.h"
#include "commands/WatchRun.h"
#include "model/DeviceMessage.h"
#include "model/Event.h"
#include "model/Snapshot.h"

/// What a command adds to a watch. All of it runs on the main thread; every function may be left out.
struct WatchParts {
    std::function<void(const std::vector<std::string>&)> announce;  // lines for people, before the device is touched
    std::function<int(WatchRun&)> onOpened;                         // another result than 0 ends the watch with it
    std::function<void(const Snapshot&)> onRow;
    std::function<void(const Event&)> onEvent;
    std::function<void(const DeviceMessage&)> onMessage;  // all that the device thread tells, until it is closed
    std::function<bool()> isEnough;                       // asked at least ten times a second
    bool needsNoView = false;                             // goes on although nobody reads the output
    std::function<void(const WatchRun&)> beforeClose;     // the last values stand, the device is still open
    std::function<int(int)> judge;                        // before Close, from the exit code so far: the command's own
};

/// A whole watch: settings, announcement, Init, log, targets, rows until the time is over, the command has enough or
/// Ctrl+C comes, Close and judgement. Returns the exit code; when a call into the device did not return, it ends the
/// program with it instead.
int RunWatch(WatchRequest request, const WatchParts& parts);

/// Says the lines on the output; where that is for programs, beside it.
std::function<void(const std::vector<std::string>&)> AnnounceForPeople(bool outputIsForPrograms);

/// A sentence of this program's on the error output, after its name.
void TellUser(const std::string& sentence);

/// What the last snapshot and the troubles of the watch come to: an alarm that stands before data that are missing
/// before what could not be written.
int JudgeEnd(const Snapshot& snapshot, bool written);
