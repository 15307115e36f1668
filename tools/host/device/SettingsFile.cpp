#include "device/SettingsFile.h"

#include <charconv>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "oko/Settings.h"
#include "text/Text.h"

namespace {

constexpr std::string_view kConnectionKey = "connection=";
constexpr std::string_view kAlarmsKey = "alarms=";

}  // namespace

std::optional<int> PortOf(const Settings& settings) {
    constexpr int kHighestPort = 256;
    const std::string text = ToUtf8(settings.connection);
    const std::string key = ToUtf8(oko::kComPortKey);
    if (!text.starts_with(key)) {
        return std::nullopt;
    }
    const std::size_t digits = text.find_first_not_of(" \t", key.size());
    int port = 0;
    if (digits != std::string::npos) {
        std::from_chars(text.data() + digits, text.data() + text.size(), port);
    }
    return port >= 1 && port <= kHighestPort ? std::optional(port) : std::nullopt;
}

std::wstring ConnectionText(int port) { return std::wstring(oko::kComPortKey) + L" " + std::to_wstring(port); }

Settings ReadSettings(const std::filesystem::path& file) {
    Settings settings;
    std::ifstream stream(file);
    std::string line;
    while (std::getline(stream, line)) {
        // The texts are the plug-in's own and plain ASCII.
        if (line.starts_with(kConnectionKey)) {
            settings.connection.assign(line.begin() + kConnectionKey.size(), line.end());
        } else if (line.starts_with(kAlarmsKey)) {
            settings.alarms.assign(line.begin() + kAlarmsKey.size(), line.end());
        }
    }
    return settings;
}

void WriteSettings(const std::filesystem::path& file, const Settings& settings) {
    std::ofstream stream(file);
    stream << kConnectionKey << ToUtf8(settings.connection) << "\n" << kAlarmsKey << ToUtf8(settings.alarms) << "\n";
    if (!stream.flush()) {
        throw SettingsError(file.string() + " cannot be written");
    }
}
