#include "control/Wait.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "control/ControlTable.h"
#include "faults/Pattern.h"
#include "incubator/Incubator.h"
#include "server/EmulatedServer.h"
#include "text/Number.h"
#include "text/Parsed.h"
#include "text/Words.h"

namespace emulator {

namespace {

constexpr std::string_view kForms =
    "time SECONDS, commands COUNT, command PATTERN, value PRODUCT DEVICE LOW HIGH, or fault NUMBER";

[[noreturn]] void Fail(std::string_view until) {
    throw ControlError(InQuotes(until) + " is nothing to wait for; there are: " + std::string(kForms));
}

/// The numbers in a text of exactly `Count` of them.
template <std::size_t Count>
std::array<double, Count> ReadNumbers(std::string_view text, std::string_view until) {
    std::array<double, Count> numbers{};
    for (double& number : numbers) {
        const Parsed<double> parsed = ParseNumber(TakeWord(text));
        if (!parsed) {
            Fail(until);
        }
        number = *parsed;
    }
    if (!text.empty()) {
        Fail(until);
    }
    return numbers;
}

int Whole(double number, std::string_view until) {
    constexpr double kMost = 1e9;
    if (std::trunc(number) != number || number < 0.0 || number > kMost) {
        Fail(until);
    }
    return static_cast<int>(number);
}

}  // namespace

Wait::Wait(std::string_view until, std::int64_t commands) {
    std::string_view rest = until;
    const std::string_view word = TakeWord(rest);
    if (word == "time") {
        m_kind = Kind::Time;
        m_time = ReadNumbers<1>(rest, until)[0];
    } else if (word == "commands") {
        m_kind = Kind::Commands;
        m_commands = commands + Whole(ReadNumbers<1>(rest, until)[0], until);
    } else if (word == "command" && !rest.empty()) {
        m_kind = Kind::Command;
        m_pattern = Pattern(rest);
    } else if (word == "value") {
        const auto [product, device, low, high] = ReadNumbers<4>(rest, until);
        m_kind = Kind::Value;
        m_product = Whole(product, until);
        m_device = Whole(device, until);
        m_low = low;
        m_high = high;
    } else if (word == "fault") {
        m_kind = Kind::Fault;
        m_fault = Whole(ReadNumbers<1>(rest, until)[0], until);
    } else {
        Fail(until);
    }
}

void Wait::Meet(std::string_view command) { m_met = m_met || (m_pattern && m_pattern->Fits(command)); }

bool Wait::IsSo(EmulatedServer& server, std::int64_t commands, double now) const {
    switch (m_kind) {
        case Kind::Time:
            return server.At(now).Time() >= m_time;
        case Kind::Commands:
            return commands >= m_commands;
        case Kind::Command:
            return m_met;
        case Kind::Value: {
            const std::vector<DeviceState> devices = server.At(now).State().devices;
            return std::ranges::any_of(devices, [this](const DeviceState& device) {
                return device.product == m_product && device.device == m_device && device.value >= m_low &&
                       device.value <= m_high;
            });
        }
        case Kind::Fault:
            break;
    }
    const std::vector<FaultState> faults = server.ListFaults(now);
    return std::ranges::any_of(faults,
                               [this](const FaultState& fault) { return fault.number == m_fault && fault.fired > 0; });
}

}  // namespace emulator
