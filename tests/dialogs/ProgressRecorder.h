#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/win32/Windows.h"
#include "ui/resources/ResourceIds.h"

/// What a progress window showed after one progress message.
struct ProgressShown {
    std::wstring caption;
    int percent;
    std::wstring text;  // beside the bar
    int position;       // of the bar
    bool waitCursor;
    bool drawn;  // nothing of it still waits for the thread to take its messages
};

/// Watches this thread's progress windows while the object lives; one at a time. The thread takes no messages during a
/// search, so nobody else could ask the windows.
class ProgressRecorder {
 public:
    using Listener = std::function<void(const ProgressShown& shown, HWND window)>;

    /// `listener` hears of every message when the window has taken it.
    explicit ProgressRecorder(Listener listener = {})
        : m_hHook(SetWindowsHookExW(WH_CALLWNDPROCRET, Note, nullptr, GetCurrentThreadId())),
          m_listener(std::move(listener)) {
        Current() = this;
    }
    ~ProgressRecorder() {
        UnhookWindowsHookEx(m_hHook);
        Current() = nullptr;
    }
    ProgressRecorder(const ProgressRecorder&) = delete;
    ProgressRecorder& operator=(const ProgressRecorder&) = delete;

    const std::vector<ProgressShown>& Shown() const { return m_shown; }

    /// The percentages that a window with this caption showed.
    std::vector<int> Percents(std::wstring_view caption) const {
        std::vector<int> percents;
        for (const ProgressShown& shown : m_shown) {
            if (shown.caption == caption) {
                percents.push_back(shown.percent);
            }
        }
        return percents;
    }

    /// All that stood beside the bars while they could be seen, before the first percentage too.
    const std::set<std::wstring>& SeenTexts() const { return m_seenTexts; }

    /// The window that took the last message.
    HWND LastWindow() const { return m_lastWindow; }

    /// How many progress windows there were, and how many of them are still open.
    std::size_t Windows() const { return m_windows.size(); }
    std::size_t OpenWindows() const {
        std::size_t open = 0;
        for (const HWND window : m_windows) {
            open += IsWindow(window) ? 1U : 0U;
        }
        return open;
    }

 private:
    static ProgressRecorder*& Current() {
        static ProgressRecorder* recorder = nullptr;
        return recorder;
    }

    static LRESULT CALLBACK Note(int code, WPARAM wParam, LPARAM lParam) {
        constexpr UINT kProgressMessage = WM_USER + 32;
        const auto& message = *reinterpret_cast<const CWPRETSTRUCT*>(lParam);
        // The bar's own messages are numbered from WM_USER too.
        if (code == HC_ACTION && message.message == kProgressMessage &&
            GetDlgItem(message.hwnd, IDC_PROGRESS_BAR) != nullptr) {
            Current()->Add(message.hwnd, static_cast<int>(message.wParam));
        }
        if (code == HC_ACTION && (message.message == WM_PAINT || message.message == WM_SETTEXT)) {
            Current()->See(message.hwnd);
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    void Add(HWND window, int percent) {
        constexpr UINT kGetPosition = WM_USER + 8;  // PBM_GETPOS
        m_windows.insert(window);
        m_lastWindow = window;
        EXPECT_TRUE(IsWindowVisible(window));
        std::array<wchar_t, 64> caption{};
        std::array<wchar_t, 64> text{};
        GetWindowTextW(window, caption.data(), static_cast<int>(caption.size()));
        GetDlgItemTextW(window, IDC_PROGRESS_TEXT, text.data(), static_cast<int>(text.size()));
        m_shown.push_back({caption.data(), percent, text.data(),
                           static_cast<int>(SendDlgItemMessageW(window, IDC_PROGRESS_BAR, kGetPosition, 0, 0)),
                           GetCursor() == LoadCursorW(nullptr, IDC_WAIT), IsDrawn(window)});
        if (m_listener) {
            m_listener(m_shown.back(), window);
        }
    }

    /// Keeps the text of a control that was drawn or changed, if it is the one beside a bar.
    void See(HWND control) {
        if (GetDlgCtrlID(control) == IDC_PROGRESS_TEXT && GetDlgItem(GetParent(control), IDC_PROGRESS_BAR) != nullptr &&
            IsWindowVisible(control)) {
            std::array<wchar_t, 64> text{};
            GetWindowTextW(control, text.data(), static_cast<int>(text.size()));
            m_seenTexts.emplace(text.data());
        }
    }

    static bool IsDrawn(HWND window) {
        for (const int id : {IDC_PROGRESS_BAR, IDC_PROGRESS_TEXT}) {
            if (GetUpdateRect(GetDlgItem(window, id), nullptr, FALSE)) {
                return false;
            }
        }
        return !GetUpdateRect(window, nullptr, FALSE);
    }

    HHOOK m_hHook;
    Listener m_listener;
    std::vector<ProgressShown> m_shown;
    std::set<std::wstring> m_seenTexts;
    std::set<HWND> m_windows;
    HWND m_lastWindow = nullptr;
};
