#pragma once

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "windows/LoadedLibrary.h"

/// A dialog that another thread shows, worked as a person would: by its controls, its keys and its close box.
class OpenDialog {
 public:
    explicit OpenDialog(HWND window) : m_hWindow(window) {}

    HWND Window() const { return m_hWindow; }
    HWND Control(int id) const { return GetDlgItem(m_hWindow, id); }
    DWORD ThreadId() const { return GetWindowThreadProcessId(m_hWindow, nullptr); }
    bool IsOpen() const { return IsWindow(m_hWindow) != FALSE && IsWindowVisible(m_hWindow) != FALSE; }

    bool IsEnabled(int id) const { return IsWindowEnabled(Control(id)) != FALSE; }
    bool IsShown(int id) const { return (GetWindowLongPtrW(Control(id), GWL_STYLE) & WS_VISIBLE) != 0; }
    bool IsChecked(int id) const { return SendMessageW(Control(id), BM_GETCHECK, 0, 0) == BST_CHECKED; }

    std::wstring Caption() const { return TextOf(m_hWindow); }
    std::wstring Text(int id) const { return TextOf(Control(id)); }

    /// A control's place in the dialog's client area.
    RECT Place(int id) const {
        RECT rect = ScreenPlace(Control(id));
        MapWindowPoints(nullptr, m_hWindow, reinterpret_cast<POINT*>(&rect), 2);
        return rect;
    }
    RECT ScreenPlace() const { return ScreenPlace(m_hWindow); }

    /// Replaces what stands in an edit field, key by key.
    void Type(int id, std::wstring_view text) const {
        SendMessageW(Control(id), EM_SETSEL, 0, -1);
        SendMessageW(Control(id), WM_CLEAR, 0, 0);
        for (const wchar_t character : text) {
            SendMessageW(Control(id), WM_CHAR, static_cast<WPARAM>(character), 1);
        }
    }

    void Click(int id) const { SendMessageW(Control(id), BM_CLICK, 0, 0); }

    /// Presses a key in the control that has the focus. Comes back when the dialog has taken the key, or is closed.
    void Press(WORD key) const {
        const HWND focus = Focus();
        PostMessageW(focus, WM_KEYDOWN, key, 1);
        PostMessageW(focus, WM_KEYUP, key, 1);
        Settle();
    }

