#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Wide text as UTF-8. Half of a surrogate pair becomes "?".
std::string ToUtf8(std::wstring_view text);

/// A file's name as UTF-8, for people.
std::string PathText(const std::filesystem::path& path);
