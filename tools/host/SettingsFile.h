#pragma once

#include <filesystem>
#include <string>

/// The two settings texts that a host stores for the plug-in, in a file of two lines.
struct Settings {
    std::wstring connection;
    std::wstring alarms;
};

/// What the file holds; nothing when it is not there.
Settings ReadSettings(const std::filesystem::path& file);
void WriteSettings(const std::filesystem::path& file, const Settings& settings);
