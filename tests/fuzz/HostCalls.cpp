#include "fuzz/HostCalls.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <string>

#include "fuzz/Fuzz.h"
#include "oko/INotify.h"
#include "ui/StatusReport.h"

namespace {

template <class Channel>
using ReadSlot = std::int32_t (Channel::*)(double*);

template <class Channel>
void CheckRead(Channel& channel, ReadSlot<Channel> read) {
    double value = 0.0;
    if ((channel.*read)(&value) == oko::kSuccess) {
        Require(std::isfinite(value), "a value handed out with success is finite");
    }
}

template <class Channel>
void CheckTolerance(Channel& channel, HostNumbers& numbers) {
    double below = 0.0;
    double above = 0.0;
    channel.GetTolerance(&below, &above);
    Require(std::isfinite(below) && std::isfinite(above), "a tolerance is finite");

    // What the host itself hands in comes back as it is; it is put in order again for the check above.
    const double odd = numbers.Next();
    channel.SetTolerance(odd, 0.5);
    channel.GetTolerance(&below, &above);
    Require(std::bit_cast<std::uint64_t>(below) == std::bit_cast<std::uint64_t>(odd), "a tolerance is kept");
    channel.SetTolerance(std::isfinite(odd) ? odd : 0.5, 0.5);
}

void CheckName(INotify& channel) {
    std::array<wchar_t, oko::kChannelNameLength> name{};
    Require(channel.GetName(name.data(), oko::kChannelNameLength) == oko::kSuccess, "every channel tells its name");
    Require(name.back() == L'\0', "a name leaves room for its terminator");
    channel.SetEnabled(1);
    channel.NoOperation();
}

/// A target is told to the server whatever the host asks for; then it is read back.
template <class Channel>
void UseChannel(Channel& channel, HostNumbers& numbers, ReadSlot<Channel> current, ReadSlot<Channel> target,
                std::int32_t (Channel::*setTarget)(double), std::int32_t (Channel::*readState)(std::uint32_t*)) {
    constexpr std::uint32_t kLargestState = 4;
    CheckName(channel);
    CheckRead(channel, current);
    (channel.*setTarget)(numbers.Next());
    CheckRead(channel, target);
    std::uint32_t state = 0;
    (channel.*readState)(&state);
    Require(state <= kLargestState, "a state is one of the known ones");
    CheckTolerance(channel, numbers);
    for (std::int32_t feature = -1; feature <= 5; ++feature) {
        channel.HasFeature(feature);
    }
}

void UseTemperature(CDevApiInterface_Temperature& channel, HostNumbers& numbers) {
    using Channel = CDevApiInterface_Temperature;
    UseChannel(channel, numbers, &Channel::GetCurrentTemperature, &Channel::GetTargetTemperature,
               &Channel::SetTargetTemperature, &Channel::GetTemperatureState);
    channel.SetTemperatureRate(numbers.Next());
    CheckRead(channel, &Channel::GetTemperatureStep);
    channel.NotSupported();
    double min = 0.0;
    double max = 0.0;
    channel.GetTemperatureLimits(&min, &max);
    Require(std::isfinite(min) && std::isfinite(max), "a limit is finite");
}

void UseGasConcentration(CDevApiInterface_GasConcentration& channel, HostNumbers& numbers) {
    using Channel = CDevApiInterface_GasConcentration;
    UseChannel(channel, numbers, &Channel::GetCurrentGasConcentration, &Channel::GetTargetGasConcentration,
               &Channel::SetTargetGasConcentration, &Channel::GetGasConcentrationState);
}

void UseHumidifier(CDevApiInterface_Humidifier& channel, HostNumbers& numbers) {
    using Channel = CDevApiInterface_Humidifier;
    UseChannel(channel, numbers, &Channel::GetCurrentHumidity, &Channel::GetTargetHumidity, &Channel::SetTargetHumidity,
               &Channel::GetHumidityState);
}

/// Visits the live channels and the one behind them, up to the bound, where there is none.
template <class Channel>
void UseLive(CDevApiInterface_Impl& device, HostNumbers& numbers, int live, int bound,
             std::int32_t (CDevApiInterface_Impl::*get)(std::uint32_t, Channel**),
             void (*use)(Channel& channel, HostNumbers& numbers)) {
    for (int index = 0; index <= live; ++index) {
        Channel* channel = nullptr;
        Require((device.*get)(static_cast<std::uint32_t>(index), &channel) == oko::kSuccess,
                "asking for a channel works");
        Require((channel != nullptr) == (index < bound), "every index below the bound has a channel");
        if (channel != nullptr) {
            use(*channel, numbers);
        }
    }
}

}  // namespace

HostNumbers::HostNumbers(std::string_view text) {
    const std::string copy(text);
    const char* next = copy.c_str();
    char* end = nullptr;
    for (double number = std::strtod(next, &end); end != next; number = std::strtod(next, &end)) {
        m_numbers.push_back(number);
        next = end;
    }
    if (m_numbers.empty()) {
        m_numbers.push_back(37.0);
    }
}

double HostNumbers::Next() noexcept { return m_numbers[m_next++ % m_numbers.size()]; }

void CheckCommand(std::string_view command) {
    constexpr std::size_t kLongestCommand = 63;
    Require(!command.empty() && command.size() <= kLongestCommand, "a command fits its buffer");
    Require(std::ranges::all_of(command, [](char c) { return c >= ' ' && c <= '~'; }), "a command is plain text");
    Require(command.find("nan") == std::string_view::npos && command.find("inf") == std::string_view::npos,
            "a command's numbers are finite");
}

void CheckCounts(CDevApiInterface_Impl& device) {
    const auto isWithin = [](std::int32_t count, int bound) { return count >= 0 && count <= bound; };
    Require(isWithin(device.GetTemperatureCount(), CDevApiInterface_Impl::kTemperatures) &&
                isWithin(device.GetGasConcentrationCount(), CDevApiInterface_Impl::kGasConcentrations) &&
                isWithin(device.GetHumidifierCount(), CDevApiInterface_Impl::kHumidifiers),
            "the live counts stay within the arrays");
}

void UseChannels(CDevApiInterface_Impl& device, HostNumbers& numbers) {
    using Device = CDevApiInterface_Impl;
    CheckCounts(device);
    UseLive(device, numbers, device.GetTemperatureCount(), Device::kTemperatures, &Device::GetTemperature,
            UseTemperature);
    UseLive(device, numbers, device.GetGasConcentrationCount(), Device::kGasConcentrations,
            &Device::GetGasConcentration, UseGasConcentration);
    UseLive(device, numbers, device.GetHumidifierCount(), Device::kHumidifiers, &Device::GetHumidifier, UseHumidifier);
}

void ReadStatusReport(CDevApiInterface_Impl& device) {
    constexpr int kTwoLines = 26;
    const StatusReport report = CollectStatusReport(device);
    const auto lines = std::ranges::count(report.text, L'\n');
    Require(lines >= report.rows, "every row has its line");
    const StatusColumns columns = SplitStatusReport(report.text);
    Require(columns.texts[0] + columns.texts[1] + columns.texts[2] == report.text, "the columns hold the whole report");
    LayOutStatusReport(kTwoLines, report.rows, columns);
}
