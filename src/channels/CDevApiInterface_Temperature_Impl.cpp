#include "channels/CDevApiInterface_Temperature_Impl.h"

#include <algorithm>
#include <cstdint>
#include <mutex>

#include "channels/ChannelExchange.h"
#include "channels/ChannelNames.h"
#include "channels/DeletingSlot.h"
#include "channels/SharedValues.h"
#include "channels/TargetBand.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/CommandText.h"
#include "core/OwnSlots.h"
#include "link/Exchange.h"
#include "link/Products.h"
#include "platform/Clock.h"

namespace {

constexpr double kTemperatureStep = 0.2;

// kept: docs/oddities.md#error-marks-differ
constexpr ReadRules kTargetRules{L"CDevApiInterface_Temperature_Impl::GetTargetTemperature", "eNn", "", true,
                                 LogGate::Always};
constexpr ReadRules kCurrentRules{L"CDevApiInterface_Temperature_Impl::GetCurrentTemperature", "e", "n", true,
                                  LogGate::Always};

// kept: docs/oddities.md#write-logs-as-read
constexpr WriteRules kWriteRules{L"CDevApiInterface_Temperature_Impl::GetCurrentTemperature",
                                 command::kWriteTemperature, LogGate::Always};

constexpr const wchar_t* kRestoredText =
    L"CDevApiInterface_Temperature_Impl::SetTargetTemperature The new target could not be read back; the previous one "
    L"is set again.";

CommandText CurrentCommand(ChannelAddress address) noexcept {
    const ProductTraits& traits = TraitsOf(address.m_iProduct);
    if (traits.parameterSensors && address.m_iChannel >= 1) {
        return FormatFor(command::kReadParam, address);
    }
    if (traits.setPointZones > 1 || address.m_iChannel > 0) {
        return FormatFor(command::kReadCurrent, address);
    }
    return FormatCommand(command::kReadCurrentOnly, {address.m_iProduct});
}

}  // namespace

double ClampTemperatureTarget(double value, double min, double max) noexcept {
    const double atMost = std::min(value, max);  // a NaN stays one here and fails the comparison
    // kept: docs/oddities.md#minimum-above-the-maximum
    return atMost > min ? atMost : min;
}

CDevApiInterface_Temperature_Impl::CDevApiInterface_Temperature_Impl(CDevApiInterface_Impl& device,
                                                                     std::int32_t index) noexcept
    : m_pDevice(&device), m_iIndex(index), m_llFrequency(PerformanceFrequency()) {
    const std::scoped_lock lock(device.m_csData);
    m_bLogCommunication = device.m_bLogCommunication ? 1 : 0;
}

// kept: docs/oddities.md#switch-that-does-nothing
std::int32_t CDevApiInterface_Temperature_Impl::SetEnabled(std::uint8_t) noexcept { return oko::kSuccess; }

std::int32_t CDevApiInterface_Temperature_Impl::GetName(wchar_t* buffer, std::int32_t length) noexcept {
    const ChannelAddress address = Get(m_address);
    return CopyChannelName(FindChannelName(kTemperatureNames, address.m_iProduct, address.m_iChannel), buffer, length);
}

std::int32_t CDevApiInterface_Temperature_Impl::NoOperation() noexcept { return oko::kSuccess; }

std::int32_t CDevApiInterface_Temperature_Impl::SetTargetTemperature(double value) noexcept {
    const SetPointPlace place = PlaceOf(*this);
    if (!HasSetPoint(place.address)) {
        return oko::kFailure;
    }
    const double clamped = ClampTemperatureTarget(value, place.min, place.max);
    const double previous = Get(m_dTarget);
    const LinkOperation operation = LinkOperation::OverThisLink(*m_pDevice);
    if (WriteSetPoint(operation, kWriteRules, m_bLogCommunication != 0, place.address, clamped) != oko::kSuccess) {
        return oko::kFailure;
    }

    // kept: docs/oddities.md#lost-target-succeeds, docs/oddities.md#no-temperature-notice
    const bool confirmed = ReadTargetBack(operation);
    if (!confirmed && !operation.HasEnded()) {
        m_pDevice->Log(kRestoredText);
        Tell(operation,
             FormatCommand(command::kWriteTemperature, {place.address.m_iProduct, place.address.m_iChannel, previous}));
    }
    if (!confirmed && operation.HasEnded()) {
        return oko::kFailure;  // the link was closed: nobody knows which target holds
    }
    const std::scoped_lock lock(m_pDevice->m_csData);
    Put(m_dTarget, confirmed ? clamped : previous);
    return oko::kSuccess;
}

