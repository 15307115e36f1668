#pragma once

namespace check {

/// The incubator of the checks: products 9, 12 and 15, with values that stand still and are all different, so that a
/// number tells where it comes from.

namespace incubator {

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

inline constexpr const char* kScenario = R"({
  "name": "check",
  "description": "Values that stand still.",
  "comPort": 3,
  "products": [
    {"number": 9,
     "devices": [{"number": 0, "current": 36.412, "target": 37.125, "min": 21, "max": 51, "lagSeconds": 1e9}],
     "parameters": [{"number": 64, "value": "H301-T"},
                    {"number": 107, "follows": 0, "offset": 0.4}, {"number": 115, "value": "0.5"},
                    {"number": 132, "value": "24.300"}]},
    {"number": 12,
     "devices": [{"number": 0, "current": 4.321, "target": 5.25, "min": 0, "max": 19, "lagSeconds": 1e9},
                 {"number": 1, "current": 18.765, "target": 17.5, "min": 1.5, "max": 20, "lagSeconds": 1e9}],
     "parameters": [{"number": 237, "value": "0"}, {"number": 238, "value": "0"}]},
    {"number": 15,
     "devices": [{"number": 0, "current": 71.654, "target": 84, "min": 52, "max": 93, "lagSeconds": 1e9}],
     "parameters": [{"number": 206, "value": "41.600"}]}
  ]
})";

}  // namespace incubator

}  // namespace check
