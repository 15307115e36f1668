#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

/// What `oko-host configure`, `connect` and `panel` were asked for.
struct DialogOptions {
    std::filesystem::path library;
    std::string device = "simulator";  // or "incubator"
    std::filesystem::path settings = "oko-host.ini";
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

// All of these throw LibraryError, LanguageError, ScreenError and SettingsError.

/// Brings the device up and opens its configuration dialog. Prints what changed and what was called back, and keeps the
/// alarm settings.
int RunConfigure(const DialogOptions& options);

/// Opens the connection dialog and then brings the device up with the chosen port, as a host does. Prints what changed
/// and what was called back, and keeps the connection settings.
int RunConnect(const DialogOptions& options);

/// Shows the value panel in a window until that is closed.
int RunPanel(const DialogOptions& options);