bool CDevApiInterface_Temperature_Impl::ReadTargetBack(const LinkOperation& operation) noexcept {
    // A server that is merely slow must not undo a target that it has taken.
    // kept: docs/oddities.md#through-the-own-slot
    constexpr int kMaxRepeats = 2;
    for (int repeats = 0; repeats <= kMaxRepeats && !operation.HasEnded(); ++repeats) {
        double readBack = 0.0;
        m_bTargetTimedOut = false;
        if (ThroughSlots<CDevApiInterface_Temperature>(*this).GetTargetTemperature(&readBack) == oko::kSuccess) {
            return true;
        }
        if (!m_bTargetTimedOut) {
            return false;
        }
    }
    return false;
}

std::int32_t CDevApiInterface_Temperature_Impl::GetTargetTemperature(double* value) noexcept {
    const ChannelAddress address = Get(m_address);
    // kept: docs/oddities.md#sensor-fails-while-busy
    if (!HasSetPoint(address)) {
        return oko::kFailure;
    }
    const LinkOperation exchange(*m_pDevice);
    const std::int32_t result = ReadChannelValue(exchange, kTargetRules, m_bLogCommunication != 0,
                                                 FormatFor(command::kReadTarget, address), m_dTarget, value);
    m_bTargetTimedOut = exchange.HasTimedOut();
    return result;
}

std::int32_t CDevApiInterface_Temperature_Impl::GetCurrentTemperature(double* value) noexcept {
    return ReadChannelValue(*m_pDevice, kCurrentRules, m_bLogCommunication != 0, CurrentCommand(Get(m_address)),
                            m_dCurrent, value);
}

std::int32_t CDevApiInterface_Temperature_Impl::GetTemperatureState(std::uint32_t* state) noexcept {
    if (state == nullptr) {
        return oko::kFailure;
    }
    const std::scoped_lock lock(m_pDevice->m_csData);
    const double current = Get(m_dCurrent);
    const double target = Get(m_dTarget);
    if (IsWithinBand(current, target, Get(m_dToleranceBelow), Get(m_dToleranceAbove))) {
        *state = oko::kTemperatureWithin;
    } else {
        *state = target > current ? oko::kTemperatureBelow : oko::kTemperatureAbove;
    }
    Put(m_iState, static_cast<std::int32_t>(*state));
    return oko::kSuccess;
}

std::int32_t CDevApiInterface_Temperature_Impl::SetTemperatureRate(double value) noexcept {
    const std::scoped_lock lock(m_pDevice->m_csData);
    m_dRate = value;
    return oko::kSuccess;
}

std::int32_t CDevApiInterface_Temperature_Impl::GetTemperatureStep(double* value) noexcept {
    if (value == nullptr) {
        return oko::kFailure;
    }
    const std::scoped_lock lock(m_pDevice->m_csData);
    *value = kTemperatureStep;
    return oko::kSuccess;
}

std::int32_t CDevApiInterface_Temperature_Impl::SetTolerance(double below, double above) noexcept {
    return StoreTolerance(*m_pDevice, below, above, m_dToleranceBelow, m_dToleranceAbove);
}

std::int32_t CDevApiInterface_Temperature_Impl::GetTolerance(double* below, double* above) noexcept {
    return LoadTolerance(*m_pDevice, m_dToleranceBelow, m_dToleranceAbove, below, above);
}

std::int32_t CDevApiInterface_Temperature_Impl::NotSupported() noexcept { return oko::kFailure; }

std::int32_t CDevApiInterface_Temperature_Impl::GetTemperatureLimits(double* min, double* max) noexcept {
    if (min == nullptr || max == nullptr) {
        return oko::kFailure;
    }
    const std::scoped_lock lock(m_pDevice->m_csData);
    const SetPointPlace place = PlaceOf(*this);
    *min = place.min;
    *max = place.max;
    return oko::kSuccess;
}

bool CDevApiInterface_Temperature_Impl::HasFeature(std::int32_t feature) noexcept {
    if (feature != oko::kFeatureSensorOnly) {
        return false;
    }
    const ChannelAddress address = Get(m_address);
    // The H401's one sensor, and nothing behind it.
    constexpr std::int32_t kH401Sensor = 2;
    return address.m_iProduct == product::kH401 ? address.m_iChannel == kH401Sensor : address.m_iChannel > 0;
}

void* CDevApiInterface_Temperature_Impl::DeletingDestructor(unsigned flags) noexcept {
    m_pDevice->ForgetTemperature(m_iIndex);
    return DestroyChannel(this, flags);
}
