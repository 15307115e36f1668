#include "scenarios/ScenarioReader.h"

#include <algorithm>
#include <fstream>
#include <ios>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "faults/FaultRule.h"
#include "incubator/DeviceFault.h"
#include "incubator/DeviceSetting.h"
#include "incubator/Motion.h"
#include "incubator/Scenario.h"
#include "scenarios/JsonNode.h"
#include "text/Duration.h"

namespace emulator {

namespace {

constexpr int kHighestParameter = 9999;
constexpr int kHighestComPort = 256;     // as far as Windows counts
constexpr int kLongestFind = 3'600'000;  // ms
constexpr double kLongestLag = 1e6;      // s
constexpr double kLargestOvershoot = 0.9;

/// Reads the number of a product, a device or a parameter, which has to be the first of its kind with that number.
void TakeNumber(const JsonNode& node, int& number, int most, std::set<int>& taken, const std::string& kind) {
    node.Require("number");
    node.TakeWhole("number", number, 0, most);
    if (!taken.insert(number).second) {
        node.Fail("number", kind + " " + std::to_string(number) + " stands there already");
    }
}

DeviceScenario ReadDevice(const JsonNode& node, std::set<int>& taken) {
    node.ExpectMembers(
        {"number", "current", "target", "min", "max", "ambient", "lagSeconds", "overshoot", "noise", "error"});
    DeviceScenario device;
    TakeNumber(node, device.number, kHighestDevice, taken, "device");
    node.TakeNumber("current", device.current, -kLargestValue, kLargestValue);
    node.TakeNumber("min", device.min, -kLargestValue, kLargestValue);
    node.TakeNumber("max", device.max, -kLargestValue, kLargestValue);
    if (device.min > device.max) {
        node.Fail("\"min\" is greater than \"max\"");
    }
    const bool alone = device.IsSensorAlone();  // its target means nothing
    device.target = alone ? device.current : std::clamp(device.current, device.min, device.max);
    node.TakeNumber("target", device.target, alone ? -kLargestValue : device.min, alone ? kLargestValue : device.max);
    device.ambient = device.current;
    node.TakeNumber("ambient", device.ambient, -kLargestValue, kLargestValue);
    node.TakeNumber("lagSeconds", device.lagSeconds, 0.0, kLongestLag);
    node.TakeNumber("overshoot", device.overshoot, 0.0, kLargestOvershoot);
    node.TakeNumber("noise", device.noise, 0.0, kLargestValue);
    node.TakeText("error", device.error);
    return device;
}

ParameterScenario ReadParameter(const JsonNode& node, const ProductScenario& product, std::set<int>& taken) {
    node.ExpectMembers({"number", "value", "follows", "offset", "noise"});
    ParameterScenario parameter;
    TakeNumber(node, parameter.number, kHighestParameter, taken, "parameter");
    node.TakeText("value", parameter.value);
    node.TakeNumber("offset", parameter.offset, -kLargestValue, kLargestValue);
    node.TakeNumber("noise", parameter.noise, 0.0, kLargestValue);
    if (node.Has("follows")) {
        int device = 0;
        node.TakeWhole("follows", device, 0, kHighestDevice);
        if (FindDevice(product, device) == nullptr) {
            node.Fail("\"follows\" names device " + std::to_string(device) + ", which the product does not have");
        }
        parameter.follows = device;
    }
    return parameter;
}

ProductScenario ReadProduct(const JsonNode& node, std::set<int>& taken) {
    node.ExpectMembers({"number", "devices", "parameters", "findMs"});
    ProductScenario product;
    TakeNumber(node, product.number, kLastProduct, taken, "product");
    node.TakeWhole("findMs", product.findMs, 0, kLongestFind);
    std::set<int> devices;
    node.ForEach("devices", [&](const JsonNode& device) { product.devices.push_back(ReadDevice(device, devices)); });
    std::set<int> parameters;
    node.ForEach("parameters", [&](const JsonNode& parameter) {
        product.parameters.push_back(ReadParameter(parameter, product, parameters));
    });
    // Clients search these lists in ascending order.
    std::ranges::sort(product.parameters, {}, &ParameterScenario::number);
    return product;
}

StatusScenario ReadStatus(const JsonNode& node) {
    node.ExpectMembers({"product", "device", "error"});
    StatusScenario status;
    for (const char* const key : {"product", "device", "error"}) {
        node.Require(key);
    }
    node.TakeWhole("product", status.product, kFirstProduct, kLastProduct);
    node.TakeWhole("device", status.device, 0, kHighestDevice);
    node.TakeWhole("error", status.error, 1, kHighestError);
    return status;
}

/// Rules are only read here, to find their mistakes; a run has them from their texts.
std::string ReadFault(const JsonNode& node, const Scenario& scenario) {
    std::string text = node.Text();
    try {
        if (const auto device = ParseFaultRule(text).effect.device) {
            CheckDeviceFault(scenario, *device);
        }
    } catch (const FaultError& error) {
        node.Fail(error.what());
    } catch (const DeviceFaultError& error) {
        node.Fail(std::string("the effect: ") + error.what());
    }
    return text;
}

constexpr std::string_view kSet = "set ";

/// "set 9 0 target 38", tried out on the device that it names.
SetAction ReadSetAction(std::string_view text, const Scenario& scenario) {
    SetAction set = ParseSetAction(text);
    const std::string missing = MissingFrom(scenario, set.product, set.device);
    if (!missing.empty()) {
        throw SettingError(missing);
    }
    DeviceScenario device = *FindDevice(*FindProduct(scenario, set.product), set.device);
    Motion motion;
    SetDevice(device, motion, set.what, set.value);
    return set;
}

EventScenario ReadEvent(const JsonNode& node, const Scenario& scenario) {
    node.ExpectMembers({"at", "do"});
    node.Require("at");
    node.Require("do");
    EventScenario event;
    node.TakeNumber("at", event.at, 0.0, kLongestDuration);
    node.TakeText("do", event.action);
    try {
        if (event.action.starts_with(kSet)) {
            event.does = ReadSetAction(event.action, scenario);
            return event;
        }
        const DeviceFault fault = ParseDeviceFault(event.action);
        CheckDeviceFault(scenario, fault);
        event.does = fault;
    } catch (const SettingError& error) {
        node.Fail("do", error.what());
    } catch (const DeviceFaultError& error) {
        node.Fail("do", std::string(error.what()) +
                            (IsDeviceFault(event.action) ? "" : ", and \"set PRODUCT DEVICE WHAT VALUE\""));
    }
    return event;
}

Scenario ReadScenario(const JsonNode& root) {
    root.ExpectMembers({"name", "description", "comPort", "products", "status", "faults", "events"});
    Scenario scenario;
    root.TakeText("name", scenario.name);
    root.TakeText("description", scenario.description);
    root.TakeWhole("comPort", scenario.comPort, 1, kHighestComPort);
    std::set<int> products;
    root.ForEach("products",
                 [&](const JsonNode& product) { scenario.products.push_back(ReadProduct(product, products)); });
    root.ForEach("status", [&](const JsonNode& status) { scenario.status.push_back(ReadStatus(status)); });
    root.ForEach("faults", [&](const JsonNode& fault) { scenario.faults.push_back(ReadFault(fault, scenario)); });
    root.ForEach("events", [&](const JsonNode& event) { scenario.events.push_back(ReadEvent(event, scenario)); });
    std::ranges::stable_sort(scenario.events, {}, &EventScenario::at);
    return scenario;
}

}  // namespace

Scenario ParseScenario(std::string_view text, const std::string& place) {
    nlohmann::json json;
    try {
        json = nlohmann::json::parse(text);
    } catch (const nlohmann::json::exception& error) {
        throw ScenarioError(place + ": " + error.what());  // with line and column
    }
    return ReadScenario(JsonNode(json, place));
}

Scenario LoadScenario(const std::string& nameOrFile) {
    const auto ready = ReadyScenarios().find(nameOrFile);
    if (ready != ReadyScenarios().end()) {
        return ParseScenario(ready->second, nameOrFile);
    }
    std::ifstream file(nameOrFile, std::ios::binary);
    if (!file) {
        throw ScenarioError(nameOrFile + ": neither a ready-made scenario nor a file that can be read");
    }
    return ParseScenario(std::string(std::istreambuf_iterator<char>(file), {}), nameOrFile);
}

}  // namespace emulator
