#include "device/SettingsFile.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "text/Text.h"

namespace {

constexpr std::string_view kConnectionKey = "connection=";
constexpr std::string_view kAlarmsKey = "alarms=";

}  // namespace

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
