#include "incubator/Incubator.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "incubator/DeviceFault.h"
#include "incubator/DeviceSetting.h"
#include "incubator/Motion.h"
#include "incubator/Scenario.h"

namespace emulator {

namespace {

// Parameter 237 says whether a gas product works in air mode, 238 is where that is switched.
constexpr int kAirModeState = 237;
constexpr int kAirModeSwitch = 238;

constexpr double kDoorHaste = 10.0;  // how much faster a value goes to the ambient's through an open door

}  // namespace

Incubator::Incubator(Scenario scenario, unsigned seed, std::function<void(const EventScenario&)> onEvent)
    : m_scenario(std::move(scenario)), m_random(seed), m_onEvent(std::move(onEvent)) {
    for (const ProductScenario& product : m_scenario.products) {
        for (const DeviceScenario& device : product.devices) {
            m_motions.insert({{product.number, device.number}, {device.current, 0.0}});
        }
    }
    HappenUntilNow();
}

const ProductScenario* Incubator::FindPlugged(std::optional<int> number) const {
    const ProductScenario* const product = FindProduct(m_scenario, number);
    return product != nullptr && IsPlugged(product->number) ? product : nullptr;
}

DeviceScenario* Incubator::FindPlugged(std::optional<int> product, std::optional<int> device) {
    return FindPlugged(product) != nullptr ? FindDevice(*FindProduct(m_scenario, product), device) : nullptr;
}

double Incubator::Noise(double deviation) {
    return deviation > 0.0 ? std::normal_distribution<double>(0.0, deviation)(m_random) : 0.0;
}

void Incubator::MoveAll(double seconds) {
    for (const ProductScenario& product : m_scenario.products) {
        for (const DeviceScenario& device : product.devices) {
            const auto has = [&](DeviceFault::Kind kind) { return m_faults.Has(kind, product.number, device.number); };
            Motion& motion = MotionOf(product.number, device.number);
            if (has(DeviceFault::Kind::DoorOpen)) {
                Approach(motion, device.ambient, device.lagSeconds / kDoorHaste, seconds);
            } else if (has(DeviceFault::Kind::StuckOff) || has(DeviceFault::Kind::BottleEmpty)) {
                Control(motion, device.ambient, device.lagSeconds, 0.0, seconds);
            } else if (has(DeviceFault::Kind::StuckOn)) {
                Control(motion, device.max, device.lagSeconds, 0.0, seconds);
            } else {
                Control(motion, device.target, device.lagSeconds, device.overshoot, seconds);
            }
        }
    }
}

void Incubator::Advance(double seconds) {
    const double end = m_now + std::max(seconds, 0.0);
    m_faults.EndUntil(m_now);
    while (m_now < end) {
        double next = end;
        if (m_nextEvent < m_scenario.events.size()) {
            next = std::min(next, m_scenario.events[m_nextEvent].at);
        }
        next = std::min(next, m_faults.NextEnd().value_or(next));
        MoveAll(next - m_now);
        m_now = next;
        m_faults.EndUntil(m_now);
        HappenUntilNow();
    }
}

void Incubator::HappenUntilNow() {
    while (m_nextEvent < m_scenario.events.size() && m_scenario.events[m_nextEvent].at <= m_now) {
        const EventScenario& event = m_scenario.events[m_nextEvent];
        ++m_nextEvent;
        Happen(event);
    }
}

void Incubator::Happen(const EventScenario& event) {
    if (const auto* const fault = std::get_if<DeviceFault>(&event.does)) {
        Begin(*fault);
    } else if (const auto* const set = std::get_if<SetAction>(&event.does)) {
        Set(set->product, set->device, set->what, set->value);
    }
    if (m_onEvent) {
        m_onEvent(event);
    }
}

int Incubator::Begin(const DeviceFault& fault) {
    CheckDeviceFault(m_scenario, fault);
    if (fault.kind == DeviceFault::Kind::Restart) {
        m_comPorts.clear();
        m_findEnd = m_now;
    }
    const auto motion = m_motions.find({fault.product.value_or(0), fault.device.value_or(0)});
    return m_faults.Begin(fault, m_now, motion != m_motions.end() ? motion->second.value : 0.0);
}

void Incubator::Set(int product, int device, std::string_view what, std::string_view value) {
    const std::string missing = MissingFrom(m_scenario, product, device);
    if (!missing.empty()) {
        throw SettingError(missing);
    }
    SetDevice(*FindDevice(*FindProduct(m_scenario, product), device), MotionOf(product, device), what, value);
}

void Incubator::StoreParameter(int product, int number, const std::string& text) {
    ProductScenario* const owner = FindProduct(m_scenario, product);
    for (ParameterScenario& parameter : owner->parameters) {
        if (parameter.number == number || (number == kAirModeSwitch && parameter.number == kAirModeState)) {
            parameter.value = text;
            parameter.follows.reset();
        }
    }
}

void Incubator::SetParameter(int product, int number, const std::string& text) {
    const ProductScenario* const owner = FindProduct(m_scenario, product);
    if (owner == nullptr) {
        throw SettingError(MissingFrom(m_scenario, product, std::nullopt));
    }
    if (FindParameter(*owner, number) == nullptr) {
        throw SettingError("product " + std::to_string(product) + " has no parameter " + std::to_string(number));
    }
    StoreParameter(product, number, text);
}

void Incubator::SetStatus(int product, int device, int error) {
    const StatusScenario status{product, device, error};
    if (const std::string wrong = WhatIsWrong(status); !wrong.empty() && error != 0) {
        throw SettingError(wrong);
    }
    std::erase_if(m_scenario.status,
                  [&](const StatusScenario& entry) { return entry.product == product && entry.device == device; });
    if (error != 0) {
        m_scenario.status.push_back(status);
    }
}

IncubatorState Incubator::State() const {
    IncubatorState state{m_now, IsServerUp(), {}, m_scenario.status, m_faults.List()};
    for (const ProductScenario& product : m_scenario.products) {
        for (const DeviceScenario& device : product.devices) {
            state.devices.push_back({product.number, device.number, m_motions.at({product.number, device.number}).value,
                                     device.target, device.min, device.max, device.noise, device.error,
                                     IsPlugged(product.number)});
        }
    }
    return state;
}

}  // namespace emulator
