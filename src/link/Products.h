#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

/// The products that the server knows, by their numbers, and what each of them is.

namespace product {

inline constexpr std::int32_t kH501 = 7;
inline constexpr std::int32_t kH201 = 8;
inline constexpr std::int32_t kH301 = 9;
inline constexpr std::int32_t kCo2 = 10;
inline constexpr std::int32_t kO2 = 11;
inline constexpr std::int32_t kMixer12 = 12;  // the mixers of CO2 and O2 bear no other names than their numbers
inline constexpr std::int32_t kMixer13 = 13;
inline constexpr std::int32_t kH101 = 14;
inline constexpr std::int32_t kActiveHumidifier = 15;
inline constexpr std::int32_t kH401 = 16;
inline constexpr std::int32_t kSevenZones = 17;

}  // namespace product

/// Numbered parameters of the products that this library reads or writes by name.
namespace parameter {

inline constexpr std::int32_t kRoomTemperature = 132;
inline constexpr std::int32_t kAirMode = 237;        // whether air mode is on: 1 or 0, which is a value like any other
inline constexpr std::int32_t kAirModeSwitch = 238;  // turns it on and off

}  // namespace parameter

/// The kind of channel that a product gives first.
enum class ChannelKind { Temperature, Gas, Humidity };

/// Which gas a controller is for.
enum class GasKind { Neither, Co2, O2 };

/// The gases of a product: of its only controller, or of its controllers 0 and 1.
enum class Gases { None, Co2, O2, Co2AndO2 };

/// What the library needs to know of a product. As it stands here it is one that the server made up: a single
/// controller of a gas that nobody can name.
struct ProductTraits {
    std::int32_t product = 0;
    ChannelKind kind = ChannelKind::Gas;
    Gases gases = Gases::None;
    std::int32_t setPointZones = 1;  // zones 0 to so many less one take a target
    bool airMode = false;            // its O2 controller can work with air
    bool listsParameters = false;    // is asked "bl-param-list"
    bool parameterSensors = false;   // its sensors are read as parameters
    bool roomSensor = false;         // has parameter::kRoomTemperature
    bool secondLink = false;         // is connected twice
    bool ownAlarms = false;          // its temperature alarms are not set from here
};

/// In ascending order, without gaps: "each product" in a loop is from the first to the last row.
inline constexpr std::array<ProductTraits, 11> kProducts{{
    {.product = product::kH501, .kind = ChannelKind::Temperature},
    {.product = product::kH201, .kind = ChannelKind::Temperature, .listsParameters = true, .parameterSensors = true},
    {.product = product::kH301,
     .kind = ChannelKind::Temperature,
     .listsParameters = true,
     .parameterSensors = true,
     .roomSensor = true},
    {.product = product::kCo2, .gases = Gases::Co2, .listsParameters = true, .parameterSensors = true},
    {.product = product::kO2, .gases = Gases::O2, .airMode = true, .listsParameters = true, .parameterSensors = true},
    {.product = product::kMixer12,
     .gases = Gases::Co2AndO2,
     .airMode = true,
     .listsParameters = true,
     .parameterSensors = true,
     .secondLink = true},
    {.product = product::kMixer13,
     .gases = Gases::Co2AndO2,
     .airMode = true,
     .listsParameters = true,
     .parameterSensors = true,
     .secondLink = true},
    {.product = product::kH101,
     .kind = ChannelKind::Temperature,
     .listsParameters = true,
     .parameterSensors = true,
     .roomSensor = true},
    {.product = product::kActiveHumidifier,
     .kind = ChannelKind::Humidity,
     .listsParameters = true,
     .parameterSensors = true},
    {.product = product::kH401,
     .kind = ChannelKind::Temperature,
     .setPointZones = 2,
     .listsParameters = true,
     .ownAlarms = true},
    {.product = product::kSevenZones, .kind = ChannelKind::Temperature, .listsParameters = true, .ownAlarms = true},
}};

inline constexpr ProductTraits kUnknownProduct{};

inline constexpr std::int32_t kFirstProduct = kProducts.front().product;
inline constexpr std::int32_t kLastProduct = kProducts.back().product;  // inclusive
static_assert(kLastProduct - kFirstProduct + 1 == static_cast<std::int32_t>(kProducts.size()));

/// The traits of a product, kUnknownProduct when the table does not name it.
constexpr const ProductTraits& TraitsOf(std::int32_t product) noexcept {
    const auto row = std::ranges::find(kProducts, product, &ProductTraits::product);
    return row != kProducts.end() ? *row : kUnknownProduct;
}

constexpr bool IsTemperatureProduct(std::int32_t product) noexcept {
    return TraitsOf(product).kind == ChannelKind::Temperature;
}

constexpr bool HasCo2(std::int32_t product) noexcept {
    const Gases gases = TraitsOf(product).gases;
    return gases == Gases::Co2 || gases == Gases::Co2AndO2;
}

constexpr bool HasO2(std::int32_t product) noexcept {
    const Gases gases = TraitsOf(product).gases;
    return gases == Gases::O2 || gases == Gases::Co2AndO2;
}

constexpr bool HasAirMode(std::int32_t product) noexcept { return TraitsOf(product).airMode; }

/// A sensor of a product, or one of its controllers.
struct ChannelAddress {
    std::int32_t m_iProduct = 0;  // 0 until Init assigns it
    std::int32_t m_iChannel = 0;  // number in the product; of a sensor that is read as a parameter, the parameter's
    bool operator==(const ChannelAddress&) const = default;
};

/// The gas of a controller. A product of one gas has that one whatever the controller's number.
constexpr GasKind GasKindOf(ChannelAddress address) noexcept {
    switch (TraitsOf(address.m_iProduct).gases) {
        case Gases::Co2:
            return GasKind::Co2;
        case Gases::O2:
            return GasKind::O2;
        case Gases::Co2AndO2:
            return address.m_iChannel == 0 ? GasKind::Co2 : address.m_iChannel == 1 ? GasKind::O2 : GasKind::Neither;
        case Gases::None:
            break;
    }
    return GasKind::Neither;
}

/// Whether a temperature channel is a zone that takes a target, and no sensor.
constexpr bool HasSetPoint(ChannelAddress address) noexcept {
    return address.m_iChannel >= 0 && address.m_iChannel < TraitsOf(address.m_iProduct).setPointZones;
}
