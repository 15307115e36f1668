#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "model/Event.h"

/// The last events of a run, by their ids.
class EventList {
 public:
    static constexpr std::size_t kMaxEvents = 10'000;

    explicit EventList(std::size_t maxEvents = kMaxEvents) : m_maxEvents(maxEvents) {}

    void Add(const Event& event);

    /// The events after the one with that id, oldest first. An id that is still to come is of a program that ran before
    /// this one: nothing of this run has been seen then, and all events come.
    std::vector<Event> After(std::uint64_t id) const;

 private:
    std::deque<Event> m_events;
    std::size_t m_maxEvents;
};
