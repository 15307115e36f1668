// Slot 4: the configuration dialog, and the alarm settings text that comes of it.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "channels/CDevApiInterface_Humidifier_Impl.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/OwnSlots.h"
#include "link/Products.h"
#include "ui/AlarmSettings.h"
#include "ui/ConfigurationDialog.h"
#include "ui/DialogEnd.h"

namespace {

template <class Channel>
Tolerance ToleranceOf(const Channel& channel) noexcept {
    return {Get(channel.m_dToleranceBelow), Get(channel.m_dToleranceAbove)};
}

/// The channels' tolerances; the defaults where there is no channel.
// kept: docs/oddities.md#second-gas-wins, docs/oddities.md#tolerances-of-idle-channels
AlarmSettings GatherSettings(const CDevApiInterface_Impl& device) noexcept {
    AlarmSettings settings;
    if (const auto* const channel = device.m_pTemperature[0].Get()) {
        settings.incubator = ToleranceOf(*channel);
    }
    for (const std::size_t i : {0U, 1U}) {
        const auto* const channel = device.m_pGasConcentration[i].Get();
        const GasKind kind = channel != nullptr ? GasKindOf(Get(channel->m_address)) : GasKind::Neither;
        if (kind == GasKind::Co2) {
            settings.co2 = ToleranceOf(*channel);
        } else if (kind == GasKind::O2) {
            settings.o2 = ToleranceOf(*channel);
        }
    }
    if (const auto* const channel = device.m_pHumidifier[0].Get()) {
        settings.humidity = ToleranceOf(*channel);
    }
    return settings;
}

}  // namespace

std::int32_t CDevApiInterface_Impl::ShowConfiguration(wchar_t* text, std::int32_t size,
                                                      oko::WindowHandle parent) noexcept {
    const auto* const temperature = m_pTemperature[0].Get();
    // kept: docs/oddities.md#no-dialog-for-16-and-17
    if (text == nullptr || (temperature != nullptr && TraitsOf(Get(temperature->m_address).m_iProduct).ownAlarms)) {
        return oko::kFailure;
    }
    m_pszConfigText = text;
    m_nConfigTextSize = size;
    const std::uint8_t airModeBefore = m_bAirMode;
    if (RunConfigurationDialog(*this, parent) != DialogEnd::Ok) {
        return oko::kFailure;
    }

    // kept: docs/oddities.md#settings-without-bound
    const AlarmSettingsText settings = FormatAlarmSettings(GatherSettings(*this));
    std::copy_n(settings.c_str(), settings.length() + 1, text);
    // kept: docs/oddities.md#through-the-own-slot
    ThroughSlots<CDevApiInterface>(*this).ApplyConfiguration(text);
    if (m_bAirMode != airModeBefore) {
        CallHost(oko::kCallbackAirModeChanged, nullptr);
    }
    return oko::kSuccess;
}
