#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "keep/EventList.h"
#include "keep/History.h"
#include "model/Event.h"
#include "model/Snapshot.h"

/// What the program knows of its watch, for those who ask from other threads. Its lock is never held for longer than it
/// takes to copy what was asked for.
class Keeper {
 public:
    /// The newest snapshot. A row of the history, too, when its row number is not the one before it.
    void Add(const Snapshot& snapshot);
    void Add(const Event& event);

    /// None came yet: null.
    std::shared_ptr<const Snapshot> Newest() const;
    std::vector<Event> EventsAfter(std::uint64_t id) const;

    /// A part of the history, and the snapshot that names its channels.
    struct Part {
        std::shared_ptr<const Snapshot> snapshot;
        HistoryView rows;
    };
    Part Rows(std::int64_t sinceMs, std::int64_t untilMs) const;

 private:
    mutable std::mutex m_mutex;
    std::shared_ptr<const Snapshot> m_newest;
    std::optional<History> m_history;
    EventList m_events;
};
