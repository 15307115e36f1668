#pragma once

#include <string>
#include <vector>

#include "check/Check.h"
#include "check/CheckRun.h"

namespace check {

/// "passed   read-current/code-3", and behind it why, where there is a why.
std::string CheckText(const CheckResult& result);

/// The name and what it holds.
std::string CheckListing(const Check& check);

/// "94 checks: 92 passed, 2 skipped".
std::string CheckCounts(const std::vector<CheckResult>& results);

std::string CheckJson(const std::string& library, const std::vector<CheckResult>& results);

/// What continuous integrations read.
std::string CheckJunit(const std::string& library, const std::vector<CheckResult>& results);

}  // namespace check
