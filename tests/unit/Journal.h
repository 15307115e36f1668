#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/CDevApiInterface_Impl.h"
#include "fakes/Dialogs.h"
#include "fakes/ScriptedPlatform.h"

/// What a device does, in order and while the object lives: the commands that it sends, the progress that it shows
/// ("75 %"), the windows that it opens ("open", or "open Connecting" where it gives a caption) and destroys
/// ("destroy"), the threads that it starts ("start thread"). Commands with an answer of their own are left out.
class Journal {
 public:
    struct Entry {
        std::string what;
        bool busy;     // m_bBusy at that moment
        int progress;  // and m_iProgress
    };

    Journal(ScriptedPlatform& platform, const CDevApiInterface_Impl& device,
            ScriptedServer::Handler answer = &ScriptedServer::BuiltInReply)
        : m_platform(platform), m_device(device) {
        platform.server.SetDefault([this, answer = std::move(answer)](std::string_view command) {
            Note(std::string(command));
            return answer(command);
        });
        platform.windows.onEvent = [this](const std::string& event) { Note(event); };
        platform.threads.onStart = [this] { Note("start thread"); };
        ScriptedDialogs::Current().onOpened = [this](const ScriptedDialogs::Opened& window) {
            Note("open" +
                 (window.caption.empty() ? "" : " " + std::string(window.caption.begin(), window.caption.end())));
        };
    }
    ~Journal() {
        m_platform.server.SetDefault({});
        m_platform.windows.onEvent = {};
        m_platform.threads.onStart = {};
        ScriptedDialogs::Current().onOpened = {};
    }
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    const std::vector<Entry>& Entries() const { return m_entries; }

    std::vector<std::string> Events() const {
        std::vector<std::string> events(m_entries.size());
        std::ranges::transform(m_entries, events.begin(), &Entry::what);
        return events;
    }

 private:
    void Note(std::string what) { m_entries.push_back({std::move(what), m_device.m_bBusy, m_device.m_iProgress}); }

    ScriptedPlatform& m_platform;
    const CDevApiInterface_Impl& m_device;
    std::vector<Entry> m_entries;
};
