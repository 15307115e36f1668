#include "platform/BoxWatch.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "text/Text.h"

namespace {

constexpr std::wstring_view kDialogClass = L"#32770";
constexpr std::chrono::milliseconds kPeriod{30};

/// Of a box that goes meanwhile there is no text to be had; nobody waits for one.
std::string TextOf(HWND window) {
    std::array<wchar_t, 512> text{};
    DWORD_PTR length = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), SMTO_ABORTIFHUNG, 200,
                        &length);
    return ToUtf8(std::wstring_view(text.data(), std::min(static_cast<std::size_t>(length), text.size())));
}

BOOL CALLBACK TakeDialog(HWND window, LPARAM list) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    std::array<wchar_t, 16> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (process == GetCurrentProcessId() && IsWindowVisible(window) != FALSE &&
        std::wstring_view(name.data(), static_cast<std::size_t>(std::max(length, 0))) == kDialogClass) {
        reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    }
    return TRUE;
}

/// The text of a message box stands in this control.
constexpr int kBoxText = 0xFFFF;

}  // namespace

bool HasWindows() noexcept { return true; }

struct BoxWatch::Impl {
    void Watch() {
        std::vector<HWND> seen;
        while (!end) {
            std::vector<HWND> dialogs;
            EnumWindows(TakeDialog, reinterpret_cast<LPARAM>(&dialogs));
            for (const HWND dialog : dialogs) {
                if (std::ranges::find(seen, dialog) == seen.end()) {
                    const HWND text = GetDlgItem(dialog, kBoxText);
                    onBox(TextOf(dialog) + (text != nullptr ? ": " + TextOf(text) : std::string()));
                }
                if (answers) {
                    PostMessageW(dialog, WM_CLOSE, 0, 0);
                }
            }
            seen = std::move(dialogs);
            std::this_thread::sleep_for(kPeriod);
        }
    }

    std::function<void(const std::string&)> onBox;
    bool answers = false;
    std::atomic<bool> end = false;
    std::thread thread;
};

BoxWatch::BoxWatch(std::function<void(const std::string&)> onBox, bool answers) : m_pImpl(std::make_unique<Impl>()) {
    m_pImpl->onBox = std::move(onBox);
    m_pImpl->answers = answers;
    m_pImpl->thread = std::thread([this] { m_pImpl->Watch(); });
}

BoxWatch::~BoxWatch() {
    m_pImpl->end = true;
    m_pImpl->thread.join();
}
