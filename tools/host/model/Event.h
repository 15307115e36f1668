#pragma once

#include <cstdint>
#include <string>

#include "model/Moment.h"

/// What happened beside the values.
enum class EventKind {
    Started,        // watching began; the text names the device
    Ended,          // and how it ended
    TargetChanged,  // by whomever; "37.0 -> 38.5"
    AirMode,        // switched on or off
    LinkLost,       // no channel answers any more
    LinkBack,
    AlarmOn,
    AlarmOff,
    Log,       // a line of the library
    Protocol,  // how a protocol of targets goes on
    Trouble    // of this program: a full disk, an alarm program that does not start
};

struct Event {
    std::uint64_t id = 0;  // counts from 1 within a run
    Moment when;
    EventKind kind = EventKind::Log;
    std::string channel;  // its key; empty where the event is the device's
    std::string text;
};

/// "started", "ended", "target changed", "air mode", "link lost", "link back", "alarm on", "alarm off", "log",
/// "protocol", "trouble": as files, pages and tables have it.
const char* EventKindName(EventKind kind);
