#pragma once

#include <cstdint>

namespace oko {

/// Where a current value lies in the band that the tolerances make around its target, edges included:
/// target - below <= current <= target + above.

/// What CDevApiInterface_Temperature::GetTemperatureState writes.
inline constexpr std::uint32_t kTemperatureNone = 0;    // not judged yet; GetTemperatureState itself never writes it
inline constexpr std::uint32_t kTemperatureBelow = 1;   // below the band: heating
inline constexpr std::uint32_t kTemperatureAbove = 2;   // above the band
inline constexpr std::uint32_t kTemperatureWithin = 4;  // within the band

/// What GetGasConcentrationState and GetHumidityState write. The numbers are not those of temperature.
inline constexpr std::uint32_t kWithinBand = 0;
inline constexpr std::uint32_t kOutsideBand = 1;

}  // namespace oko
