#include "keep/Keeper.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Reading.h"
#include "model/Snapshot.h"

namespace {

bool HasSameChannels(const Snapshot& left, const Snapshot& right) {
    return std::ranges::equal(left.channels, right.channels, {}, &ChannelInfo::key, &ChannelInfo::key);
}

}  // namespace

void Keeper::Add(const Snapshot& snapshot) {
    auto copy = std::make_shared<const Snapshot>(snapshot);
    const std::vector<Reading> readings = ReadingsOf(snapshot);
    const std::lock_guard lock(m_mutex);
    if (!m_history || !HasSameChannels(*m_newest, snapshot)) {
        m_history.emplace(snapshot.channels.size(), snapshot.intervalSeconds);
    }
    if (snapshot.row != 0 && (!m_newest || m_newest->row != snapshot.row)) {
        m_history->Add(snapshot.when.utcMs, readings);
    }
    m_newest = std::move(copy);
}

void Keeper::Add(const Event& event) {
    const std::lock_guard lock(m_mutex);
    m_events.Add(event);
}

std::shared_ptr<const Snapshot> Keeper::Newest() const {
    const std::lock_guard lock(m_mutex);
    return m_newest;
}

std::vector<Event> Keeper::EventsAfter(std::uint64_t id) const {
    const std::lock_guard lock(m_mutex);
    return m_events.After(id);
}

Keeper::Part Keeper::Rows(std::int64_t sinceMs, std::int64_t untilMs) const {
    const std::lock_guard lock(m_mutex);
    return {m_newest, m_history ? m_history->View(sinceMs, untilMs) : HistoryView{}};
}
