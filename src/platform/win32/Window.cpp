#include "platform/Window.h"

#include "oko/ChangeNotice.h"
#include "oko/WindowHandle.h"
#include "platform/win32/Windows.h"

namespace {

static_assert(kProgressMessage == WM_USER + 32);

HWND Handle(oko::WindowHandle window) noexcept { return static_cast<HWND>(window); }

}  // namespace

void PostValuesChanged(oko::WindowHandle window) noexcept {
    PostMessageW(Handle(window), WM_COMMAND, oko::kValuesChangedParameter, 0);
}

void SendProgress(oko::WindowHandle window, int percent) noexcept {
    SendMessageW(Handle(window), kProgressMessage, static_cast<WPARAM>(percent), 0);
}

void KeepWindowsResponding() noexcept {
    MSG message{};
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
}

void DestroyWindowHandle(oko::WindowHandle window) noexcept { DestroyWindow(Handle(window)); }

void ShowErrorBox(const wchar_t* text, const wchar_t* caption) noexcept {
    MessageBoxW(nullptr, text, caption, MB_ICONERROR);
}
