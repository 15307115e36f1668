#pragma once

#include <map>
#include <string>
#include <string_view>

#include "incubator/Scenario.h"

namespace emulator {

/// Reads a scenario from JSON text; `place` stands for the file in error messages. Throws ScenarioError.
Scenario ParseScenario(std::string_view text, const std::string& place);

/// The ready-made scenarios: their JSON texts by name.
const std::map<std::string, std::string_view>& ReadyScenarios();

/// A ready-made scenario, or a file. Throws ScenarioError.
Scenario LoadScenario(const std::string& nameOrFile);

}  // namespace emulator
