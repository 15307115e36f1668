#pragma once

#include <cstdint>
#include <memory>

/// Recursive lock: a host may call back into a channel from its callback. Works with std::scoped_lock.
class CriticalSection {
 public:
    CriticalSection();
    ~CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void lock() noexcept;
    void unlock() noexcept;

 private:
    struct State;
    std::unique_ptr<State> m_pState;
};

/// Lock for long waits. The system's critical section goes to whoever asks first, which is the thread that has just let
/// it go: one that polls would keep another out for good. This one goes to a thread that waits before it comes back to
/// the one that had it. Not recursive. Works with std::scoped_lock.
class FairLock {
 public:
    void lock() noexcept {
        m_turn.lock();  // held while waiting, so that nobody overtakes
        m_section.lock();
        m_turn.unlock();
    }
    void unlock() noexcept { m_section.unlock(); }

 private:
    CriticalSection m_turn;
    CriticalSection m_section;
};

/// Manual-reset event, created not signalled.
class ManualResetEvent {
 public:
    ManualResetEvent();
    ~ManualResetEvent();
    ManualResetEvent(const ManualResetEvent&) = delete;
    ManualResetEvent& operator=(const ManualResetEvent&) = delete;

    void Set() noexcept;
    void Reset() noexcept;

    /// Waits until the event is set, at most `milliseconds`. Returns whether it is.
    bool Wait(std::uint32_t milliseconds) noexcept;

 private:
    struct State;
    std::unique_ptr<State> m_pState;
};

/// Owner of a thread handle. Closing it does not stop the thread.
class Thread {
 public:
    /// What a thread runs; its result is the thread's exit code.
    using Procedure = std::uint32_t (*)(void* argument) noexcept;

    Thread() noexcept;
    ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Starts a thread and keeps its handle, closing an earlier one. The thread holds a reference to this library until
    /// it has returned, so that a host that frees the library too early does not pull the code from under it. A thread
    /// that cannot be made is not reported; IsOpen tells.
    void Start(Procedure procedure, void* argument) noexcept;

    /// Closes the handle; harmless when there is none.
    void Close() noexcept;

    bool IsOpen() const noexcept;

 private:
    struct State;
    std::unique_ptr<State> m_pState;
};
