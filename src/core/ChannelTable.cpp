#include "core/ChannelTable.h"

#include <algorithm>

namespace {

constexpr RangeSetup kUpTo60{{0.0, 60.0}, std::nullopt};
constexpr RangeSetup kHumidityRange{{50.0, 95.0}, std::nullopt};
constexpr RangeSetup k25To50{{0.0, 0.0}, ChannelRange{25.0, 50.0}};
constexpr RangeSetup k25To60{{0.0, 0.0}, ChannelRange{25.0, 60.0}};

// zone, written, only if present, range
constexpr std::array<ZoneSetup, 5> kZones7{{
    {0, false, false, kUpTo60},
    {1, true, true, std::nullopt},
    {2, true, true, std::nullopt},
    {3, true, true, std::nullopt},
    {4, true, true, std::nullopt},
}};
constexpr std::array<ZoneSetup, 1> kZones8And9{{{0, true, false, kUpTo60}}};
constexpr std::array<ZoneSetup, 1> kZones14{{{0, false, false, kUpTo60}}};
constexpr std::array<ZoneSetup, 1> kZones15{{{0, false, false, kHumidityRange}}};
constexpr std::array<ZoneSetup, 3> kZones16{{
    {0, true, true, k25To50},
    {1, true, true, k25To50},
    {2, true, true, std::nullopt},
}};
constexpr std::array<ZoneSetup, 7> kZones17{{
    {0, true, false, k25To60},
    {1, true, true, std::nullopt},
    {2, true, true, std::nullopt},
    {3, true, true, std::nullopt},
    {4, true, true, std::nullopt},
    {5, true, true, std::nullopt},
    {6, true, true, std::nullopt},
}};
constexpr std::array<ZoneSetup, 1> kGasZone{{{0, true, false, kUpTo60}}};
constexpr std::array<ZoneSetup, 2> kMixerZones{{{0, true, false, kUpTo60}, {1, true, false, kUpTo60}}};

// parameter, companion
constexpr std::array<SensorProbe, 3> kProbes8{{{74, -1}, {87, -1}, {88, -1}}};
constexpr std::array<SensorProbe, 7> kProbes9{
    {{107, 115}, {119, -1}, {109, 117}, {110, -1}, {108, 116}, {189, 192}, {132, -1}}};
constexpr std::array<SensorProbe, 5> kProbes14{{{107, 115}, {119, -1}, {189, 192}, {132, -1}, {259, -1}}};

struct SetupRow {
    std::int32_t product;
    ProductSetup setup;
};

constexpr std::array<SetupRow, 10> kSetupRows{{
    {7, {ChannelKind::Temperature, kZones7, {}}},
    {8, {ChannelKind::Temperature, kZones8And9, kProbes8}},
    {9, {ChannelKind::Temperature, kZones8And9, kProbes9}},
    {14, {ChannelKind::Temperature, kZones14, kProbes14}},
    {15, {ChannelKind::Humidity, kZones15, {}, HumidifierSensors::Always}},
    {16, {ChannelKind::Temperature, kZones16, {}}},
    {17, {ChannelKind::Temperature, kZones17, {}}},
    {10, {ChannelKind::Gas, kGasZone, {}, HumidifierSensors::WithoutHumidifier}},
    {12, {ChannelKind::Gas, kMixerZones, {}, HumidifierSensors::WithoutHumidifier}},
    {13, {ChannelKind::Gas, kMixerZones, {}, HumidifierSensors::WithoutHumidifier}},
}};

// Product 11, and any number that the server may come up with: one gas controller.
constexpr ProductSetup kAnyOtherProduct{ChannelKind::Gas, kGasZone, {}};

}  // namespace

const ProductSetup& SetupOf(std::int32_t product) noexcept {
    const auto row = std::ranges::find(kSetupRows, product, &SetupRow::product);
    return row != kSetupRows.end() ? row->setup : kAnyOtherProduct;
}
