// Scenario files of any content; and one that can be read is lived through for a while.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "fuzz/Fuzz.h"
#include "incubator/Incubator.h"
#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "protocol/CommandTable.h"
#include "scenarios/ScenarioReader.h"

// The ready-made ones are no files that somebody wrote.
const std::map<std::string, std::string_view>& emulator::ReadyScenarios() {
    static const std::map<std::string, std::string_view> none;
    return none;
}

namespace {

using namespace emulator;

void CheckState(const Incubator& incubator) {
    for (const DeviceState& device : incubator.State().devices) {
        Require(std::isfinite(device.value), "a value is a number");
        Require(device.noise >= 0.0 && device.min <= device.max, "a device is as the reader allows it");
    }
    for (const RunningFault& fault : incubator.Running()) {
        Require(!fault.until || *fault.until > incubator.Time(), "a fault that is over does not run");
    }
}

void Ask(Incubator& incubator, const std::string& command) {
    const Answer answer = incubator.Execute(ParseCommand(command));
    Require(answer.code == 0 || answer.code == 3, "a command is answered or refused");
    Require(answer.code == 0 || answer.payload.starts_with("e "), "a refusal says why");
}

void AskEverything(Incubator& incubator, const Scenario& scenario) {
    for (const CommandEntry& entry : kCommands) {
        for (const std::string_view example : ExamplesOf(entry)) {
            Ask(incubator, std::string(example));
        }
    }
    for (const ProductScenario& product : scenario.products) {
        const std::string number = std::to_string(product.number);
        for (const DeviceScenario& device : product.devices) {
            const std::string address = number + " " + std::to_string(device.number);
            Ask(incubator, "readcurval " + number + "(" + std::to_string(device.number) + ")");
            Ask(incubator, "writesetpoint " + address + " 21.5");
            Ask(incubator, "readsetpoint " + address + " -1");
        }
        for (const ParameterScenario& parameter : product.parameters) {
            Ask(incubator, "bl-param-read " + number + " " + std::to_string(parameter.number));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Scenario scenario;
    try {
        scenario = ParseScenario(AsText(data, size), "here");
    } catch (const ScenarioError& error) {
        Require(std::string_view(error.what()).starts_with("here"), "a complaint names the place");
        return 0;
    }
    Incubator incubator(scenario, 1);
    for (const double seconds : {0.0, 0.001, 1.0, 60.0, 1e4, 2e9}) {
        incubator.Advance(seconds);
        CheckState(incubator);
        AskEverything(incubator, scenario);
    }
    return 0;
}
