#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

/// Which channels each product gives the host.

/// The lowest and highest target of a channel, in its unit.
struct ChannelRange {
    double min;
    double max;
};

/// How a zone learns its range from "readmin" and "readmax".
struct RangeSetup {
    ChannelRange defaults;                   // for an end that the server does not name
    std::optional<ChannelRange> ifTooSmall;  // takes the place of a range with an end below kSmallestRangeEnd
};
// kept: docs/oddities.md#small-end-replaces-both
inline constexpr double kSmallestRangeEnd = 2.0;

/// One zone of a product.
struct ZoneSetup {
    std::int32_t zone;
    bool writesZone;                  // false: the one it had stays. kept: docs/oddities.md#zone-kept-from-before
    bool onlyIfPresent;               // asked with "readcurval" before anything else
    std::optional<RangeSetup> range;  // none: a sensor without a set point, 0 to 0, not asked
};

/// A sensor that is read as a parameter, and the companion that its value is compared with (-1: none).
struct SensorProbe {
    std::int32_t parameter;
    std::int32_t companion;
};

/// When the sensors of the active humidifier are looked for: they stand in the humidifier itself or, without one, in a
/// gas product.
enum class HumidifierSensors { None, Always, WithoutHumidifier };

/// What one product gives: channels of its kind for its zones, whose array must have room when the product is begun
/// (each addition is guarded as well), and temperature channels for its sensors.
struct ProductSetup {
    std::span<const ZoneSetup> zones;
    std::span<const SensorProbe> probes;  // further temperature channels
    HumidifierSensors humidifierSensors = HumidifierSensors::None;
};

/// The row of a product; the last one serves all numbers that the table does not name.
const ProductSetup& SetupOf(std::int32_t product) noexcept;

/// Probed for HumidifierSensors.
inline constexpr std::array<SensorProbe, 2> kHumidifierProbes{{{206, -1}, {209, -1}}};
