// The last part of Init: which channel objects are live, and what each of them addresses.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>

#include "catalogue/Catalogue.h"
#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "channels/CDevApiInterface_Humidifier_Impl.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "channels/ParameterRead.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/ChannelSlot.h"
#include "core/ChannelTable.h"
#include "core/RangeReply.h"
#include "link/Exchange.h"
#include "link/Products.h"

namespace {

constexpr ChannelRange kSensorRange{0.0, 0.0};

/// Makes the next channel of an array live. A full array takes no more.
// kept: docs/oddities.md#full-array-still-asks
template <class Channel, std::size_t Count>
void AddChannel(CDevApiInterface_Impl& device, std::array<ChannelSlot<Channel>, Count>& channels,
                std::atomic<std::int32_t>& liveCount, std::int32_t product, std::optional<std::int32_t> zone,
                const ChannelRange& range) noexcept {
    const auto index = static_cast<std::size_t>(liveCount);
    if (index >= Count || channels[index] == nullptr) {
        return;
    }
    Channel& channel = *channels[index];
    {
        const std::scoped_lock lock(device.m_csCatalogue);
        Put(channel.m_address, {product, zone.value_or(Get(channel.m_address).m_iChannel)});
        channel.m_dMin = range.min;
        channel.m_dMax = range.max;
    }
    ++liveCount;
}

void AddChannel(CDevApiInterface_Impl& device, ChannelKind kind, std::int32_t product, std::optional<std::int32_t> zone,
                const ChannelRange& range) noexcept {
    switch (kind) {
        case ChannelKind::Temperature:
            AddChannel(device, device.m_pTemperature, device.m_nTemperatures, product, zone, range);
            return;
        case ChannelKind::Gas:
            AddChannel(device, device.m_pGasConcentration, device.m_nGasConcentrations, product, zone, range);
            return;
        case ChannelKind::Humidity:
            AddChannel(device, device.m_pHumidifier, device.m_nHumidifiers, product, zone, range);
            return;
    }
}

bool HasRoom(const CDevApiInterface_Impl& device, ChannelKind kind) noexcept {
    switch (kind) {
        case ChannelKind::Temperature:
            return device.m_nTemperatures < CDevApiInterface_Impl::kTemperatures;
        case ChannelKind::Gas:
            return device.m_nGasConcentrations < CDevApiInterface_Impl::kGasConcentrations;
        case ChannelKind::Humidity:
            break;
    }
    return device.m_nHumidifiers < CDevApiInterface_Impl::kHumidifiers;
}

ChannelRange AskRange(const LinkOperation& operation, std::int32_t product, std::int32_t zone,
                      const RangeSetup& setup) noexcept {
    const Reply min = Ask(operation, FormatCommand(command::kReadMin, {product, zone}));
    const Reply max = Ask(operation, FormatCommand(command::kReadMax, {product, zone}));
    const ChannelRange range{ReadRangeEnd(min.bytes(), setup.defaults.min),
                             ReadRangeEnd(max.bytes(), setup.defaults.max)};
    const bool tooSmall = range.min < kSmallestRangeEnd || range.max < kSmallestRangeEnd;
    return tooSmall ? setup.ifTooSmall.value_or(range) : range;
}

bool IsZonePresent(const LinkOperation& operation, std::int32_t product, std::int32_t zone) noexcept {
    return IsReplyValueNonZero(Ask(operation, FormatCommand(command::kReadCurrent, {product, zone})).text());
}

void AddZone(const LinkOperation& operation, ChannelKind kind, std::int32_t product, const ZoneSetup& zone) noexcept {
    if (zone.onlyIfPresent && !IsZonePresent(operation, product, zone.zone)) {
        return;
    }
    const ChannelRange range = zone.range ? AskRange(operation, product, zone.zone, *zone.range) : kSensorRange;
    if (!operation.HasEnded()) {  // an answer that did not come is no range
        AddChannel(operation.Device(), kind, product, zone.writesZone ? std::optional(zone.zone) : std::nullopt, range);
    }
}

void AddProbedSensors(const LinkOperation& operation, std::int32_t product,
                      std::span<const SensorProbe> probes) noexcept {
    for (const SensorProbe& probe : probes) {
        if (IsDeviceParameterPresent(operation, static_cast<std::uint32_t>(product),
                                     static_cast<std::uint32_t>(probe.parameter), probe.companion) &&
            !operation.HasEnded()) {
            AddChannel(operation.Device(), ChannelKind::Temperature, product, probe.parameter, kSensorRange);
        }
    }
}

bool WantsHumidifierSensors(CDevApiInterface_Impl& device, HumidifierSensors when) noexcept {
    if (when != HumidifierSensors::WithoutHumidifier) {
        return when == HumidifierSensors::Always;
    }
    return !AnyProduct(device, [](std::int32_t product) noexcept { return product == product::kActiveHumidifier; });
}

void AddProduct(const LinkOperation& operation, std::int32_t product) noexcept {
    CDevApiInterface_Impl& device = operation.Device();
    const ProductSetup& setup = SetupOf(product);
    const ChannelKind kind = TraitsOf(product).kind;
    if (!HasRoom(device, kind)) {
        return;
    }
    for (const ZoneSetup& zone : setup.zones) {
        AddZone(operation, kind, product, zone);
    }
    AddProbedSensors(operation, product, setup.probes);
    if (WantsHumidifierSensors(device, setup.humidifierSensors)) {
        AddProbedSensors(operation, product, kHumidifierProbes);
    }
}

}  // namespace

void CDevApiInterface_Impl::AssignChannels(const LinkOperation& operation) noexcept {
    for (std::size_t i = 0; const auto product = ProductAt(*this, i); ++i) {
        AddProduct(operation, *product);
    }
}
