#include "platform/Boxes.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "text/Text.h"

namespace {

constexpr std::wstring_view kDialogClass = L"#32770";

/// The text of a message box stands in this control.
constexpr int kBoxText = 0xFFFF;

struct Search {
    DWORD process;
    std::vector<HWND> found;
};

BOOL CALLBACK TakeDialog(HWND window, LPARAM parameter) {
    auto* const search = reinterpret_cast<Search*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    std::array<wchar_t, 16> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (process == search->process && IsWindowVisible(window) != FALSE &&
        std::wstring_view(name.data(), static_cast<std::size_t>(std::max(length, 0))) == kDialogClass) {
        search->found.push_back(window);
    }
    return TRUE;
}

/// A window whose thread does not listen has no text to be had; nobody waits for one.
std::string TextOf(HWND window) {
    constexpr UINT kPatienceMs = 200;
    std::array<wchar_t, 512> text{};
    DWORD_PTR length = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), SMTO_ABORTIFHUNG,
                        kPatienceMs, &length);
    return ToUtf8(std::wstring_view(text.data(), std::min(static_cast<std::size_t>(length), text.size())));
}

}  // namespace

bool HasWindows() noexcept { return true; }

std::vector<std::string> BoxesOf(std::uint32_t process, bool close) {
    Search search{process, {}};
    EnumWindows(TakeDialog, reinterpret_cast<LPARAM>(&search));
    std::vector<std::string> boxes;
    for (const HWND dialog : search.found) {
        const HWND text = GetDlgItem(dialog, kBoxText);
        boxes.push_back(TextOf(dialog) + (text != nullptr ? ": " + TextOf(text) : std::string()));
        if (close) {
            PostMessageW(dialog, WM_CLOSE, 0, 0);
        }
    }
    return boxes;
}
