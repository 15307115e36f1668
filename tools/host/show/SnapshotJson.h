#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "keep/History.h"
#include "model/Event.h"
#include "model/Snapshot.h"

/// The replies of the page's server and the parts of a report. Times are told twice: as text in UTC, and in
/// milliseconds. What is no value is null.

/// All of a snapshot; `allowSet`: whether targets can be set through the server that tells it.
std::string SnapshotJson(const Snapshot& snapshot, bool allowSet);

std::string EventJson(const Event& event);
std::string EventsJson(const std::vector<Event>& events);

/// Rows as columns, of the channels of `snapshot`, from `sinceMs` to before `untilMs`.
std::string HistoryJson(const HistoryTable& table, const Snapshot& snapshot, std::int64_t sinceMs,
                        std::int64_t untilMs);

/// "ok", "out of band", "alarm", "no answer" (of a channel), "stale" (of all): the first from the end that holds.
const char* WorstState(const Snapshot& snapshot);
