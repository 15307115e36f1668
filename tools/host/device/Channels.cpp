#include "device/Channels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/Reading.h"
#include "oko/BandState.h"
#include "oko/CDevApiInterface.h"
#include "oko/CDevApiInterface_GasConcentration.h"
#include "oko/CDevApiInterface_Humidifier.h"
#include "oko/CDevApiInterface_Temperature.h"
#include "oko/INotify.h"
#include "oko/Result.h"
#include "text/Text.h"

namespace {

/// The slots of one kind of channel that all kinds have, under the names that they have there.
template <class Interface>
struct Slots {
    ChannelKind kind;
    std::int32_t (CDevApiInterface::*count)();
    std::int32_t (CDevApiInterface::*channel)(std::uint32_t, Interface**);
    std::int32_t (Interface::*readCurrent)(double*);
    std::int32_t (Interface::*readTarget)(double*);
    std::int32_t (Interface::*setTarget)(double);
    std::int32_t (Interface::*state)(std::uint32_t*);
};

constexpr Slots<CDevApiInterface_Temperature> kTemperature{ChannelKind::Temperature,
                                                           &CDevApiInterface::GetTemperatureCount,
                                                           &CDevApiInterface::GetTemperature,
                                                           &CDevApiInterface_Temperature::GetCurrentTemperature,
                                                           &CDevApiInterface_Temperature::GetTargetTemperature,
                                                           &CDevApiInterface_Temperature::SetTargetTemperature,
                                                           &CDevApiInterface_Temperature::GetTemperatureState};
constexpr Slots<CDevApiInterface_GasConcentration> kGas{ChannelKind::Gas,
                                                        &CDevApiInterface::GetGasConcentrationCount,
                                                        &CDevApiInterface::GetGasConcentration,
                                                        &CDevApiInterface_GasConcentration::GetCurrentGasConcentration,
                                                        &CDevApiInterface_GasConcentration::GetTargetGasConcentration,
                                                        &CDevApiInterface_GasConcentration::SetTargetGasConcentration,
                                                        &CDevApiInterface_GasConcentration::GetGasConcentrationState};
constexpr Slots<CDevApiInterface_Humidifier> kHumidity{ChannelKind::Humidity,
                                                       &CDevApiInterface::GetHumidifierCount,
                                                       &CDevApiInterface::GetHumidifier,
                                                       &CDevApiInterface_Humidifier::GetCurrentHumidity,
                                                       &CDevApiInterface_Humidifier::GetTargetHumidity,
                                                       &CDevApiInterface_Humidifier::SetTargetHumidity,
                                                       &CDevApiInterface_Humidifier::GetHumidityState};

/// A reading slot's answer. A slot that has no number to give returns success and leaves the variable alone.
template <class Interface>
std::function<Answer()> Reader(Interface& channel, std::int32_t (Interface::*slot)(double*)) {
    return [&channel, slot]() -> Answer {
        double value = std::numeric_limits<double>::quiet_NaN();
        if ((channel.*slot)(&value) != oko::kSuccess) {
            return {};
        }
        return {true, std::isfinite(value) ? std::optional(value) : std::nullopt};
    };
}

std::string NameOf(INotify& channel) {
    std::array<wchar_t, oko::kChannelNameLength> name{};
    channel.GetName(name.data(), static_cast<std::int32_t>(name.size()) - 1);
    return name.front() != L'\0' ? ToUtf8(name.data()) : "(unnamed)";
}

ChannelState StateOf(ChannelKind kind, std::uint32_t state) {
    if (kind != ChannelKind::Temperature) {
        return state == oko::kWithinBand ? ChannelState::Within : ChannelState::Below;  // which side: MakeReading
    }
    switch (state) {
        case oko::kTemperatureBelow:
            return ChannelState::Below;
        case oko::kTemperatureAbove:
            return ChannelState::Above;
        case oko::kTemperatureWithin:
            return ChannelState::Within;
        default:
            return ChannelState::None;
    }
}

void FillLimits(CDevApiInterface_Temperature& channel, ChannelInfo& info) {
    info.canSetTarget = !channel.HasFeature(oko::kFeatureSensorOnly);
    if (info.canSetTarget) {
        channel.GetTemperatureLimits(&info.min, &info.max);
    }
}

/// The library tells no narrower range of these; the server's own may be.
template <class Interface>
void FillLimits(Interface&, ChannelInfo& info) {
    info.canSetTarget = true;
    info.min = 0.0;
    info.max = 99.99;
}

template <class Interface>
void Add(CDevApiInterface& device, const Slots<Interface>& slots, std::vector<Channel>& channels) {
    for (int i = 0; i < (device.*slots.count)(); ++i) {
        Interface* slot = nullptr;
        (device.*slots.channel)(static_cast<std::uint32_t>(i), &slot);
        if (slot == nullptr) {
            continue;
        }
        Interface& channel = *slot;
        ChannelInfo info;
        info.kind = slots.kind;
        info.number = i;
        info.name = NameOf(channel);
        FillLimits(channel, info);
        if (info.canSetTarget) {
            channel.GetTolerance(&info.below, &info.above);
        }
        channels.push_back(
            {info, Reader(channel, slots.readCurrent), Reader(channel, slots.readTarget),
             [&channel, &slots](double value) { return (channel.*slots.setTarget)(value) == oko::kSuccess; },
             [&channel, &slots] {
                 std::uint32_t state = 0;
                 (channel.*slots.state)(&state);
                 return StateOf(slots.kind, state);
             },
             [&channel, &slots] {
                 return slots.kind == ChannelKind::Gas && channel.HasFeature(oko::kFeatureAirMode);
             }});
    }
}

}  // namespace

std::vector<Channel> ListChannels(CDevApiInterface& device) {
    std::vector<Channel> channels;
    Add(device, kTemperature, channels);
    Add(device, kGas, channels);
    Add(device, kHumidity, channels);

    std::vector<ChannelInfo*> infos;
    std::ranges::transform(channels, std::back_inserter(infos), [](Channel& channel) { return &channel.info; });
    GiveKeys(infos);
    return channels;
}

void GiveKeys(std::vector<ChannelInfo*> channels) {
    const auto count = [&](const ChannelInfo& info, bool ofItsKind) {
        return std::ranges::count_if(channels, [&](const ChannelInfo* other) {
            return other->name == info.name && (!ofItsKind || other->kind == info.kind);
        });
    };
    for (ChannelInfo* const info : channels) {
        info->key = info->name;
        if (count(*info, false) > 1) {
            info->key = std::string(KindName(info->kind)) + ":" + info->name;
        }
        if (count(*info, true) > 1) {
            info->key.append(":").append(std::to_string(info->number));
        }
    }
}

Reading MakeReading(const ChannelInfo& channel, const Answer& current, const Answer& target, ChannelState bandState) {
    Reading reading;
    reading.current = current.number;
    reading.target = target.number;
    if (!current.answered) {
        reading.state = ChannelState::NoAnswer;
    } else if (!current.number) {
        reading.state = ChannelState::NoValue;
    } else if (!channel.canSetTarget || !target.number) {
        reading.state = ChannelState::None;
    } else if (channel.kind != ChannelKind::Temperature && bandState != ChannelState::Within) {
        reading.state = *current.number < *target.number ? ChannelState::Below : ChannelState::Above;
    } else {
        reading.state = bandState;
    }
    return reading;
}
