#include "commands/win32/DialogCommands.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cwchar>
#include <iostream>
#include <string>

#include "ExitCode.h"
#include "commands/win32/Language.h"
#include "device/Channels.h"
#include "device/Library.h"
#include "device/Session.h"
#include "device/SettingsFile.h"
#include "oko/CDevApiInterface.h"
#include "oko/Result.h"
#include "oko/Settings.h"
#include "oko/WindowHandle.h"
#include "text/Text.h"

namespace {

/// A host's main window, on which the dialogs stand.
class HostWindow {
 public:
    explicit HostWindow(const wchar_t* caption) {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = Procedure;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"OkoHostWindow";
        windowClass.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
        RegisterClassW(&windowClass);
        m_hWindow = CreateWindowExW(0, windowClass.lpszClassName, caption, WS_OVERLAPPEDWINDOW | WS_VISIBLE, 20, 20,
                                    480, 200, nullptr, nullptr, windowClass.hInstance, nullptr);
        if (m_hWindow == nullptr) {
            throw ScreenError("no window can be shown: there is no screen");
        }
    }
    ~HostWindow() { DestroyWindow(m_hWindow); }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    HWND Get() const { return m_hWindow; }

 private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_CLOSE) {
            PostQuitMessage(0);
            return 0;
        }
        return DefWindowProcW(window, message, wParam, lParam);
    }

    HWND m_hWindow;
};

/// Keeps a settings text that came out of a dialog, and says what changed.
void Keep(std::wstring& kept, const wchar_t* text) {
    if (kept == text) {
        std::cout << "unchanged: " << ToUtf8(text) << "\n";
        return;
    }
    std::cout << "was: " << ToUtf8(kept) << "\nnow: " << ToUtf8(text) << "\n";
    kept = text;
}

void ChooseLanguage(const Library& library, const DialogOptions& options) {
    if (!options.language.empty() && !ChooseDialogLanguage(library, options.language)) {
        throw LanguageError("this system lets no program choose the language of its dialogs (\"" + options.language +
                            "\"). Under Wine start it in that language: OKO_LANGUAGE=de_DE scripts/wine ...");
    }
}

int FailInit(const DialogOptions& options) {
    std::cerr << "oko-host: the " << options.device << " could not be initialised\n";
    return kExitInitFailed;
}

/// The lines themselves were shown as they came.
void PrintCallbacks() {
    std::cout << "called back: " << Session::LogLines().size() << " log lines, " << Session::AirModeChanges()
              << " changes of the air mode\n";
}

/// Runs messages until the host's window is closed.
void RunMessages() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

int RunConfigure(const DialogOptions& options) {
    const Library library(options.library);
    ChooseLanguage(library, options);
    CDevApiInterface& device = library.Device(options.device);
    Settings settings = ReadSettings(options.settings);
    Session session(device);
    if (!session.Open(settings)) {
        return FailInit(options);
    }
    const HostWindow window(L"oko-host");
    std::array<wchar_t, oko::kConfigurationTextLength> text{};
    if (device.ShowConfiguration(text.data(), static_cast<std::int32_t>(text.size()), window.Get()) != oko::kSuccess) {
        std::cout << "cancelled or refused\n";
        PrintCallbacks();
        return kExitDone;
    }
    Keep(settings.alarms, text.data());
    WriteSettings(options.settings, settings);
    PrintCallbacks();
    return kExitDone;
}

int RunConnect(const DialogOptions& options) {
    const Library library(options.library);
    ChooseLanguage(library, options);
    CDevApiInterface& device = library.Device(options.device);
    Settings settings = ReadSettings(options.settings);
    Session session(device);
    const HostWindow window(L"oko-host");
    std::array<wchar_t, oko::kConnectionTextLength> text{};
    std::copy_n(settings.connection.begin(), std::min(settings.connection.size(), text.size() - 1), text.begin());
    const auto length = static_cast<std::int32_t>(std::wcslen(text.data()));
    if (device.ShowConnection(text.data(), length, window.Get()) != oko::kSuccess) {
        std::cout << "cancelled\n";
        return kExitDone;
    }
    Keep(settings.connection, text.data());
    WriteSettings(options.settings, settings);

    // The progress window that a search leaves open shows the rest of the way and closes at its end.
    if (!session.Open(settings)) {
        return FailInit(options);
    }
    std::cout << "connected: " << ListChannels(device).size() << " channels\n";
    PrintCallbacks();
    return kExitDone;
}

int RunPanel(const DialogOptions& options) {
    const Library library(options.library);
    ChooseLanguage(library, options);
    const HostWindow window(L"oko-host");
    const oko::WindowHandle panel = library.Device(options.device).CreateValuePanel(window.Get(), nullptr);
    if (panel == nullptr) {
        std::cerr << "oko-host: the panel could not be opened\n";
        return kExitInitFailed;
    }
    ShowWindow(static_cast<HWND>(panel), SW_SHOW);
    RunMessages();
    return kExitDone;
}
