#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "fakes/ScriptedServer.h"  // IWYU pragma: export
#include "oko/WindowHandle.h"
#include "platform/Registry.h"
#include "platform/Sync.h"

// The stand-ins for src/platform/ in the native build: a scripted server, a registry in a map, a clock that advances
// when someone sleeps, numbers in place of chance, and records of what was shown, posted and started. Each part has a
// half for the tests and one for the stand-ins. All of it may be used from any thread.

/// Counts handles that are open, also past the life of the counter.
class HandleCounter {
 public:
    using Token = std::shared_ptr<const int>;

    /// The handle is open as long as its token lives.
    Token Take() const { return m_pToken; }
    std::size_t Open() const { return static_cast<std::size_t>(m_pToken.use_count()) - 1; }

 private:
    Token m_pToken = std::make_shared<const int>(0);
};

/// A registry value, byte for byte as Windows keeps it: text takes two bytes a character.
struct RegistryValue {
    std::uint32_t type = 0;
    std::string bytes;

    /// Text with its terminator.
    static RegistryValue Text(std::wstring_view text, std::uint32_t type = kRegistryString);
    static RegistryValue Dword(std::uint32_t number);

    /// The bytes as characters, all of them, the terminator too; an odd last byte is left out.
    std::wstring Characters() const;

    bool operator==(const RegistryValue&) const = default;
};

/// HKEY_LOCAL_MACHINE, empty at first. Paths and names are compared without regard to case.
class ScriptedRegistry {
 public:
    /// Makes the key, with the keys above it.
    void AddKey(const std::wstring& path);
    bool HasKey(const std::wstring& path) const;

    /// Sets a value and makes its key.
    void Set(const std::wstring& path, const std::wstring& name, RegistryValue value);
    std::optional<RegistryValue> Find(const std::wstring& path, const std::wstring& name) const;

    std::atomic<bool> failOpen = false;
    std::atomic<bool> failCreate = false;

    /// The key is there and listed, but cannot be opened: the user may not.
    void Deny(const std::wstring& path);

    /// The library's calls in order, failed ones too: L"open <path>", L"create <path>", L"query <path>\<name>",
    /// L"read <path>\<name>", L"write <path>\<name>", L"close <path>".
    std::vector<std::wstring> Calls() const;

    /// The key's subkeys by their place in the alphabet, as the registry numbers them.
    std::optional<std::wstring> Subkey(const std::wstring& path, std::uint32_t index) const;

    std::size_t OpenKeys() const { return m_handles.Open(); }

    // For the stand-ins.
    HandleCounter::Token TakeHandle() const { return m_handles.Take(); }
    void Record(std::wstring call);
    bool CanOpen(const std::wstring& path) const;

 private:
    struct IgnoreCase {
        bool operator()(const std::wstring& left, const std::wstring& right) const;
    };
    using Values = std::map<std::wstring, RegistryValue, IgnoreCase>;

    void AddKeyLocked(const std::wstring& path);

    mutable std::mutex m_mutex;
    std::map<std::wstring, Values, IgnoreCase> m_keys;
    std::set<std::wstring, IgnoreCase> m_denied;
    std::vector<std::wstring> m_calls;
    HandleCounter m_handles;
};

/// The clock. It stands still until someone sleeps.
class ScriptedClock {
 public:
    void SetFrequency(std::int64_t ticksPerSecond);
    void SetCounter(std::int64_t ticks);
    void SetTime(std::uint32_t secondsSince1970);
    void Advance(std::uint32_t milliseconds);

    /// The sleeps of the test's own thread in order, in milliseconds. They take no time.
    std::vector<std::uint32_t> Sleeps() const;

    /// How often other threads slept, by milliseconds. Each of these sleeps takes about one real millisecond.
    std::map<std::uint32_t, std::size_t> OtherThreadSleeps() const;

    /// Runs in every sleep before it takes effect, on the sleeping thread and without a lock of the clock's. Set it
    /// before other threads run.
    std::function<void(std::uint32_t milliseconds)> onSleep;

