// The plug-in's dialogs, opened as an imaging application would.

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cwchar>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "ExitCode.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
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

/// What `oko-host configure`, `connect` and `panel` were asked for.
struct DialogOptions {
    std::filesystem::path library;
    std::string device = "simulator";  // or "incubator"
    std::string settings = "oko-host.ini";
    std::string language;  // "de"; empty: the system's
};

/// The system does not let this program choose the language; the text is for the user.
class LanguageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// There is no screen to show a window on.
class ScreenError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

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

/// What a host would have stored the first time: the incubator's usual tolerances.
constexpr const wchar_t* kUsualAlarms =
    L"dIncubatorBelow 0.200000 | dIncubatorAbove 0.200000 | dCO2Below 0.500000 | dCO2Above 0.500000 | "
    L"dO2Below 0.500000 | dO2Above 0.500000 | dHumidityBelow 1.000000 | dHumidityAbove 1.000000";

Settings WithUsualAlarms(Settings settings) {
    if (settings.alarms.empty()) {
        settings.alarms = kUsualAlarms;
    }
    return settings;
}

/// The library's lines as they come.
void ShowLine(const std::string& line) { std::cerr << "log: " << line << std::endl; }

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
    std::cout << "called back: " << Session::LogLines() << " log lines, " << Session::AirModeChanges()
              << " changes of the air mode\n";
}

/// The first line: what is about to be touched.
void NameDevice(const DialogOptions& options) {
    std::cout << (options.device == "incubator" ? "incubator, by way of the OKO-Control Server"
                                                : "simulator: a simulated incubator, built into the library")
              << " (settings: " << options.settings << ")\n";
}

/// Runs messages until the host's window is closed.
void RunMessages() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

/// Brings the device up and opens its configuration dialog. Prints what changed and what was called back, and keeps the
/// alarm settings.
int RunConfigure(const DialogOptions& options) {
    NameDevice(options);
    const Library library(options.library);
    ChooseLanguage(library, options);
    CDevApiInterface& device = library.Device(options.device);
    Settings settings = ReadSettings(PathOf(options.settings));
    Session session(device, ShowLine);
    if (!session.Open(WithUsualAlarms(settings))) {
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
    WriteSettings(PathOf(options.settings), settings);
    PrintCallbacks();
    return kExitDone;
}

/// Opens the connection dialog and then brings the device up with the chosen port, as a host does. Prints what changed
/// and what was called back, and keeps the connection settings.
int RunConnect(const DialogOptions& options) {
    NameDevice(options);
    const Library library(options.library);
    ChooseLanguage(library, options);
    CDevApiInterface& device = library.Device(options.device);
    Settings settings = ReadSettings(PathOf(options.settings));
    Session session(device, ShowLine);
    const HostWindow window(L"oko-host");
    std::array<wchar_t, oko::kConnectionTextLength> text{};
    std::copy_n(settings.connection.begin(), std::min(settings.connection.size(), text.size() - 1), text.begin());
    const auto length = static_cast<std::int32_t>(std::wcslen(text.data()));
    if (device.ShowConnection(text.data(), length, window.Get()) != oko::kSuccess) {
        std::cout << "cancelled\n";
        return kExitDone;
    }
    Keep(settings.connection, text.data());
    WriteSettings(PathOf(options.settings), settings);

    // The progress window that a search leaves open shows the rest of the way and closes at its end.
    if (!session.Open(WithUsualAlarms(settings))) {
        return FailInit(options);
    }
    std::cout << "connected: " << ListChannels(device).size() << " channels\n";
    PrintCallbacks();
    return kExitDone;
}

/// Shows the value panel in a window until that is closed.
int RunPanel(const DialogOptions& options) {
    NameDevice(options);
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

/// What the commands that open a dialog share; errors of their own become exit codes here.
void AddDialog(Command& program, const char* name, const char* what, int (*show)(const DialogOptions&)) {
    Command command = program.AddCommand(name, what);
    const auto options = std::make_shared<DialogOptions>();
    AddLibraryOption(command, options->library);
    command.AddOption("--device", options->device, "Which device to open")
        .OneOf({"simulator", "incubator"})
        .ShowDefault();
    command.AddOption("--settings", options->settings, "Where the settings texts are kept").ShowDefault();
    command.AddOption("--language", options->language, "Another language than the system's").OneOf(DialogLanguages());
    command.Footer(std::string("Examples:\n  oko-host ") + name + " --device incubator\n  oko-host " + name +
                   " --language de\n\n"
                   "Where the system lets no program choose the language of its dialogs, --language says so and opens\n"
                   "nothing. Wine is such a system: it goes by the environment, OKO_LANGUAGE=de_DE scripts/wine ...");
    command.Run([options, show]() -> int {
        try {
            return show(*options);
        } catch (const LanguageError& error) {
            std::cerr << "oko-host: " << error.what() << "\n";
            return kExitNoLanguage;
        } catch (const ScreenError& error) {
            std::cerr << "oko-host: " << error.what() << "\n";
            return kExitNoScreen;
        }
    });
}

}  // namespace

void AddDialogCommands(Command& program) {
    AddDialog(program, "configure", "Opens the configuration dialog", RunConfigure);
    AddDialog(program, "connect", "Opens the connection dialog, then connects", RunConnect);
    AddDialog(program, "panel", "Shows the value panel until its window is closed", RunPanel);
}
