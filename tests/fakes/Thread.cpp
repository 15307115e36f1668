#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "Patience.h"
#include "fakes/ScriptedPlatform.h"
#include "platform/Sync.h"

std::size_t RecordedThreads::Started() const {
    const std::scoped_lock lock(m_mutex);
    return m_threads.size();
}

std::size_t RecordedThreads::Running() const {
    const std::scoped_lock lock(m_mutex);
    return m_running;
}

HandleCounter::Token RecordedThreads::Start(Thread::Procedure procedure, void* argument) {
    if (failStart) {
        return nullptr;
    }
    if (onStart) {
        onStart();
    }
    const std::scoped_lock lock(m_mutex);
    m_threads.emplace_back(&RecordedThreads::Run, this, procedure, argument);
    ++m_running;
    return m_handles.Take();
}

void RecordedThreads::Run(Thread::Procedure procedure, void* argument) {
    procedure(argument);
    const std::scoped_lock lock(m_mutex);
    --m_running;
    m_ended.notify_all();
}

bool RecordedThreads::WaitForRunning(std::size_t count) {
    std::unique_lock lock(m_mutex);
    return m_ended.wait_for(lock, kPatience, [&] { return m_running == count; });
}

void RecordedThreads::JoinAll() {
    {
        std::unique_lock lock(m_mutex);
        if (!m_ended.wait_for(lock, kPatience, [&] { return m_running == 0; })) {
            std::fputs("ScriptedPlatform: a thread does not end; was the device closed?\n", stderr);
            std::abort();
        }
    }
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
}

struct Thread::State {
    HandleCounter::Token token;
};

Thread::Thread() noexcept = default;

Thread::~Thread() { Close(); }

void Thread::Start(Procedure procedure, void* argument) noexcept {
    Close();
    if (HandleCounter::Token token = ScriptedPlatform::Current().threads.Start(procedure, argument)) {
        m_pState = std::make_unique<State>(State{std::move(token)});
    }
}

void Thread::Close() noexcept { m_pState.reset(); }

bool Thread::IsOpen() const noexcept { return m_pState != nullptr; }
