#include "check/Trial.h"

#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "check/Check.h"
#include "check/CheckLines.h"
#include "device/Library.h"
#include "oko/HostCallback.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "platform/DynamicLibrary.h"
#include "text/Text.h"
#include "text/Words.h"

namespace check {

namespace {

struct Record {
    std::mutex mutex;
    HostCalls calls;
    std::thread::id thread;  // that made the call into the library
};

Record& TheRecord() {
    static Record record;
    return record;
}

/// Asks and waits for the answer: "ok" and texts.
std::vector<std::string> Ask(const std::string& question) {
    SayCheckLine(word::kAsk, question);
    std::string line;
    if (!std::getline(std::cin, line)) {
        throw CheckSkipped("nobody answers for the server");
    }
    std::vector<std::string> texts = SplitTexts(line);
    if (texts.empty() || texts.front() != "ok") {
        throw CheckFailed("the emulated server cannot do it: " + line);
    }
    texts.erase(texts.begin());
    return texts;
}

std::string List(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) {
        list.append(list.empty() ? "" : ", ").append(InQuotes(text));
    }
    return list.empty() ? "none" : list;
}

}  // namespace

void SayCheckLine(std::string_view word, std::string_view text) {
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    const std::string line = FormatCheckLine(word, text);
    // When it fails, nobody is left to be told.
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stdout));
    static_cast<void>(std::fflush(stdout));
}

Trial::Trial(const std::filesystem::path& library, const Check& check, double replyTimeoutSeconds)
    : m_file(library), m_check(check), m_dReplyTimeout(replyTimeoutSeconds) {
    Load();
}

void Trial::Finish() {
    for (auto what = m_atEnd.rbegin(); what != m_atEnd.rend(); ++what) {
        (*what)();
    }
    m_atEnd.clear();
    Enter("FreeLibrary()", [this] { m_pLibrary.reset(); });
}

void Trial::Load() {
    Begin(kLoadCall);
    m_pLibrary = std::make_unique<DynamicLibrary>(m_file);
    End();
    m_queryPhysDevice = reinterpret_cast<oko::LibQueryPhysDeviceFunction>(m_pLibrary->Find("LibQueryPhysDevice"));
    m_queryInterface = reinterpret_cast<oko::LibQueryInterfaceFunction>(m_pLibrary->Find("LibQueryInterface"));
    for (const auto& [name, found] : {std::pair("LibQueryPhysDevice", m_queryPhysDevice != nullptr),
                                      std::pair("LibQueryInterface", m_queryInterface != nullptr)}) {
        if (!found) {
            throw LibraryError(PathText(m_file) + " is not a device plug-in: it has no export " + InQuotes(name));
        }
    }
}

void Trial::Reload() {
    Enter("FreeLibrary()", [this] { m_pLibrary.reset(); });
    Load();
}

void Trial::Begin(const std::string& name) {
    TheRecord().thread = std::this_thread::get_id();
    SayCheckLine(word::kEnter, name);
}

void Trial::End() { SayCheckLine(word::kLeave, {}); }

void Trial::FailOnException(const std::string& name) {
    std::string what = "one that is no std::exception";
    try {
        // cppcheck-suppress rethrowNoCurrentException  ; called while one is handled
        throw;
    } catch (const std::exception& exception) {
        what = InQuotes(exception.what());
    } catch (...) {  // NOLINT(bugprone-empty-catch): what it is stands there already
    }
    throw CheckFailed(name + ": expected no exception, got " + what);
}

// The server is asked by way of this process's own files, but it is the trial's.
// NOLINTBEGIN(readability-convert-member-functions-to-static)
void Trial::Scenario(const std::string& name) { Ask("scenario\t" + name); }

void Trial::Rules(const std::vector<std::string>& rules) {
    Ask(rules.empty() ? "rules" : "rules\t" + JoinTexts(rules));
}

std::vector<std::string> Trial::Commands() { return Ask("commands"); }
// NOLINTEND(readability-convert-member-functions-to-static)

HostCalls Trial::TakeHostCalls() {
    const std::scoped_lock lock(TheRecord().mutex);
    return std::exchange(TheRecord().calls, {});
}

void Trial::Callback(std::int32_t code, const wchar_t* text) {
    Record& record = TheRecord();
    const std::scoped_lock lock(record.mutex);
    if (std::this_thread::get_id() != record.thread) {
        record.calls.problem = "a call on a thread that made no call into the library";
    } else if (code == oko::kCallbackLog && text != nullptr) {
        record.calls.lines.push_back(ToUtf8(text));
    } else if (code == oko::kCallbackAirModeChanged && text == nullptr) {
        ++record.calls.airModeChanges;
    } else {
        record.calls.problem = "code " + std::to_string(code) + (text != nullptr ? " with a text" : " without a text");
    }
}

void Expect(bool holds, const std::string& what, const std::string& expected, const std::string& got) {
    if (!holds) {
        throw CheckFailed(what + ": expected " + expected + ", got " + got);
    }
}

void ExpectDone(const std::string& what, std::int32_t result) { ExpectEqual(what, oko::kSuccess, result); }

void ExpectRefused(const std::string& what, std::int32_t result) { ExpectEqual(what, oko::kFailure, result); }

void ExpectText(const std::string& what, const std::string& expected, const std::string& got) {
    Expect(expected == got, what, InQuotes(expected), InQuotes(got));
}

void ExpectCommands(const std::string& what, const std::vector<std::string>& expected,
                    const std::vector<std::string>& got) {
    Expect(expected == got, what, "the commands " + List(expected), List(got));
}

}  // namespace check
