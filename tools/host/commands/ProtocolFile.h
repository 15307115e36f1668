#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// A small file's text; nothing when it cannot be read. Larger ones than a mebibyte are taken for another kind of file.
std::optional<std::string> ReadSmallFile(const std::filesystem::path& file);

/// Puts the text in the file's place at once: whoever reads it, and whatever ends this program, finds the old text or
/// the new one whole. False when that failed; the old one is there still.
bool ReplaceFile(const std::filesystem::path& file, const std::string& text);

/// Where a protocol's progress is kept: beside it.
std::filesystem::path ProgressFile(std::filesystem::path protocol);
