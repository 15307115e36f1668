#include "platform/Window.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "fakes/ScriptedPlatform.h"
#include "oko/WindowHandle.h"

namespace {

template <class Map>
typename Map::mapped_type Recorded(const Map& map, oko::WindowHandle window) {
    const auto found = map.find(window);
    return found != map.end() ? found->second : typename Map::mapped_type{};
}

}  // namespace

std::size_t RecordedWindows::NoticeCount(oko::WindowHandle window) const {
    const std::scoped_lock lock(m_mutex);
    return Recorded(m_notices, window);
}

std::size_t RecordedWindows::OtherThreadNoticeCount(oko::WindowHandle window) const {
    const std::scoped_lock lock(m_mutex);
    return Recorded(m_otherNotices, window);
}

std::vector<int> RecordedWindows::Percents(oko::WindowHandle window) const {
    const std::scoped_lock lock(m_mutex);
    return Recorded(m_percents, window);
}

std::vector<oko::WindowHandle> RecordedWindows::Destroyed() const {
    const std::scoped_lock lock(m_mutex);
    return m_destroyed;
}

std::vector<RecordedWindows::ErrorBox> RecordedWindows::ErrorBoxes() const {
    const std::scoped_lock lock(m_mutex);
    return m_errorBoxes;
}

void RecordedWindows::PostNotice(oko::WindowHandle window) {
    const std::scoped_lock lock(m_mutex);
    ++(std::this_thread::get_id() == m_testThread ? m_notices : m_otherNotices)[window];
}

void RecordedWindows::SendPercent(oko::WindowHandle window, int percent) {
    {
        const std::scoped_lock lock(m_mutex);
        m_percents[window].push_back(percent);
    }
    Say(std::to_string(percent) + " %");
}

void RecordedWindows::Destroy(oko::WindowHandle window) {
    {
        const std::scoped_lock lock(m_mutex);
        m_destroyed.push_back(window);
    }
    Say("destroy");
}

void RecordedWindows::ShowBox(ErrorBox box) {
    {
        const std::scoped_lock lock(m_mutex);
        m_errorBoxes.push_back(box);
    }
    if (onErrorBox) {
        onErrorBox(box);
    }
}

void RecordedWindows::Say(const std::string& event) const {
    if (onEvent) {
        onEvent(event);
    }
}

void PostValuesChanged(oko::WindowHandle window) noexcept { ScriptedPlatform::Current().windows.PostNotice(window); }

void SendProgress(oko::WindowHandle window, int percent) noexcept {
    ScriptedPlatform::Current().windows.SendPercent(window, percent);
}

void KeepWindowsResponding() noexcept { ++ScriptedPlatform::Current().windows.looksAtMessages; }

void DestroyWindowHandle(oko::WindowHandle window) noexcept { ScriptedPlatform::Current().windows.Destroy(window); }

void ShowErrorBox(const wchar_t* text, const wchar_t* caption) noexcept {
    ScriptedPlatform::Current().windows.ShowBox({text, caption});
}
