#include "fakes/HostLog.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "oko/HostCallback.h"

namespace {

struct Record {
    std::vector<std::wstring> lines;
    std::vector<std::int32_t> unknownCodes;
    std::size_t airModeChanges = 0;
    bool airModeChangesHadNoText = true;
    bool echo = false;
    HostLog::Hook hook;
};

std::mutex s_mutex;
Record s_record;

void Echo(const std::wstring& line) {
    std::string narrow;
    std::ranges::transform(line, std::back_inserter(narrow), [](wchar_t character) {
        return character >= L' ' && character <= L'~' ? static_cast<char>(character) : '?';
    });
    std::fprintf(stderr, "%s\n", narrow.c_str());
}

void Note(std::int32_t code, const wchar_t* text) {
    if (code == oko::kCallbackLog) {
        const std::wstring& line = s_record.lines.emplace_back(text != nullptr ? text : L"(null)");
        if (s_record.echo) {
            Echo(line);
        }
    } else if (code == oko::kCallbackAirModeChanged) {
        ++s_record.airModeChanges;
        s_record.airModeChangesHadNoText = s_record.airModeChangesHadNoText && text == nullptr;
    } else {
        s_record.unknownCodes.push_back(code);
    }
}

}  // namespace

void HostLog::Callback(std::int32_t code, const wchar_t* text) {
    Hook hook;
    {
        const std::scoped_lock lock(s_mutex);
        Note(code, text);
        hook = s_record.hook;
    }
    if (hook) {
        hook(code, text);
    }
}

void HostLog::Reset() {
    const std::scoped_lock lock(s_mutex);
    s_record = {};
}

std::vector<std::wstring> HostLog::Lines() {
    const std::scoped_lock lock(s_mutex);
    return s_record.lines;
}

std::size_t HostLog::AirModeChanges() {
    const std::scoped_lock lock(s_mutex);
    return s_record.airModeChanges;
}

bool HostLog::AirModeChangesHadNoText() {
    const std::scoped_lock lock(s_mutex);
    return s_record.airModeChangesHadNoText;
}

std::vector<std::int32_t> HostLog::UnknownCodes() {
    const std::scoped_lock lock(s_mutex);
    return s_record.unknownCodes;
}

void HostLog::EchoToStderr(bool echo) {
    const std::scoped_lock lock(s_mutex);
    s_record.echo = echo;
}

void HostLog::SetHook(Hook hook) {
    const std::scoped_lock lock(s_mutex);
    s_record.hook = std::move(hook);
}
