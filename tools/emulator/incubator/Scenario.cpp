#include "incubator/Scenario.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <functional>
#include <ios>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "faults/FaultRule.h"

namespace emulator {

namespace {

using Json = nlohmann::json;

/// A part of the file and the path to it, which every complaint names.
class Node {
 public:
    Node(const Json& json, std::string place) : m_json(json), m_place(std::move(place)) {}

    [[noreturn]] void Fail(const std::string& what) const { throw ScenarioError(m_place + ": " + what); }

    /// Complains about members that nobody reads: they are usually misspelt.
    void ExpectMembers(const std::vector<std::string>& known) const {
        if (!m_json.is_object()) {
            Fail("an object is expected");
        }
        for (const auto& [key, value] : m_json.items()) {
            if (std::ranges::find(known, key) == known.end()) {
                Fail("\"" + key + "\" is not known");
            }
        }
    }

    /// Takes member `key` into `value` when it is there.
    template <class Value>
    void Take(const std::string& key, Value& value) const {
        if (!m_json.contains(key)) {
            return;
        }
        try {
            value = m_json.at(key).get<Value>();
        } catch (const Json::exception&) {
            Fail("\"" + key + "\" has the wrong type");
        }
    }

    void Require(const std::string& key) const {
        if (!m_json.contains(key)) {
            Fail("\"" + key + "\" is missing");
        }
    }

    bool Has(const std::string& key) const { return m_json.contains(key); }

    /// Every element of list `key`; none when it is not there.
    void ForEach(const std::string& key, const std::function<void(const Node&)>& take) const {
        if (!m_json.contains(key)) {
            return;
        }
        const Json& list = m_json.at(key);
        if (!list.is_array()) {
            Fail("\"" + key + "\" must be a list");
        }
        for (std::size_t i = 0; i < list.size(); ++i) {
            take(Node(list[i], m_place + "/" + key + "/" + std::to_string(i)));
        }
    }

 private:
    const Json& m_json;
    std::string m_place;
};

DeviceScenario ReadDevice(const Node& node) {
    node.ExpectMembers({"number", "current", "target", "min", "max", "lagSeconds", "overshoot", "noise", "error"});
    node.Require("number");
    DeviceScenario device;
    node.Take("number", device.number);
    node.Take("current", device.current);
    device.target = device.current;
    node.Take("target", device.target);
    node.Take("min", device.min);
    node.Take("max", device.max);
    node.Take("lagSeconds", device.lagSeconds);
    node.Take("overshoot", device.overshoot);
    node.Take("noise", device.noise);
    node.Take("error", device.error);
    if (device.lagSeconds < 0.0 || device.noise < 0.0 || device.overshoot < 0.0 || device.overshoot > 0.9) {
        node.Fail("\"lagSeconds\" and \"noise\" must not be negative, \"overshoot\" must lie between 0 and 0.9");
    }
    if (device.min > device.max) {
        node.Fail("\"min\" is greater than \"max\"");
    }
    return device;
}

ParameterScenario ReadParameter(const Node& node, const std::vector<DeviceScenario>& devices) {
    node.ExpectMembers({"number", "value", "follows", "offset", "noise"});
    node.Require("number");
    ParameterScenario parameter;
    node.Take("number", parameter.number);
    node.Take("value", parameter.value);
    node.Take("offset", parameter.offset);
    node.Take("noise", parameter.noise);
    if (node.Has("follows")) {
        int device = 0;
        node.Take("follows", device);
        if (std::ranges::find(devices, device, &DeviceScenario::number) == devices.end()) {
            node.Fail("\"follows\" names device " + std::to_string(device) + ", which the product does not have");
        }
        parameter.follows = device;
    }
    return parameter;
}

ProductScenario ReadProduct(const Node& node) {
    node.ExpectMembers({"number", "devices", "parameters", "findMs"});
    node.Require("number");
    ProductScenario product;
    node.Take("number", product.number);
    node.Take("findMs", product.findMs);
    node.ForEach("devices", [&](const Node& device) { product.devices.push_back(ReadDevice(device)); });
    node.ForEach("parameters", [&](const Node& parameter) {
        product.parameters.push_back(ReadParameter(parameter, product.devices));
    });
    // Clients search these lists in ascending order.
    std::ranges::sort(product.parameters, {}, &ParameterScenario::number);
    return product;
}

StatusScenario ReadStatus(const Node& node) {
    node.ExpectMembers({"product", "device", "error"});
    StatusScenario status;
    node.Take("product", status.product);
    node.Take("device", status.device);
    node.Take("error", status.error);
    return status;
}

/// Rules are only read here, to find their mistakes; a run has them from their texts.
void CheckFaults(const std::vector<std::string>& faults, const std::string& place) {
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const std::string origin = place + "/faults/" + std::to_string(i);
        try {
            ParseFaultRule(faults[i], origin);
        } catch (const FaultError& error) {
            throw ScenarioError(origin + ": " + error.what());
        }
    }
}

}  // namespace

Scenario ParseScenario(std::string_view text, const std::string& place) {
    Json json;
    try {
        json = Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw ScenarioError(place + ": " + error.what());  // with line and column
    }
    const Node root(json, place);
    root.ExpectMembers({"name", "description", "comPort", "products", "status", "faults"});
    Scenario scenario;
    root.Take("name", scenario.name);
    root.Take("description", scenario.description);
    root.Take("comPort", scenario.comPort);
    root.Take("faults", scenario.faults);
    CheckFaults(scenario.faults, place);
    root.ForEach("products", [&](const Node& product) { scenario.products.push_back(ReadProduct(product)); });
    root.ForEach("status", [&](const Node& status) { scenario.status.push_back(ReadStatus(status)); });
    return scenario;
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
