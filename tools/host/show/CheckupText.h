#pragma once

#include <string>
#include <vector>

#include "judge/Checkup.h"

/// For people: a line a check, what to do under those that need something, and how it comes out.
std::vector<std::string> CheckupText(const std::vector<Finding>& findings, const std::string& device);

/// The same for programs.
std::string CheckupJson(const std::vector<Finding>& findings, const std::string& device);
