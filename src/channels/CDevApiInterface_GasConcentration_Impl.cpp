#include "channels/CDevApiInterface_GasConcentration_Impl.h"

#include <cstdint>
#include <mutex>
#include <string_view>

#include "channels/ChannelExchange.h"
#include "channels/ChannelNames.h"
#include "channels/DeletingSlot.h"
#include "channels/ParameterRead.h"
#include "channels/SharedValues.h"
#include "channels/TargetBand.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"
#include "link/Products.h"
#include "platform/Clock.h"
#include "platform/Random.h"

namespace {

constexpr ReadRules kTargetRules{L"CDevApiInterface_GasConcentration_Impl::GetTargetGasConcentration", "e", "", true,
                                 LogGate::WhenChannelLogs};
constexpr ReadRules kCurrentRules{L"CDevApiInterface_GasConcentration_Impl::GetCurrentGasConcentration", "e", "", true,
                                  LogGate::WhenChannelLogs};

// kept: docs/oddities.md#uneven-gas-log
constexpr WriteRules kWriteRules{L"CDevApiInterface_GasConcentration_Impl::SetTargetGasConcentration",
                                 command::kWriteGas, LogGate::ServerProblemWhenLogging};

/// A new air mode has to be read this often in a row, and once more, before it is believed.
constexpr std::uint32_t kStatusRepeats = 3;

bool IsO2Controller(const CDevApiInterface_GasConcentration_Impl& channel) noexcept {
    return GasKindOf(Get(channel.m_address)) == GasKind::O2;
}

}  // namespace

CDevApiInterface_GasConcentration_Impl::CDevApiInterface_GasConcentration_Impl(CDevApiInterface_Impl& device,
                                                                               std::int32_t index) noexcept
    : m_pDevice(&device), m_iIndex(index) {
    // kept: docs/oddities.md#seeded-again
    SeedRandom(CurrentTimeSeconds());
    const std::scoped_lock lock(device.m_csData);
    // kept: docs/oddities.md#log-flag-of-birth
    m_bLogCommunication = device.m_bLogCommunication ? 1 : 0;
}

// kept: docs/oddities.md#switch-that-does-nothing
std::int32_t CDevApiInterface_GasConcentration_Impl::SetEnabled(std::uint8_t) noexcept { return oko::kSuccess; }

std::int32_t CDevApiInterface_GasConcentration_Impl::GetName(wchar_t* buffer, std::int32_t length) noexcept {
    return CopyChannelName(GasName(GasKindOf(Get(m_address))), buffer, length);
}

std::int32_t CDevApiInterface_GasConcentration_Impl::NoOperation() noexcept { return oko::kSuccess; }

std::int32_t CDevApiInterface_GasConcentration_Impl::SetTargetGasConcentration(double value) noexcept {
    // kept: docs/oddities.md#gas-target-of-any-channel
    const SetPointPlace place = PlaceOf(*this);
    const double clamped = ClampPercentTarget(value, place.min, place.max);
    if (WriteSetPoint(*m_pDevice, kWriteRules, m_bLogCommunication != 0, place.address, clamped) != oko::kSuccess) {
        return oko::kFailure;
    }
    StoreTarget(*m_pDevice, m_dTarget, clamped);
    return oko::kSuccess;
}

std::int32_t CDevApiInterface_GasConcentration_Impl::GetTargetGasConcentration(double* value) noexcept {
    if (value == nullptr) {
        return oko::kFailure;
    }
    if (m_pDevice->m_bBusy) {
        *value = Get(m_dTarget);
        return oko::kSuccess;
    }
    // kept: docs/oddities.md#air-mode-with-the-target
    if (IsO2Controller(*this)) {
        WatchAirMode();
    }
    // Not asked again whether the device is busy: who got here while it was free gets an answer of the server.
    return AskChannelValue(*m_pDevice, kTargetRules, m_bLogCommunication != 0,
                           FormatFor(command::kReadTarget, Get(m_address)), m_dTarget, value);
}

std::int32_t CDevApiInterface_GasConcentration_Impl::GetCurrentGasConcentration(double* value) noexcept {
    return ReadChannelValue(*m_pDevice, kCurrentRules, m_bLogCommunication != 0,
                            FormatFor(command::kReadCurrent, Get(m_address)), m_dCurrent, value);
}

std::int32_t CDevApiInterface_GasConcentration_Impl::GetGasConcentrationState(std::uint32_t* state) noexcept {
    return JudgePercentState(Get(m_dCurrent), Get(m_dTarget), Get(m_dToleranceBelow), Get(m_dToleranceAbove), m_iState,
                             state);
}

std::int32_t CDevApiInterface_GasConcentration_Impl::SetTolerance(double below, double above) noexcept {
    return StoreTolerance(*m_pDevice, below, above, m_dToleranceBelow, m_dToleranceAbove);
}

std::int32_t CDevApiInterface_GasConcentration_Impl::GetTolerance(double* below, double* above) noexcept {
    return LoadTolerance(*m_pDevice, m_dToleranceBelow, m_dToleranceAbove, below, above);
}

bool CDevApiInterface_GasConcentration_Impl::HasFeature(std::int32_t feature) noexcept {
    return feature == oko::kFeatureAirMode && m_pDevice->m_bAirMode != 0 && IsO2Controller(*this);
}

void* CDevApiInterface_GasConcentration_Impl::DeletingDestructor(unsigned flags) noexcept {
    m_pDevice->ForgetGasConcentration(m_iIndex);
    return DestroyChannel(this, flags);
}

std::int32_t CDevApiInterface_GasConcentration_Impl::ReadAirMode(std::uint8_t* status) noexcept {
    if (m_pDevice->m_bBusy) {
        *status = m_pDevice->m_bAirMode;
        return oko::kSuccess;
    }
    const std::int32_t product = Get(m_address).m_iProduct;
    if (!HasAirMode(product)) {
        return oko::kFailure;
    }
    // kept: docs/oddities.md#air-mode-holds-the-data-lock
    const std::scoped_lock lock(m_pDevice->m_csData);
    const auto state = ReadAirModeState(*m_pDevice, product);
    if (!state) {
        return oko::kFailure;
    }
    // kept: docs/oddities.md#air-mode-of-two-kinds
    *status = std::string_view(state->data()) == "1" ? 1 : 0;
    return oko::kSuccess;
}

void CDevApiInterface_GasConcentration_Impl::WatchAirMode() noexcept {
    std::uint8_t status = 0;
    if (ReadAirMode(&status) != oko::kSuccess) {
        return;
    }
    bool changed = false;
    {
        const std::scoped_lock lock(m_pDevice->m_csData);
        if (status == m_pDevice->m_bAirMode || m_pDevice->m_bBusy) {
            m_uStatusCount = 0;
        } else if (m_uStatusCount >= kStatusRepeats) {
            // kept: docs/oddities.md#air-mode-count-stays
            m_pDevice->m_bAirMode = status;
            changed = true;
        } else {
            ++m_uStatusCount;
        }
    }
    if (changed) {
        m_pDevice->CallHost(oko::kCallbackAirModeChanged, nullptr);
    }
}
