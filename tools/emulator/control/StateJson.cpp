#include "control/StateJson.h"

#include <cstdint>
#include <nlohmann/json.hpp>

#include "incubator/Incubator.h"
#include "incubator/Scenario.h"
#include "server/EmulatedServer.h"

namespace emulator {

namespace {

using Json = nlohmann::json;

Json DeviceJson(const DeviceState& device) {
    return {{"product", device.product}, {"device", device.device}, {"value", device.value},
            {"target", device.target},   {"min", device.min},       {"max", device.max},
            {"noise", device.noise},     {"error", device.error},   {"plugged", device.plugged}};
}

}  // namespace

Json FaultsJson(EmulatedServer& server, double now) {
    Json faults = Json::array();
    for (const FaultState& fault : server.ListFaults(now)) {
        Json json{{"number", fault.number}, {"fault", fault.fault}, {"from", fault.origin}};
        if (!fault.onDevice) {
            json["met"] = fault.met;
            json["fired"] = fault.fired;
        } else {
            json["secondsLeft"] = fault.secondsLeft ? Json(*fault.secondsLeft) : Json();
        }
        faults.push_back(json);
    }
    return faults;
}

Json StateJson(EmulatedServer& server, std::int64_t commands, double now) {
    const IncubatorState state = server.At(now).State();
    Json devices = Json::array();
    for (const DeviceState& device : state.devices) {
        devices.push_back(DeviceJson(device));
    }
    Json status = Json::array();
    for (const StatusScenario& entry : state.status) {
        status.push_back({{"product", entry.product}, {"device", entry.device}, {"error", entry.error}});
    }
    return {{"scenario", server.ScenarioName()},
            {"seconds", state.seconds},
            {"running", now},
            {"speed", server.Clock().Speed()},
            {"paused", server.Clock().IsPaused()},
            {"serverUp", state.serverUp},
            {"commands", commands},
            {"devices", devices},
            {"status", status},
            {"faults", FaultsJson(server, now)}};
}

}  // namespace emulator
