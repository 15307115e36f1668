#pragma once

#include <filesystem>
#include <string>

/// The program that tests start: probe/StartProbe.cpp.
std::filesystem::path Probe();

/// A place for a test's files that no other test has, nor another run of it.
std::filesystem::path PlaceFor(const std::string& kind);

bool WaitForFile(const std::filesystem::path& file);
