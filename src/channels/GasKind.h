#pragma once

#include <cstdint>

/// Which gas a gas channel controls. Products 12 and 13 mix both: channel 0 is CO2, channel 1 is O2.
enum class GasKind { Neither, Co2, O2 };

constexpr GasKind GasKindOf(std::int32_t product, std::int32_t channel) noexcept {
    const bool mixer = product == 12 || product == 13;
    if (product == 10 || (mixer && channel == 0)) {
        return GasKind::Co2;
    }
    return product == 11 || (mixer && channel == 1) ? GasKind::O2 : GasKind::Neither;
}

/// Products whose O2 controller can work in air mode.
constexpr bool HasAirMode(std::int32_t product) noexcept { return product >= 11 && product <= 13; }
