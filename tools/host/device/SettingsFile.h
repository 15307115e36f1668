#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

/// The two settings texts that a host stores for the plug-in, in a file of two lines.
struct Settings {
    std::wstring connection;
    std::wstring alarms;
};

/// The settings cannot be kept; the text is for the user.
class SettingsError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The COM port that the connection text names, 1 to 256; nothing when it names none.
std::optional<int> PortOf(const Settings& settings);

/// The connection text of this port.
std::wstring ConnectionText(int port);

/// What the file holds; nothing when it is not there.
Settings ReadSettings(const std::filesystem::path& file);

/// Throws SettingsError.
void WriteSettings(const std::filesystem::path& file, const Settings& settings);
