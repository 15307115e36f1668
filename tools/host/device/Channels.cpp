#include "device/Channels.h"

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "oko/BandState.h"
#include "oko/CDevApiInterface.h"
#include "oko/CDevApiInterface_GasConcentration.h"
#include "oko/CDevApiInterface_Humidifier.h"
#include "oko/CDevApiInterface_Temperature.h"
#include "oko/INotify.h"
#include "oko/Result.h"
#include "text/Text.h"

namespace {

constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

/// A reading slot's value; NaN when it failed or left the value alone.
template <class Interface>
std::function<double()> Reader(Interface& channel, std::int32_t (Interface::*slot)(double*)) {
    return [&channel, slot] {
        double value = kNoValue;
        return (channel.*slot)(&value) == oko::kSuccess ? value : kNoValue;
    };
}

std::string NameOf(INotify& channel) {
    std::array<wchar_t, oko::kChannelNameLength> name{};
    channel.GetName(name.data(), static_cast<std::int32_t>(name.size()) - 1);
    return name.front() != L'\0' ? ToUtf8(name.data()) : "(unnamed)";
}

std::string TemperatureState(CDevApiInterface_Temperature& channel) {
    std::uint32_t state = oko::kTemperatureNone;
    channel.GetTemperatureState(&state);
    switch (state) {
        case oko::kTemperatureBelow:
            return "heating";
        case oko::kTemperatureAbove:
            return "above";
        case oko::kTemperatureWithin:
            return "ok";
        default:
            return "none";
    }
}

std::string PercentState(std::uint32_t state) { return state == oko::kWithinBand ? "ok" : "outside"; }

void AddTemperatures(CDevApiInterface& device, std::vector<Channel>& channels) {
    for (int i = 0; i < device.GetTemperatureCount(); ++i) {
        CDevApiInterface_Temperature* slot = nullptr;
        device.GetTemperature(static_cast<std::uint32_t>(i), &slot);
        if (slot == nullptr) {
            continue;
        }
        auto& channel = *slot;
        channels.push_back({ChannelKind::Temperature, i, NameOf(channel),
                            Reader(channel, &CDevApiInterface_Temperature::GetCurrentTemperature),
                            Reader(channel, &CDevApiInterface_Temperature::GetTargetTemperature),
                            [&channel](double value) { return channel.SetTargetTemperature(value) == oko::kSuccess; },
                            [&channel] { return TemperatureState(channel); }});
    }
}

void AddGases(CDevApiInterface& device, std::vector<Channel>& channels) {
    for (int i = 0; i < device.GetGasConcentrationCount(); ++i) {
        CDevApiInterface_GasConcentration* slot = nullptr;
        device.GetGasConcentration(static_cast<std::uint32_t>(i), &slot);
        if (slot == nullptr) {
            continue;
        }
        auto& channel = *slot;
        channels.push_back(
            {ChannelKind::Gas, i, NameOf(channel),
             Reader(channel, &CDevApiInterface_GasConcentration::GetCurrentGasConcentration),
             Reader(channel, &CDevApiInterface_GasConcentration::GetTargetGasConcentration),
             [&channel](double value) { return channel.SetTargetGasConcentration(value) == oko::kSuccess; },
             [&channel] {
                 std::uint32_t state = oko::kOutsideBand;
                 channel.GetGasConcentrationState(&state);
                 const bool airMode = channel.HasFeature(oko::kFeatureAirMode);
                 return PercentState(state) + (airMode ? ", air mode" : "");
             }});
    }
}

void AddHumidifiers(CDevApiInterface& device, std::vector<Channel>& channels) {
    for (int i = 0; i < device.GetHumidifierCount(); ++i) {
        CDevApiInterface_Humidifier* slot = nullptr;
        device.GetHumidifier(static_cast<std::uint32_t>(i), &slot);
        if (slot == nullptr) {
            continue;
        }
        auto& channel = *slot;
        channels.push_back({ChannelKind::Humidity, i, NameOf(channel),
                            Reader(channel, &CDevApiInterface_Humidifier::GetCurrentHumidity),
                            Reader(channel, &CDevApiInterface_Humidifier::GetTargetHumidity),
                            [&channel](double value) { return channel.SetTargetHumidity(value) == oko::kSuccess; },
                            [&channel] {
                                std::uint32_t state = oko::kOutsideBand;
                                channel.GetHumidityState(&state);
                                return PercentState(state);
                            }});
    }
}

}  // namespace

std::vector<Channel> ListChannels(CDevApiInterface& device) {
    std::vector<Channel> channels;
    AddTemperatures(device, channels);
    AddGases(device, channels);
    AddHumidifiers(device, channels);
    return channels;
}