    /// Waits until other threads have slept `count` times more; false when they do not come to it.
    bool WaitForOtherThreadSleeps(std::size_t count);

    // For the stand-ins.
    void Sleep(std::uint32_t milliseconds);
    std::int64_t Counter() const;
    std::int64_t Frequency() const;
    std::uint32_t Time() const;

 private:
    void AdvanceLocked(std::uint32_t milliseconds);

    const std::thread::id m_testThread = std::this_thread::get_id();
    mutable std::mutex m_mutex;
    std::condition_variable m_slept;
    std::int64_t m_frequency = 1'000'000;
    std::int64_t m_counter = 5'000'000;
    std::uint32_t m_time = 1'700'000'000;
    std::vector<std::uint32_t> m_sleeps;
    std::map<std::uint32_t, std::size_t> m_otherSleeps;
    std::size_t m_otherSleepCount = 0;
};

/// The random numbers.
class ScriptedRandom {
 public:
    /// The next numbers; after them comes a fixed sequence, over and over. Replaces what is left of an earlier script.
    void Script(std::vector<int> numbers);

    std::vector<unsigned> Seeds() const;
    std::size_t DrawCount() const;

    // For the stand-ins.
    void Seed(unsigned seed);
    int Next();

 private:
    mutable std::mutex m_mutex;
    std::deque<int> m_script;
    std::size_t m_position = 0;  // in the fixed sequence
    std::size_t m_drawCount = 0;
    std::vector<unsigned> m_seeds;
};

/// What happened to windows.
class RecordedWindows {
 public:
    struct ErrorBox {
        std::wstring text;
        std::wstring caption;
        bool operator==(const ErrorBox&) const = default;
    };

    /// The change notices posted to `window` by the test's own thread, and by the other threads.
    std::size_t NoticeCount(oko::WindowHandle window = nullptr) const;
    std::size_t OtherThreadNoticeCount(oko::WindowHandle window = nullptr) const;

    /// The percentages sent to `window`, in order.
    std::vector<int> Percents(oko::WindowHandle window) const;

    std::vector<oko::WindowHandle> Destroyed() const;
    std::vector<ErrorBox> ErrorBoxes() const;

    /// Runs when a percentage was sent ("75 %") and when a window was destroyed ("destroy"), without a lock of the
    /// record's.
    std::function<void(const std::string& event)> onEvent;

    /// Runs while a message box is up, without a lock of the record's.
    std::function<void(const ErrorBox& box)> onErrorBox;

    /// How often the library looked at the messages that wait.
    std::atomic<int> looksAtMessages = 0;

    /// How many of the library's wait cursors are up.
    std::atomic<int> waitCursors = 0;

    // For the stand-ins.
    void PostNotice(oko::WindowHandle window);
    void SendPercent(oko::WindowHandle window, int percent);
    void Destroy(oko::WindowHandle window);
    void ShowBox(ErrorBox box);

 private:
    void Say(const std::string& event) const;

    const std::thread::id m_testThread = std::this_thread::get_id();
    mutable std::mutex m_mutex;
    std::map<oko::WindowHandle, std::size_t> m_notices;
    std::map<oko::WindowHandle, std::size_t> m_otherNotices;
    std::map<oko::WindowHandle, std::vector<int>> m_percents;
    std::vector<oko::WindowHandle> m_destroyed;
    std::vector<ErrorBox> m_errorBoxes;
};

/// The threads that the library started. They are real ones.
class RecordedThreads {
 public:
    std::atomic<bool> failStart = false;

    /// Runs when a thread is to be started, before it runs, on the starting thread and without a lock of the record's.
    std::function<void()> onStart;

    std::size_t Started() const;
    std::size_t Running() const;

    /// Waits until so many threads run: one that has said that it stops still needs its time to end. False when it does
    /// not come to it.
    bool WaitForRunning(std::size_t count);

    std::size_t OpenHandles() const { return m_handles.Open(); }

    // For the stand-ins.

    /// Starts a thread; null when that is to fail.
    HandleCounter::Token Start(Thread::Procedure procedure, void* argument);

