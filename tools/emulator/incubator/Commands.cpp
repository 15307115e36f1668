#include <array>
#include <charconv>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "incubator/DeviceFault.h"
#include "incubator/Incubator.h"
#include "incubator/RunningFaults.h"
#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "protocol/CommandTable.h"

namespace emulator {

namespace {

constexpr int kRefused = 3;

Answer Done() { return {0, "1"}; }

Answer Refuse(const std::string& why) { return {kRefused, std::string("e ").append(why)}; }

std::string FormatValue(double value) {
    std::array<char, 400> text;
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 3);
    return {text.data(), result.ptr};
}

/// The numbers of all in the list that `wanted` takes.
template <class List, class Wanted>
std::string Join(const List& list, Wanted wanted) {
    std::string text;
    for (const auto& element : list) {
        if (wanted(element.number)) {
            text.append(text.empty() ? "" : " ").append(std::to_string(element.number));
        }
    }
    return text;
}

bool IsAny(int) { return true; }

}  // namespace

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

Answer Incubator::ListConnected() const {
    return {0, Join(m_scenario.products, [this](int product) { return IsPlugged(product); })};
}

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
    const ProductScenario* const product = FindPlugged(command.Integer(0));
    return product != nullptr ? Answer{0, Join(product->devices, IsAny)} : Refuse("no such product");
}

Answer Incubator::ListParameters(const Command& command) const {
    const ProductScenario* const product = FindPlugged(command.Integer(0));
    return product != nullptr ? Answer{0, Join(product->parameters, IsAny)} : Refuse("no such product");
}

Answer Incubator::CheckConnection(const Command& command) const {
    return {0, FindPlugged(command.Integer(0)) != nullptr ? "1" : "0"};
}

Answer Incubator::Status() const {
    std::string triples;
    for (const StatusScenario& status : m_scenario.status) {
        if (!IsPlugged(status.product)) {
            continue;
        }
        for (const int number : {status.product, status.device, status.error}) {
            triples += std::to_string(number) + " ";  // every number is ended by a blank, the last one too
        }
    }
    return {0, triples.empty() ? " " : triples};
}

Answer Incubator::Find(const Command& command) {
    const ProductScenario* const product = FindPlugged(command.Integer(0));
    constexpr int kFindMsWithoutProduct = 100;
    m_findStart = m_now;
    m_findEnd = m_now + (product != nullptr ? product->findMs : kFindMsWithoutProduct) / 1000.0;
    return Done();
}

Answer Incubator::FindStatus() const {
    if (m_now >= m_findEnd) {
        return {0, "-1"};
    }
    const double part = (m_now - m_findStart) / (m_findEnd - m_findStart);
    return {0, std::to_string(static_cast<int>(part * 100.0))};
}

Answer Incubator::ReadCurrent(const Command& command) {
    const ProductScenario* const product = FindPlugged(command.Integer(0));
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
    const double value = MotionOf(product->number, device->number).value + Noise(device->noise);
    return {0, FormatValue(m_faults.Read(product->number, device->number, value, m_now).value)};
}

Answer Incubator::ReadSetPoint(const Command& command) {
    const DeviceScenario* const device = FindPlugged(command.Integer(0), command.Integer(1));
    return device != nullptr ? Answer{0, FormatValue(device->target)} : Refuse("no such device");
}

Answer Incubator::WriteSetPoint(const Command& command) {
    const ProductScenario* const product = FindPlugged(command.Integer(0));
    DeviceScenario* const device = FindPlugged(command.Integer(0), command.Integer(1));
    const auto value = command.Number(2);
    if (product == nullptr || device == nullptr || !value) {
        return Refuse("no such device or no value");
    }
    if (!(*value >= device->min && *value <= device->max)) {
        return Refuse("out of range");
    }
    if (m_faults.Has(DeviceFault::Kind::RefuseTarget, product->number, device->number)) {
        return Refuse("target refused");
    }
    if (!m_faults.Has(DeviceFault::Kind::IgnoreTarget, product->number, device->number)) {
        device->target = *value;
    }
    return Done();
}

Answer Incubator::ReadLimit(const Command& command, double DeviceScenario::* limit) {
    const DeviceScenario* const device = FindPlugged(command.Integer(0), command.Integer(1));
    return device != nullptr ? Answer{0, FormatValue(device->*limit)} : Refuse("no such device");
}

Answer Incubator::ReadParameter(const Command& command) {
    const ProductScenario* const product = FindPlugged(command.Integer(0));
    if (product == nullptr) {
        return Refuse("no such product");
    }
    const ParameterScenario* const parameter = FindParameter(*product, command.Integer(1));
    if (parameter == nullptr) {
        return Refuse("no such parameter");
    }
    if (!parameter->follows) {
        return {0, parameter->value};
    }
    const DeviceScenario& device = *FindDevice(*product, parameter->follows);
    if (!device.error.empty()) {
        return {0, std::string("e").append(device.error)};
    }
    const double value = MotionOf(product->number, device.number).value;
    const Shown shown = m_faults.Read(product->number, device.number, value, m_now);
    return {0, FormatValue(shown.value + parameter->offset + (shown.frozen ? 0.0 : Noise(parameter->noise)))};
}

Answer Incubator::WriteParameter(const Command& command) {
    const ProductScenario* const product = FindPlugged(command.Integer(0));
    const auto number = command.Integer(1);
    if (product == nullptr || !number) {
        return Refuse("no such parameter");
    }
    StoreParameter(product->number, *number, command.arguments[2]);
    return Done();
}

Answer Incubator::Alarm(const Command& command) {
    // Any product number: the plug-in names 0 where it has no product behind a channel.
    return command.Integer(0) && command.Number(1) ? Done() : Refuse("no product number or no threshold");
}

}  // namespace emulator
