#pragma once

namespace check {

/// The incubator of the checks, tools/emulator/scenarios/still-values.json: products 9, 12 and 15, with values that
/// stand still and are all different, so that a number tells where it comes from.

namespace incubator {

inline constexpr const char* kScenario = "still-values";

inline constexpr double kZone = 36.412;
inline constexpr double kZoneTarget = 37.125;
inline constexpr double kZoneMin = 21.0;
inline constexpr double kZoneMax = 51.0;
inline constexpr double kBase = 36.812;  // the sensor that follows the zone
inline constexpr double kCo2 = 4.321;
inline constexpr double kCo2Target = 5.25;
inline constexpr double kCo2Max = 19.0;
inline constexpr double kO2 = 18.765;
inline constexpr double kO2Target = 17.5;
inline constexpr double kO2Min = 1.5;
inline constexpr double kHumidity = 71.654;
inline constexpr double kHumidityTarget = 84.0;
inline constexpr double kHumidityMin = 52.0;
inline constexpr double kHumidityMax = 93.0;

}  // namespace incubator

}  // namespace check
