#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "link/Products.h"

/// The channels' display names.

/// One channel of a product: a device number, or the parameter number of a sensor that is read as one.
struct ChannelName {
    std::int32_t channel;
    std::wstring_view name;
};

/// All named channels of a product.
struct ProductNames {
    std::int32_t product;
    std::span<const ChannelName> channels;
};

inline constexpr std::array<ChannelName, 5> kH501Names{{
    {0, L"H501-T Base"},
    {1, L"H501-T Lid"},
    {2, L"Humidity"},
    {3, L"Objective"},
    {4, L"Free sensor"},
}};
inline constexpr std::array<ChannelName, 4> kH201Names{{
    {0, L"H201-T"},
    {74, L"Air heater"},
    {87, L"Cage"},
    {88, L"Sample"},
}};
inline constexpr std::array<ChannelName, 8> kH301Names{{
    {0, L"H301-T"},
    {107, L"Base"},
    {108, L"Lid"},
    {109, L"Humidity #1"},
    {110, L"Humidity #2"},
    {119, L"Free sensor"},
    {132, L"Room"},
    {189, L"Objective"},
}};
inline constexpr std::array<ChannelName, 8> kH101GasNames{{
    {0, L"H101-T"},
    {107, L"Base"},
    {119, L"Free sensor"},
    {132, L"Room"},
    {189, L"Objective"},
    {206, L"Humidifier"},
    {209, L"Sensing cell"},
    {259, L"Water bath"},
}};
inline constexpr std::array<ChannelName, 6> kH101Names{{
    {0, L"H101-T"},
    {107, L"Base"},
    {119, L"Free sensor"},
    {132, L"Room"},
    {189, L"Objective"},
    {259, L"Water bath"},
}};
inline constexpr std::array<ChannelName, 3> kH301HmNames{{
    {0, L"H301-HM-ACTIVE"},
    {206, L"Humidifier"},
    {209, L"Sensing cell"},
}};
inline constexpr std::array<ChannelName, 3> kH401Names{{
    {0, L"H401-T Device 1"},
    {1, L"H401-T Device 2"},
    {132, L"T sensor"},
}};
inline constexpr std::array<ChannelName, 7> kSevenZonesNames{{
    {0, L"Main"},
    {1, L"Chamber"},
    {2, L"Lid"},
    {3, L"Humidifier"},
    {4, L"Objective Heater"},
    {5, L"Heated tube"},
    {6, L"T sensor"},
}};

// kept: docs/oddities.md#names-without-channels
inline constexpr std::array<ProductNames, 10> kTemperatureNames{{
    {product::kH501, kH501Names},
    {product::kH201, kH201Names},
    {product::kH301, kH301Names},
    {product::kCo2, kH101GasNames},
    {product::kMixer12, kH101GasNames},
    {product::kMixer13, kH101GasNames},
    {product::kH101, kH101Names},
    {product::kActiveHumidifier, kH301HmNames},
    {product::kH401, kH401Names},
    {product::kSevenZones, kSevenZonesNames},
}};

/// Gas channels are named by their gas.
constexpr std::wstring_view GasName(GasKind kind) noexcept {
    switch (kind) {
        case GasKind::Co2:
            return L"CO2";
        case GasKind::O2:
            return L"O2";
        case GasKind::Neither:
            break;
    }
    return {};
}

/// Humidifiers are named by their product alone, product::kActiveHumidifier.
inline constexpr std::wstring_view kHumidifierName = L"H301-HM-ACTIVE";

/// The name of a channel, empty when the tables have none.
std::wstring_view FindChannelName(std::span<const ProductNames> names, std::int32_t product,
                                  std::int32_t channel) noexcept;

/// Copies at most `length` characters of `name`, without a terminator, as the host's name slots do. Returns the slot's
/// result: -1 for a null buffer, else 0, also when there was nothing to copy.
std::int32_t CopyChannelName(std::wstring_view name, wchar_t* buffer, std::int32_t length) noexcept;
