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
    const auto isNew = [id](const Event& event) { return event.id > id; };
    return {std::ranges::find_if(m_events, isNew), m_events.end()};
}
