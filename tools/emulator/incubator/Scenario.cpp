#include "incubator/Scenario.h"

#include <algorithm>
#include <optional>
#include <string>

#include "incubator/DeviceFault.h"

namespace emulator {

namespace {

/// The element of a list with this number; null when there is none.
auto* FindNumber(auto& list, std::optional<int> number) {
    const auto found = std::ranges::find_if(list, [&](const auto& element) { return number == element.number; });
    return found != list.end() ? &*found : nullptr;
}

}  // namespace

const ProductScenario* FindProduct(const Scenario& scenario, std::optional<int> number) {
    return FindNumber(scenario.products, number);
}

ProductScenario* FindProduct(Scenario& scenario, std::optional<int> number) {
    return FindNumber(scenario.products, number);
}

const DeviceScenario* FindDevice(const ProductScenario& product, std::optional<int> number) {
    return FindNumber(product.devices, number);
}

DeviceScenario* FindDevice(ProductScenario& product, std::optional<int> number) {
    return FindNumber(product.devices, number);
}

const ParameterScenario* FindParameter(const ProductScenario& product, std::optional<int> number) {
    return FindNumber(product.parameters, number);
}

std::string MissingFrom(const Scenario& scenario, std::optional<int> product, std::optional<int> device) {
    if (!product) {
        return {};
    }
    const ProductScenario* const found = FindProduct(scenario, product);
    if (found == nullptr) {
        return "the scenario has no product " + std::to_string(*product);
    }
    if (device && FindDevice(*found, device) == nullptr) {
        return "product " + std::to_string(*product) + " has no device " + std::to_string(*device);
    }
    return {};
}

void CheckDeviceFault(const Scenario& scenario, const DeviceFault& fault) {
    const std::string missing = MissingFrom(scenario, fault.product, fault.device);
    if (!missing.empty()) {
        throw DeviceFaultError(missing);
    }
    if (fault.kind == DeviceFault::Kind::StuckOn &&
        FindDevice(*FindProduct(scenario, fault.product), fault.device)->IsSensorAlone()) {
        throw DeviceFaultError("device " + std::to_string(fault.device.value_or(0)) + " of product " +
                               std::to_string(fault.product.value_or(0)) +
                               " is a sensor alone, with nothing that could be stuck");
    }
}

std::string WhatIsWrong(const StatusScenario& status) {
    if (status.product < kFirstProduct || status.product > kLastProduct) {
        return "the server knows no product " + std::to_string(status.product);
    }
    if (status.device < 0 || status.device > kHighestDevice) {
        return "there is no device " + std::to_string(status.device);
    }
    if (status.error < 1 || status.error > kHighestError) {
        return "an error is a number from 1 to " + std::to_string(kHighestError) + ", not " +
               std::to_string(status.error);
    }
    return {};
}

}  // namespace emulator
