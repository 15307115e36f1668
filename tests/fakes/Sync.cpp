#include "platform/Sync.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "fakes/ScriptedPlatform.h"

std::vector<std::uint32_t> RecordedEvents::Waits() const {
    const std::scoped_lock lock(m_mutex);
    return m_waits;
}

std::vector<std::uintptr_t> RecordedEvents::Destroyed() const {
    const std::scoped_lock lock(m_mutex);
    return m_destroyed;
}

void RecordedEvents::Wait(std::uint32_t milliseconds) {
    const std::scoped_lock lock(m_mutex);
    if (std::this_thread::get_id() == m_testThread) {
        m_waits.push_back(milliseconds);
    }
}

void RecordedEvents::Destroy(const ManualResetEvent& event) {
    const std::scoped_lock lock(m_mutex);
    m_destroyed.push_back(reinterpret_cast<std::uintptr_t>(&event));
}

struct CriticalSection::State {
    std::recursive_mutex mutex;
    int depth = 0;  // how often the thread that has it took it; guarded by itself
};

CriticalSection::CriticalSection() : m_pState(std::make_unique<State>()) {}

CriticalSection::~CriticalSection() = default;

void CriticalSection::lock() noexcept {
    if (!m_pState->mutex.try_lock()) {
        ScriptedPlatform* const platform = ScriptedPlatform::CurrentOrNull();
        if (platform != nullptr && platform->locks.onWait) {
            platform->locks.onWait();
        }
        m_pState->mutex.lock();
    }
    ++m_pState->depth;
}

void CriticalSection::unlock() noexcept {
    const bool last = --m_pState->depth == 0;
    m_pState->mutex.unlock();
    ScriptedPlatform* const platform = ScriptedPlatform::CurrentOrNull();
    if (last && platform != nullptr && platform->locks.onRelease) {
        platform->locks.onRelease(*this);
    }
}

namespace {

struct Signal {
    std::mutex mutex;
    std::condition_variable changed;
    bool set = false;
};

}  // namespace

/// The signal is shared because the waiting thread may destroy the event as soon as it wakes, while Set is still busy.
struct ManualResetEvent::State {
    std::shared_ptr<Signal> signal = std::make_shared<Signal>();
};

ManualResetEvent::ManualResetEvent() : m_pState(std::make_unique<State>()) {}

ManualResetEvent::~ManualResetEvent() {
    if (ScriptedPlatform* const platform = ScriptedPlatform::CurrentOrNull()) {
        platform->events.Destroy(*this);
    }
}

void ManualResetEvent::Set() noexcept {
    const std::shared_ptr<Signal> signal = m_pState->signal;
    const std::scoped_lock lock(signal->mutex);
    signal->set = true;
    signal->changed.notify_all();
}

void ManualResetEvent::Reset() noexcept {
    const std::scoped_lock lock(m_pState->signal->mutex);
    m_pState->signal->set = false;
}

bool ManualResetEvent::Wait(std::uint32_t milliseconds) noexcept {
    if (ScriptedPlatform* const platform = ScriptedPlatform::CurrentOrNull()) {
        platform->events.Wait(milliseconds);
    }
    const std::shared_ptr<Signal> signal = m_pState->signal;
    std::unique_lock lock(signal->mutex);
    return signal->changed.wait_for(lock, std::chrono::milliseconds(milliseconds), [&] { return signal->set; });
}
