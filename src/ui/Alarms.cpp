// Slot 5: the alarm settings text becomes tolerances and alarm commands.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/Numbers.h"
#include "catalogue/Catalogue.h"
#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "channels/CDevApiInterface_Humidifier_Impl.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "channels/ParameterRead.h"
#include "channels/SharedValues.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"
#include "link/Products.h"
#include "ui/AlarmSettings.h"
#include "ui/ProgressWindow.h"

namespace {

template <class Channel>
void Store(Channel& channel, const Tolerance& tolerance) noexcept {
    Put(channel.m_dToleranceBelow, tolerance.below);
    Put(channel.m_dToleranceAbove, tolerance.above);
}

/// The number in the command is the product's; the narrower tolerance serves for both directions.
// kept: docs/oddities.md#alarm-of-product-0
void SendAlarm(const LinkOperation& operation, std::string_view format, std::int32_t product,
               const Tolerance& tolerance) noexcept {
    Tell(operation, FormatCommand(format, {product, std::min(tolerance.below, tolerance.above)}));
}

/// The air mode as the products report it; off without one.
// kept: docs/oddities.md#last-air-mode-wins
bool AskAirMode(const LinkOperation& operation) noexcept {
    int airMode = -1;
    for (std::size_t i = 0; const auto product = ProductAt(operation.Device(), i); ++i) {
        if (const auto state = HasAirMode(*product) ? ReadAirModeState(operation, *product) : std::nullopt) {
            // kept: docs/oddities.md#air-mode-of-two-kinds
            airMode = ParseInteger(state->data());
        }
    }
    return airMode == 1;
}

void ApplyGasTolerance(const LinkOperation& operation, CDevApiInterface_GasConcentration_Impl* channel,
                       const AlarmSettings& settings) noexcept {
    if (channel == nullptr) {
        return;
    }
    const GasKind kind = GasKindOf(Get(channel->m_address));
    if (kind == GasKind::Neither) {
        return;
    }
    const Tolerance& tolerance = kind == GasKind::Co2 ? settings.co2 : settings.o2;
    Store(*channel, tolerance);
    // kept: docs/oddities.md#mixer-alarms-share-a-number
    SendAlarm(operation, command::kGasAlarm, Get(channel->m_address).m_iProduct, tolerance);
}

}  // namespace

std::int32_t CDevApiInterface_Impl::ApplyConfiguration(const wchar_t* text) noexcept {
    ReportProgress(75);
    m_bBusy = true;
    if (text == nullptr) {
        return oko::kFailure;  // kept: docs/oddities.md#null-settings-stay-busy
    }
    const LinkOperation operation = LinkOperation::OverThisLink(*this);
    const AlarmSettings settings = ParseAlarmSettings(text);
    // Where it is not asked, or no answer can come, nothing is known of it.
    if (!m_bWatchOnly) {
        const bool airMode = AskAirMode(operation);
        m_bAirMode = operation.HasEnded() ? m_bAirMode.load() : std::uint8_t{airMode};
    }
    ReportProgress(83);

    if (CDevApiInterface_Temperature_Impl* const temperature = m_pTemperature[0]) {
        Store(*temperature, settings.incubator);
        SendAlarm(operation, command::kTemperatureAlarm, Get(temperature->m_address).m_iProduct, settings.incubator);
    }
    ApplyGasTolerance(operation, m_pGasConcentration[0], settings);
    ApplyGasTolerance(operation, m_pGasConcentration[1], settings);
    if (CDevApiInterface_Humidifier_Impl* const humidifier = m_pHumidifier[0]) {
        Store(*humidifier, settings.humidity);  // kept: docs/oddities.md#no-humidity-alarm
    }

    ReportProgress(89);
    CloseProgressWindow(*this);
    m_bBusy = false;
    if (operation.HasEnded()) {
        return oko::kFailure;
    }
    m_bSetupComplete = true;
    return oko::kSuccess;
}
