#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace emulator {

/// What the emulated server has behind it, as a scenario file describes it.

/// A scenario cannot be used; the text names the file and the place in it.
class ScenarioError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// A value that is controlled: a zone, a gas, a humidifier.
struct DeviceScenario {
    int number = 0;
    double current = 20.0;
    double target = 20.0;
    double min = 0.0;
    double max = 60.0;
    double lagSeconds = 60.0;  // until the value has settled
    double overshoot = 0.0;    // part of a step by which the value goes too far, 0 to 0.9
    double noise = 0.0;        // standard deviation of a reading
    std::string error;         // not empty: a reading gives this error text
};

/// A numbered parameter: a fixed text, or a reading that follows a device.
struct ParameterScenario {
    int number = 0;
    std::string value;
    std::optional<int> follows;  // device of the same product
    double offset = 0.0;
    double noise = 0.0;
};

struct ProductScenario {
    int number = 0;
    std::vector<DeviceScenario> devices;
    std::vector<ParameterScenario> parameters;  // ascending
    int findMs = 300;                           // how long a search for it takes
};

/// One triple of the status report.
struct StatusScenario {
    int product = 0;
    int device = 0;
    int error = 0;
};

struct Scenario {
    std::string name;
    std::string description;
    int comPort = 3;
    std::vector<ProductScenario> products;
    std::vector<StatusScenario> status;
    std::vector<std::string> faults;  // rules as on the command line
};

/// Reads a scenario from JSON text; `place` stands for the file in error messages. Throws ScenarioError.
Scenario ParseScenario(std::string_view text, const std::string& place);

/// The ready-made scenarios: their JSON texts by name.
const std::map<std::string, std::string_view>& ReadyScenarios();

/// A ready-made scenario, or a file. Throws ScenarioError.
Scenario LoadScenario(const std::string& nameOrFile);

}  // namespace emulator
