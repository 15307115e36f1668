#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

/// What `oko-host configure`, `connect` and `panel` were asked for.
struct DialogOptions {
    std::filesystem::path library;
    std::string device = "simulator";  // or "incubator"
    std::filesystem::path settings = "oko-host.ini";
    std::string language;  // "de"; empty: the system's
};

// All of them throw LibraryError and LanguageError.

/// The system does not let this program choose the language; the text is for the user.
class LanguageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Brings the device up and opens its configuration dialog. Prints what changed and what was called back, and keeps the
/// alarm settings.
int RunConfigure(const DialogOptions& options);

/// Opens the connection dialog and then brings the device up with the chosen port, as a host does. Prints what changed
/// and what was called back, and keeps the connection settings.
int RunConnect(const DialogOptions& options);

/// Shows the value panel in a window until that is closed.
int RunPanel(const DialogOptions& options);