    /// Joins all threads. One that does not end is the test's fault, usually a device that was not closed: ends the
    /// process.
    void JoinAll();

 private:
    void Run(Thread::Procedure procedure, void* argument);

    mutable std::mutex m_mutex;
    std::condition_variable m_ended;
    std::vector<std::thread> m_threads;
    std::size_t m_running = 0;
    HandleCounter m_handles;
};

/// The library's locks.
class WatchedLocks {
 public:
    /// Runs when a thread finds a lock held by another one, before it waits for it. Set it before other threads run.
    std::function<void()> onWait;

    /// Runs when a thread has let a lock go for good, on that thread. Set it before other threads run.
    std::function<void(const CriticalSection& lock)> onRelease;
};

/// What became of the library's events.
class RecordedEvents {
 public:
    /// The longest that each wait of the test's own thread would have taken, in milliseconds, in order.
    std::vector<std::uint32_t> Waits() const;

    /// The addresses of the events that went, in order.
    std::vector<std::uintptr_t> Destroyed() const;

    // For the stand-ins.
    void Wait(std::uint32_t milliseconds);
    void Destroy(const ManualResetEvent& event);

 private:
    const std::thread::id m_testThread = std::this_thread::get_id();
    mutable std::mutex m_mutex;
    std::vector<std::uint32_t> m_waits;
    std::vector<std::uintptr_t> m_destroyed;
};

/// The files of the disk, as far as they are searched for.
class ScriptedFiles {
 public:
    struct Entry {
        std::wstring name;
        std::uint32_t attributes = 0x20;  // an ordinary file
    };

    /// What a search with exactly this pattern finds. Patterns without an answer find nothing.
    void Answer(const std::wstring& pattern, std::vector<Entry> entries);

    /// The patterns that were searched for, in order, and the searches that are still open.
    std::vector<std::wstring> Patterns() const;
    std::size_t OpenSearches() const { return m_handles.Open(); }

    // For the stand-ins.
    HandleCounter::Token TakeHandle() const { return m_handles.Take(); }
    std::vector<Entry> Search(const std::wstring& pattern);

 private:
    mutable std::mutex m_mutex;
    std::map<std::wstring, std::vector<Entry>> m_answers;
    std::vector<std::wstring> m_patterns;
    HandleCounter m_handles;
};

/// The shell: programs that were to be opened.
class RecordedShell {
 public:
    struct Launch {
        std::wstring program;
        std::wstring parameters;
        std::wstring folder;
        bool operator==(const Launch&) const = default;
    };

    std::vector<Launch> Launches() const;

    /// Runs when a program is opened: here the server begins to answer.
    std::function<void(const Launch&)> onOpen;

    // For the stand-ins.
    void Open(Launch launch);

 private:
    mutable std::mutex m_mutex;
    std::vector<Launch> m_launches;
};

/// The serial ports by their names ("COM3"), and the names under which they were opened.
class ScriptedPorts {
 public:
    /// Ports that exist, and those of them that somebody else holds open.
    std::vector<std::wstring> existing;
    std::vector<std::wstring> busy;

    std::vector<std::wstring> queried;
    std::vector<std::wstring> opened;
};

/// The platform of one test. Make it on the test's own thread, before the device object, and let it go after that.
/// There is at most one at a time; a stand-in that is used without one ends the process.
class ScriptedPlatform {
 public:
    ScriptedPlatform();
    ~ScriptedPlatform();
    ScriptedPlatform(const ScriptedPlatform&) = delete;
    ScriptedPlatform& operator=(const ScriptedPlatform&) = delete;

    ScriptedServer server;
    ScriptedRegistry registry;
    ScriptedClock clock;
    ScriptedRandom random;
    RecordedWindows windows;
    RecordedThreads threads;
    WatchedLocks locks;
    RecordedEvents events;
    ScriptedFiles files;
    RecordedShell shell;
    ScriptedPorts ports;

    /// For the stand-ins: the platform of the running test, and the same where none is needed.
    static ScriptedPlatform& Current();
    static ScriptedPlatform* CurrentOrNull() noexcept;
};
