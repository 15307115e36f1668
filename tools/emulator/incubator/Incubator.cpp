#include "incubator/Incubator.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <map>
#include <numbers>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "protocol/CommandTable.h"

namespace emulator {

namespace {

constexpr int kFirstProduct = 0;
constexpr int kLastProduct = 17;
constexpr int kRefused = 3;

// Parameter 237 says whether a gas product works in air mode, 238 is where that is switched.
constexpr int kAirModeState = 237;
constexpr int kAirModeSwitch = 238;

Answer Done() { return {0, "1"}; }

Answer Refuse(const std::string& why) { return {kRefused, std::string("e ").append(why)}; }

std::string FormatValue(double value) {
    std::array<char, 400> text;
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 3);
    return {text.data(), result.ptr};
}

template <class List, class Projection>
std::string Join(const List& list, Projection number) {
    std::string text;
    for (const auto& element : list) {
        text.append(text.empty() ? "" : " ").append(std::to_string(element.*number));
    }
    return text;
}

const DeviceScenario* FindDevice(const ProductScenario& product, std::optional<int> number) {
    const auto found =
        std::ranges::find_if(product.devices, [&](const DeviceScenario& device) { return number == device.number; });
    return found != product.devices.end() ? &*found : nullptr;
}

/// A damped oscillation towards the target, in steps small enough to stay stable.
void Move(double& value, double& speed, double target, const DeviceScenario& device, double seconds) {
    constexpr double kStepsInLag = 50.0;
    if (device.lagSeconds <= 0.0) {
        value = target;
        speed = 0.0;
        return;
    }
    // The damping that goes too far by this part of a step; 1 does not go too far at all.
    const double logarithm = device.overshoot > 0.0 ? std::log(device.overshoot) : 0.0;
    const double damping = device.overshoot > 0.0
                               ? -logarithm / std::sqrt(std::numbers::pi * std::numbers::pi + logarithm * logarithm)
                               : 1.0;
    const double frequency = 4.0 / (damping * device.lagSeconds);  // settled within the lag
    const double longest = device.lagSeconds / kStepsInLag * damping;
    const double steps = std::ceil(std::min(seconds / longest, 10'000.0));
    const double step = std::min(seconds / std::max(steps, 1.0), longest);
    for (int i = 0; i < static_cast<int>(steps); ++i) {
        speed += (frequency * frequency * (target - value) - 2.0 * damping * frequency * speed) * step;
        value += speed * step;
    }
}

}  // namespace

Incubator::Incubator(Scenario scenario, unsigned seed) : m_scenario(std::move(scenario)), m_random(seed) {}

const ProductScenario* Incubator::FindProduct(std::optional<int> number) const {
    const auto found = std::ranges::find_if(m_scenario.products,
                                            [&](const ProductScenario& product) { return number == product.number; });
    return found != m_scenario.products.end() ? &*found : nullptr;
}

Incubator::Motion& Incubator::MotionOf(const ProductScenario& product, const DeviceScenario& device) {
    return m_motions.try_emplace({product.number, device.number}, Motion{device.current, 0.0, device.target})
        .first->second;
}

double Incubator::Noise(double deviation) {
    return deviation > 0.0 ? std::normal_distribution<double>(0.0, deviation)(m_random) : 0.0;
}

void Incubator::Advance(double seconds) {
    m_now += seconds;
    for (const ProductScenario& product : m_scenario.products) {
        for (const DeviceScenario& device : product.devices) {
            Motion& motion = MotionOf(product, device);
            Move(motion.value, motion.speed, motion.target, device, seconds);
        }
    }
}

Answer Incubator::Execute(const Command& command) {
    using Handler = Answer (*)(Incubator&, const Command&);
    static const std::map<std::string_view, Handler> handlers{
        {"listprod", [](Incubator&, const Command&) { return ListKnown(); }},
        {"listconprod", [](Incubator& self, const Command&) { return self.ListConnected(); }},
        {"comport", [](Incubator& self, const Command& c) { return self.ComPort(c); }},
        {"listdev", [](Incubator& self, const Command& c) { return self.ListDevices(c); }},
        {"bl-param-list", [](Incubator& self, const Command& c) { return self.ListParameters(c); }},
        {"mode", [](Incubator&, const Command&) { return Done(); }},
        {"checkcon", [](Incubator& self, const Command& c) { return self.CheckConnection(c); }},
        {"start", [](Incubator&, const Command&) { return Done(); }},
        {"status", [](Incubator& self, const Command&) { return self.Status(); }},
        {"connect", [](Incubator&, const Command&) { return Done(); }},
        {"find", [](Incubator& self, const Command& c) { return self.Find(c); }},
        {"findstat", [](Incubator& self, const Command&) { return self.FindStatus(); }},
        {"readcurval", [](Incubator& self, const Command& c) { return self.ReadCurrent(c); }},
        {"readsetpoint", [](Incubator& self, const Command& c) { return self.ReadSetPoint(c); }},
        {"writesetpoint", [](Incubator& self, const Command& c) { return self.WriteSetPoint(c); }},
        {"readmin", [](Incubator& self, const Command& c) { return self.ReadLimit(c, &DeviceScenario::min); }},
        {"readmax", [](Incubator& self, const Command& c) { return self.ReadLimit(c, &DeviceScenario::max); }},
        {"bl-param-read", [](Incubator& self, const Command& c) { return self.ReadParameter(c); }},
        {"bl-param-write", [](Incubator& self, const Command& c) { return self.WriteParameter(c); }},
        {"alarm", [](Incubator&, const Command& c) { return Alarm(c); }},
    };
    const CommandEntry* const entry = FindCommand(command.keyword);
    const auto handler = handlers.find(command.keyword);
    if (entry == nullptr || handler == handlers.end()) {
        return Refuse("unknown command");
    }
    const std::size_t count = command.arguments.size();
    return count >= entry->fewest && count <= entry->most ? handler->second(*this, command)
                                                          : Refuse("wrong number of arguments");
}

Answer Incubator::ListKnown() {
    std::string list;
    for (int product = kFirstProduct; product <= kLastProduct; ++product) {
        list.append(list.empty() ? "" : " ").append(std::to_string(product));
    }
    return {0, list};
}

Answer Incubator::ListConnected() const { return {0, Join(m_scenario.products, &ProductScenario::number)}; }

Answer Incubator::ComPort(const Command& command) {
    // "comport P L" asks for the port of a product's link L, "comport P L N" sets it.
    const auto product = command.Integer(0);
    const auto link = command.Integer(1);
    if (!product || !link) {
        return Refuse("no such link");
    }
    if (command.arguments.size() == 2) {
        const auto port = m_comPorts.find({*product, *link});
        return {0, std::to_string(port != m_comPorts.end() ? port->second : m_scenario.comPort)};
    }
    const auto port = command.Integer(2);
    if (!port) {
        return Refuse("no port number");
    }
    m_comPorts[{*product, *link}] = *port;
    return Done();
}

Answer Incubator::ListDevices(const Command& command) const {
    const ProductScenario* const product = FindProduct(command.Integer(0));
    return product != nullptr ? Answer{0, Join(product->devices, &DeviceScenario::number)} : Refuse("no such product");
}

Answer Incubator::ListParameters(const Command& command) const {
    const ProductScenario* const product = FindProduct(command.Integer(0));
    return product != nullptr ? Answer{0, Join(product->parameters, &ParameterScenario::number)}
                              : Refuse("no such product");
}

Answer Incubator::CheckConnection(const Command& command) const {
    return {0, FindProduct(command.Integer(0)) != nullptr ? "1" : "0"};
}

Answer Incubator::Status() const {
    std::string triples = m_scenario.status.empty() ? " " : "";
    for (const StatusScenario& status : m_scenario.status) {
        for (const int number : {status.product, status.device, status.error}) {
            triples += std::to_string(number) + " ";  // every number is ended by a blank, the last one too
        }
    }
    return {0, triples};
}

Answer Incubator::Find(const Command& command) {
    const ProductScenario* const product = FindProduct(command.Integer(0));
    constexpr int kFindMsWithoutProduct = 100;
    m_findStart = m_now;
    m_findEnd = m_now + (product != nullptr ? product->findMs : kFindMsWithoutProduct) / 1000.0;
    return Done();
}

Answer Incubator::FindStatus() {
    if (m_now >= m_findEnd) {
        return {0, "-1"};
    }
    const double part = (m_now - m_findStart) / (m_findEnd - m_findStart);
    return {0, std::to_string(static_cast<int>(part * 100.0))};
}

Answer Incubator::ReadCurrent(const Command& command) {
    const ProductScenario* const product = FindProduct(command.Integer(0));
    if (product == nullptr) {
        return Refuse("no such product");
    }
    const DeviceScenario* const device = FindDevice(*product, command.arguments.size() > 1 ? command.Integer(1) : 0);
    if (device == nullptr) {
        return {0, "nan"};  // no sensor there
    }
    if (!device->error.empty()) {
        return {0, std::string("e").append(device->error)};
    }
    return {0, FormatValue(MotionOf(*product, *device).value + Noise(device->noise))};
}

Answer Incubator::ReadSetPoint(const Command& command) {
    const ProductScenario* const product = FindProduct(command.Integer(0));
    const DeviceScenario* const device = product != nullptr ? FindDevice(*product, command.Integer(1)) : nullptr;
    return device != nullptr ? Answer{0, FormatValue(MotionOf(*product, *device).target)} : Refuse("no such device");
}

Answer Incubator::WriteSetPoint(const Command& command) {
    const ProductScenario* const product = FindProduct(command.Integer(0));
    const DeviceScenario* const device = product != nullptr ? FindDevice(*product, command.Integer(1)) : nullptr;
    const auto value = command.Number(2);
    if (device == nullptr || !value) {
        return Refuse("no such device or no value");
    }
    if (!(*value >= device->min && *value <= device->max)) {
        return Refuse("out of range");
    }
    MotionOf(*product, *device).target = *value;
    return Done();
}

Answer Incubator::ReadLimit(const Command& command, double DeviceScenario::* limit) const {
    const ProductScenario* const product = FindProduct(command.Integer(0));
    const DeviceScenario* const device = product != nullptr ? FindDevice(*product, command.Integer(1)) : nullptr;
    return device != nullptr ? Answer{0, FormatValue(device->*limit)} : Refuse("no such device");
}

Answer Incubator::ReadParameter(const Command& command) {
    const ProductScenario* const product = FindProduct(command.Integer(0));
    if (product == nullptr) {
        return Refuse("no such product");
    }
    const auto number = command.Integer(1);
    const auto parameter = std::ranges::find_if(
        product->parameters, [&](const ParameterScenario& candidate) { return number == candidate.number; });
    if (parameter == product->parameters.end()) {
        return Refuse("no such parameter");
    }
    const auto written = m_written.find({product->number, parameter->number});
    if (written != m_written.end()) {
        return {0, written->second};
    }
    if (!parameter->follows) {
        return {0, parameter->value};
    }
    const DeviceScenario& device = *FindDevice(*product, parameter->follows);
    if (!device.error.empty()) {
        return {0, std::string("e").append(device.error)};
    }
    return {0, FormatValue(MotionOf(*product, device).value + parameter->offset + Noise(parameter->noise))};
}

Answer Incubator::WriteParameter(const Command& command) {
    const ProductScenario* const product = FindProduct(command.Integer(0));
    const auto number = command.Integer(1);
    if (product == nullptr || !number) {
        return Refuse("no such parameter");
    }
    m_written[{product->number, *number}] = command.arguments[2];
    if (*number == kAirModeSwitch) {
        m_written[{product->number, kAirModeState}] = command.arguments[2];
    }
    return Done();
}

Answer Incubator::Alarm(const Command& command) {
    // Any product number: the plug-in names 0 where it has no product behind a channel.
    return command.Integer(0) && command.Number(1) ? Done() : Refuse("no product number or no threshold");
}

}  // namespace emulator
