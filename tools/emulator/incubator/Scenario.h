#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "incubator/DeviceFault.h"

namespace emulator {

/// What the emulated server has behind it, as a scenario file describes it.

/// A scenario cannot be used; the text names the file and the place in it.
class ScenarioError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

constexpr double kLargestValue = 1e9;  // of any number of a device, in its units

/// The products that the server knows.
constexpr int kFirstProduct = 0;
constexpr int kLastProduct = 17;

// A client reads at most three digits of these in the status report.
constexpr int kHighestDevice = 999;
constexpr int kHighestError = 999;

/// A value that is controlled: a zone, a gas, a humidifier.
struct DeviceScenario {
    int number = 0;
    double current = 20.0;
    double target = 20.0;
    double min = 0.0;
    double max = 60.0;
    double ambient = 20.0;     // where the value goes when nothing controls it
    double lagSeconds = 60.0;  // until the value has settled
    double overshoot = 0.0;    // part of a step by which the value goes too far, 0 to 0.9
    double noise = 0.0;        // standard deviation of a reading
    std::string error;         // not empty: a reading gives this error text

    /// Limits that are equal leave nothing to set.
    bool IsSensorAlone() const { return min == max; }
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

/// "set 9 0 target 38": another client, or somebody at the incubator, changes something.
struct SetAction {
    int product = 0;
    int device = 0;
    std::string what;
    std::string value;
};

/// Something that happens by itself at a time of the incubator's.
struct EventScenario {
    double at = 0.0;     // seconds
    std::string action;  // as it was written
    std::variant<DeviceFault, SetAction> does;
};

struct Scenario {
    std::string name;
    std::string description;
    int comPort = 3;
    std::vector<ProductScenario> products;
    std::vector<StatusScenario> status;
    std::vector<std::string> faults;    // rules as on the command line
    std::vector<EventScenario> events;  // in the order of their times
};

/// A product of the scenario, a device or a parameter of a product; null when there is none.
const ProductScenario* FindProduct(const Scenario& scenario, std::optional<int> number);
ProductScenario* FindProduct(Scenario& scenario, std::optional<int> number);
const DeviceScenario* FindDevice(const ProductScenario& product, std::optional<int> number);
DeviceScenario* FindDevice(ProductScenario& product, std::optional<int> number);
const ParameterScenario* FindParameter(const ProductScenario& product, std::optional<int> number);

/// Says that the scenario has no such product, or the product no such device; nothing where all that is named is
/// there.
std::string MissingFrom(const Scenario& scenario, std::optional<int> product, std::optional<int> device);

/// Throws DeviceFaultError when a fault names what the scenario does not have, or nothing there can fail like that.
void CheckDeviceFault(const Scenario& scenario, const DeviceFault& fault);

/// Why this cannot stand in a status report; nothing where it can.
std::string WhatIsWrong(const StatusScenario& status);

}  // namespace emulator
