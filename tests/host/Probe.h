#pragma once

#include <filesystem>

/// The program that tests start: probe/StartProbe.cpp.
std::filesystem::path Probe();

bool WaitForFile(const std::filesystem::path& file);
