#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "check/Check.h"
#include "oko/LibQuery.h"
#include "platform/DynamicLibrary.h"

namespace check {

/// The contract is not kept; the text says what was expected and what came.
class CheckFailed : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The check means nothing here; the text says why.
class CheckSkipped : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// What the library told its host.
struct HostCalls {
    std::vector<std::string> lines;
    std::size_t airModeChanges = 0;
    std::string problem;  // not empty: a call that the contract does not have
};

/// One check in its process: the library, every call into it told before it is made, and the server behind it.
class Trial {
 public:
    /// Throws LibraryError when the library cannot be loaded.
    Trial(const std::filesystem::path& library, const Check& check, double replyTimeoutSeconds);
    ~Trial() = default;
    Trial(const Trial&) = delete;
    Trial& operator=(const Trial&) = delete;

    const Check& Which() const { return m_check; }

    /// How long the library waits for an answer; 0: for ever.
    double ReplyTimeoutSeconds() const { return m_dReplyTimeout; }

    oko::LibQueryPhysDeviceFunction QueryPhysDevice() const { return m_queryPhysDevice; }
    oko::LibQueryInterfaceFunction QueryInterface() const { return m_queryInterface; }

    /// Done when the check went well, the last one first.
    void AtEnd(std::function<void()> what) { m_atEnd.push_back(std::move(what)); }

    /// Does it, and frees the library.
    void Finish();

    /// Frees the library and loads it again.
    void Reload();

    /// Tells that the call is about to be made, makes it, and tells that it has come back. An exception out of it is a
    /// failure of its own.
    template <class Call>
    auto Enter(const std::string& name, Call call) -> decltype(call()) {
        Begin(name);
        const Leaving leaving;
        try {
            return call();
        } catch (...) {
            FailOnException(name);
        }
    }

    /// The server, from here on: a scenario by its name, rules for its replies, and the commands that came since the
    /// last time.
    void Scenario(const std::string& name);
    void Rules(const std::vector<std::string>& rules);
    std::vector<std::string> Commands();

    /// What the library has said to the callback that `Callback` is, since the last time.
    static HostCalls TakeHostCalls();
    static void Callback(std::int32_t code, const wchar_t* text);

 private:
    struct Leaving {
        Leaving() = default;
        ~Leaving() { End(); }
        Leaving(const Leaving&) = delete;
        Leaving& operator=(const Leaving&) = delete;
    };

    static void Begin(const std::string& name);
    static void End();
    [[noreturn]] static void FailOnException(const std::string& name);
    void Load();

    std::filesystem::path m_file;
    const Check& m_check;
    double m_dReplyTimeout;
    std::unique_ptr<DynamicLibrary> m_pLibrary;
    oko::LibQueryPhysDeviceFunction m_queryPhysDevice = nullptr;
    oko::LibQueryInterfaceFunction m_queryInterface = nullptr;
    std::vector<std::function<void()>> m_atEnd;
};

/// Says a line to the process that started this one. Any thread.
void SayCheckLine(std::string_view word, std::string_view text);

/// Throws CheckFailed where it is not so. `what` is the call, or whatever else it is about.
void Expect(bool holds, const std::string& what, const std::string& expected, const std::string& got);

template <class Number>
void ExpectEqual(const std::string& what, Number expected, Number got) {
    Expect(expected == got, what, std::to_string(expected), std::to_string(got));
}

/// 0, or -1, as the contract's operations give them.
void ExpectDone(const std::string& what, std::int32_t result);
void ExpectRefused(const std::string& what, std::int32_t result);

void ExpectText(const std::string& what, const std::string& expected, const std::string& got);

/// The same commands in the same order.
void ExpectCommands(const std::string& what, const std::vector<std::string>& expected,
                    const std::vector<std::string>& got);

}  // namespace check