    /// Strikes a key of the keyboard: it goes where the system has the focus. Does not wait until it is taken, as
    /// input comes after all that is posted.
    static void Strike(WORD key) {
        std::array<INPUT, 2> inputs{};
        for (INPUT& input : inputs) {
            input.type = INPUT_KEYBOARD;
            input.ki.wVk = key;
        }
        inputs[1].ki.dwFlags = KEYEVENTF_KEYUP;
        EXPECT_EQ(SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof inputs[0]), inputs.size());
    }

    /// Presses the close box.
    void PressCloseBox() const {
        PostMessageW(m_hWindow, WM_SYSCOMMAND, SC_CLOSE, 0);
        Settle();
    }

    /// A command with any notification code, as a control would send it.
    void Command(int id, WORD code) const {
        SendMessageW(m_hWindow, WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(Control(id)));
    }

    /// The control that has the dialog's focus.
    HWND Focus() const {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        GetGUIThreadInfo(GetWindowThreadProcessId(m_hWindow, nullptr), &info);
        return info.hwndFocus != nullptr ? info.hwndFocus : m_hWindow;
    }

    /// Waits until the dialog has taken all that was posted to it, or is closed.
    void Settle() const {
        // Twice: a close box posts the command that it stands for.
        for (int round = 0; round < 2; ++round) {
            AwaitMarker();
        }
    }

 private:
    static RECT ScreenPlace(HWND window) {
        RECT rect{};
        GetWindowRect(window, &rect);
        return rect;
    }

    static std::wstring TextOf(HWND window) {
        std::wstring text(static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
        text.resize(static_cast<std::size_t>(
            SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
        return text;
    }

    /// Posts a message and waits until the dialog's loop takes it, after all that was posted before.
    void AwaitMarker() const {
        Taken() = false;
        const HHOOK hook =
            SetWindowsHookExW(WH_GETMESSAGE, NoteMarker, nullptr, GetWindowThreadProcessId(m_hWindow, nullptr));
        PostMessageW(m_hWindow, kMarker, 0, 0);
        EXPECT_TRUE(WaitUntil([this] { return Taken() || !IsWindow(m_hWindow); }));
        UnhookWindowsHookEx(hook);
    }

    static LRESULT CALLBACK NoteMarker(int code, WPARAM removed, LPARAM message) {
        if (code == HC_ACTION && removed == PM_REMOVE && reinterpret_cast<const MSG*>(message)->message == kMarker) {
            Taken() = true;
        }
        return CallNextHookEx(nullptr, code, removed, message);
    }

    static std::atomic<bool>& Taken() {
        static std::atomic<bool> taken = false;
        return taken;
    }

    static constexpr UINT kMarker = WM_APP + 77;

    HWND m_hWindow;
};

/// The visible dialog of a thread, also a message box; nothing when it has none.
inline BOOL CALLBACK TakeDialog(HWND window, LPARAM result) {
    std::array<wchar_t, 16> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (std::wstring_view(name.data()) != L"#32770" || !IsWindowVisible(window)) {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(result) = window;
    return FALSE;
}

inline std::optional<OpenDialog> FindDialog(DWORD threadId) {
    HWND found = nullptr;
    EnumThreadWindows(threadId, TakeDialog, reinterpret_cast<LPARAM>(&found));
    return found != nullptr ? std::optional(OpenDialog(found)) : std::nullopt;
}

/// The visible dialog with this caption, of whatever thread of the process; waits for one. Nothing when none comes.
inline std::optional<OpenDialog> AwaitDialogOfProcess(DWORD processId, std::wstring_view caption) {
    struct Search {
        DWORD processId;
        std::wstring_view caption;
        HWND found;
    } search{processId, caption, nullptr};
    const auto take = [](HWND window, LPARAM parameter) -> BOOL {
        auto& wanted = *reinterpret_cast<Search*>(parameter);
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        HWND dialog = nullptr;
        if (owner != wanted.processId || TakeDialog(window, reinterpret_cast<LPARAM>(&dialog)) ||
            OpenDialog(dialog).Caption() != wanted.caption) {
            return TRUE;
        }
        wanted.found = dialog;
        return FALSE;
    };
    const bool came = WaitUntil([&] {
        EnumWindows(take, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    });
    return came ? std::optional(OpenDialog(search.found)) : std::nullopt;
}

/// The next visible dialog with this caption on the thread of one that may be closed by now; nothing when none comes.
inline std::optional<OpenDialog> AwaitDialog(DWORD threadId, std::wstring_view caption) {
    std::optional<OpenDialog> dialog;
    const bool came = WaitUntil([&] {
        dialog = FindDialog(threadId);
        return dialog && dialog->Caption() == caption;
    });
    return came ? dialog : std::nullopt;
}

/// Calls `open`, which shows a modal dialog on this thread, while `drive` works that dialog from another one. Gives
/// what `open` gives. A dialog that `drive` leaves open fails the test and is closed.
template <class Open, class Drive>
auto WithDialog(Open open, Drive drive) {
    const DWORD threadId = GetCurrentThreadId();
    std::atomic<bool> ended = false;
    std::thread driver([&] {
        std::optional<OpenDialog> dialog;
        if (!WaitUntil([&] { return ended || (dialog = FindDialog(threadId)).has_value(); }) || !dialog) {
            ADD_FAILURE() << "no dialog opened";
            return;
        }
        dialog->Settle();  // until it is drawn up
        drive(*dialog);
        if (!WaitUntil([&] { return ended || !dialog->IsOpen(); })) {
            ADD_FAILURE() << "the dialog was left open";
            for (const int id : {IDCANCEL, 8}) {
                dialog->Command(id, 0);
            }
        }
    });
    const auto result = open();
    ended = true;
    driver.join();
    return result;
}
