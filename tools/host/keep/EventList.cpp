#include "keep/EventList.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "model/Event.h"

void EventList::Add(const Event& event) {
    m_events.push_back(event);
    if (m_events.size() > m_maxEvents) {
        m_events.pop_front();
    }
}

std::vector<Event> EventList::After(std::uint64_t id) const {
    if (m_events.empty() || id > m_events.back().id) {
        id = 0;
    }
    return {std::ranges::upper_bound(m_events, id, {}, &Event::id), m_events.end()};
}
