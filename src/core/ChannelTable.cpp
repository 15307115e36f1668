#include "core/ChannelTable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "link/Products.h"

namespace {

constexpr RangeSetup kUpTo60{{0.0, 60.0}, std::nullopt};
constexpr RangeSetup kHumidityRange{{50.0, 95.0}, std::nullopt};
constexpr RangeSetup k25To50{{0.0, 0.0}, ChannelRange{25.0, 50.0}};
constexpr RangeSetup k25To60{{0.0, 0.0}, ChannelRange{25.0, 60.0}};

// zone, written, only if present, range
constexpr std::array<ZoneSetup, 5> kH501Zones{{
    {0, false, false, kUpTo60},
    {1, true, true, std::nullopt},
    {2, true, true, std::nullopt},
    {3, true, true, std::nullopt},
    {4, true, true, std::nullopt},
}};
constexpr std::array<ZoneSetup, 1> kSingleZone{{{0, true, false, kUpTo60}}};
constexpr std::array<ZoneSetup, 1> kH101Zones{{{0, false, false, kUpTo60}}};
constexpr std::array<ZoneSetup, 1> kHumidifierZones{{{0, false, false, kHumidityRange}}};
constexpr std::array<ZoneSetup, 3> kH401Zones{{
    {0, true, true, k25To50},
    {1, true, true, k25To50},
    {2, true, true, std::nullopt},
}};
constexpr std::array<ZoneSetup, 7> kZonesOfSeven{{
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
constexpr std::array<SensorProbe, 3> kH201Probes{{{74, -1}, {87, -1}, {88, -1}}};
constexpr std::array<SensorProbe, 7> kH301Probes{
    {{107, 115}, {119, -1}, {109, 117}, {110, -1}, {108, 116}, {189, 192}, {132, -1}}};
constexpr std::array<SensorProbe, 5> kH101Probes{{{107, 115}, {119, -1}, {189, 192}, {132, -1}, {259, -1}}};

struct SetupRow {
    std::int32_t product;
    ProductSetup setup;
};

constexpr std::array<SetupRow, 10> kSetupRows{{
    {product::kH501, {kH501Zones, {}}},
    {product::kH201, {kSingleZone, kH201Probes}},
    {product::kH301, {kSingleZone, kH301Probes}},
    {product::kH101, {kH101Zones, kH101Probes}},
    {product::kActiveHumidifier, {kHumidifierZones, {}, HumidifierSensors::Always}},
    {product::kH401, {kH401Zones, {}}},
    {product::kSevenZones, {kZonesOfSeven, {}}},
    {product::kCo2, {kGasZone, {}, HumidifierSensors::WithoutHumidifier}},
    {product::kMixer12, {kMixerZones, {}, HumidifierSensors::WithoutHumidifier}},
    {product::kMixer13, {kMixerZones, {}, HumidifierSensors::WithoutHumidifier}},
}};

// product::kO2, and any number that the server may come up with: one controller.
// kept: docs/oddities.md#unknown-product-is-a-gas
constexpr ProductSetup kAnyOtherProduct{kGasZone, {}};

}  // namespace

const ProductSetup& SetupOf(std::int32_t product) noexcept {
    const auto row = std::ranges::find(kSetupRows, product, &SetupRow::product);
    return row != kSetupRows.end() ? row->setup : kAnyOtherProduct;
}
