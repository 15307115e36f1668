#include "platform/Window.h"

#include "platform/win32/Windows.h"

namespace {

constexpr WORD kValuesChangedCommand = 1003;  // IDC_VALUES_CHANGED
constexpr WORD kValuesChangedCode = 1;
static_assert(kProgressMessage == WM_USER + 32);

HWND Handle(WindowHandle window) noexcept { return static_cast<HWND>(window); }

}  // namespace

void PostValuesChanged(WindowHandle window) noexcept {
    PostMessageW(Handle(window), WM_COMMAND, MAKEWPARAM(kValuesChangedCommand, kValuesChangedCode), 0);
}

void SendProgress(WindowHandle window, int percent) noexcept {
    SendMessageW(Handle(window), kProgressMessage, static_cast<WPARAM>(percent), 0);
}

void DestroyWindowHandle(WindowHandle window) noexcept { DestroyWindow(Handle(window)); }

void ShowErrorBox(const wchar_t* text, const wchar_t* caption) noexcept {
    MessageBoxW(nullptr, text, caption, MB_ICONERROR);
}
