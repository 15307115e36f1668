#include "platform/Clock.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "Patience.h"
#include "fakes/ScriptedPlatform.h"

void ScriptedClock::SetFrequency(std::int64_t ticksPerSecond) {
    const std::scoped_lock lock(m_mutex);
    m_frequency = ticksPerSecond;
}

void ScriptedClock::SetCounter(std::int64_t ticks) {
    const std::scoped_lock lock(m_mutex);
    m_counter = ticks;
}

void ScriptedClock::SetTime(std::uint32_t secondsSince1970) {
    const std::scoped_lock lock(m_mutex);
    m_time = secondsSince1970;
}

void ScriptedClock::Advance(std::uint32_t milliseconds) {
    const std::scoped_lock lock(m_mutex);
    AdvanceLocked(milliseconds);
}

std::vector<std::uint32_t> ScriptedClock::Sleeps() const {
    const std::scoped_lock lock(m_mutex);
    return m_sleeps;
}

std::map<std::uint32_t, std::size_t> ScriptedClock::OtherThreadSleeps() const {
    const std::scoped_lock lock(m_mutex);
    return m_otherSleeps;
}

bool ScriptedClock::WaitForOtherThreadSleeps(std::size_t count) {
    std::unique_lock lock(m_mutex);
    const std::size_t goal = m_otherSleepCount + count;
    return m_slept.wait_for(lock, kPatience, [&] { return m_otherSleepCount >= goal; });
}

void ScriptedClock::Sleep(std::uint32_t milliseconds) {
    if (onSleep) {
        onSleep(milliseconds);
    }
    {
        const std::scoped_lock lock(m_mutex);
        AdvanceLocked(milliseconds);
        if (std::this_thread::get_id() == m_testThread) {
            m_sleeps.push_back(milliseconds);
            return;
        }
        ++m_otherSleeps[milliseconds];
        ++m_otherSleepCount;
    }
    m_slept.notify_all();
    // A thread that works in a loop must leave the processor to the others.
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

std::int64_t ScriptedClock::Counter() const {
    const std::scoped_lock lock(m_mutex);
    return m_counter;
}

std::int64_t ScriptedClock::Frequency() const {
    const std::scoped_lock lock(m_mutex);
    return m_frequency;
}

std::uint32_t ScriptedClock::Time() const {
    const std::scoped_lock lock(m_mutex);
    return m_time;
}

void ScriptedClock::AdvanceLocked(std::uint32_t milliseconds) { m_counter += m_frequency * milliseconds / 1000; }

void SleepMilliseconds(std::uint32_t milliseconds) noexcept { ScriptedPlatform::Current().clock.Sleep(milliseconds); }

std::int64_t PerformanceCounter() noexcept { return ScriptedPlatform::Current().clock.Counter(); }

std::int64_t PerformanceFrequency() noexcept { return ScriptedPlatform::Current().clock.Frequency(); }

std::uint32_t CurrentTimeSeconds() noexcept { return ScriptedPlatform::Current().clock.Time(); }
