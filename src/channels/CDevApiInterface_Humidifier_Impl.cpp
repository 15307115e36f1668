#include "channels/CDevApiInterface_Humidifier_Impl.h"

#include <cstdint>
#include <mutex>

#include "channels/ChannelExchange.h"
#include "channels/ChannelNames.h"
#include "channels/DeletingSlot.h"
#include "channels/SharedValues.h"
#include "channels/TargetBand.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Commands.h"
#include "link/Products.h"
#include "platform/Clock.h"
#include "platform/Random.h"

namespace {

// kept: docs/oddities.md#humidity-asks-while-busy
constexpr ReadRules kTargetRules{L"CDevApiInterface_Humidifier_Impl::GetTargetHumidity", "e", "", false,
                                 LogGate::Always};
constexpr ReadRules kCurrentRules{L"CDevApiInterface_Humidifier_Impl::GetCurrentHumidity", "e", "", false,
                                  LogGate::Always};
constexpr WriteRules kWriteRules{L"CDevApiInterface_Humidifier_Impl::SetTargetHumidity", command::kWriteHumidity,
                                 LogGate::Always};

}  // namespace

CDevApiInterface_Humidifier_Impl::CDevApiInterface_Humidifier_Impl(CDevApiInterface_Impl& device,
                                                                   std::int32_t index) noexcept
    : m_pDevice(&device), m_iIndex(index) {
    // kept: docs/oddities.md#seeded-again
    SeedRandom(CurrentTimeSeconds());
    const std::scoped_lock lock(device.m_csData);
    m_bLogCommunication = device.m_bLogCommunication ? 1 : 0;
}

// kept: docs/oddities.md#switch-that-does-nothing
std::int32_t CDevApiInterface_Humidifier_Impl::SetEnabled(std::uint8_t flag) noexcept {
    m_bEnabled = flag;
    return oko::kSuccess;
}

std::int32_t CDevApiInterface_Humidifier_Impl::GetName(wchar_t* buffer, std::int32_t length) noexcept {
    const auto name = Get(m_address).m_iProduct == product::kActiveHumidifier ? kHumidifierName : std::wstring_view{};
    return CopyChannelName(name, buffer, length);
}

std::int32_t CDevApiInterface_Humidifier_Impl::NoOperation() noexcept { return oko::kSuccess; }

std::int32_t CDevApiInterface_Humidifier_Impl::SetTargetHumidity(double value) noexcept {
    const SetPointPlace place = PlaceOf(*this);
    const double clamped = ClampPercentTarget(value, place.min, place.max);
    if (WriteSetPoint(*m_pDevice, kWriteRules, m_bLogCommunication != 0, place.address, clamped) != oko::kSuccess) {
        return oko::kFailure;
    }
    StoreTarget(*m_pDevice, m_dTarget, clamped);  // kept: docs/oddities.md#humidity-keeps-its-fraction
    return oko::kSuccess;
}

std::int32_t CDevApiInterface_Humidifier_Impl::GetTargetHumidity(double* value) noexcept {
    return ReadChannelValue(*m_pDevice, kTargetRules, m_bLogCommunication != 0,
                            FormatFor(command::kReadTarget, Get(m_address)), m_dTarget, value);
}

std::int32_t CDevApiInterface_Humidifier_Impl::GetCurrentHumidity(double* value) noexcept {
    return ReadChannelValue(*m_pDevice, kCurrentRules, m_bLogCommunication != 0,
                            FormatFor(command::kReadCurrent, Get(m_address)), m_dCurrent, value);
}

std::int32_t CDevApiInterface_Humidifier_Impl::GetHumidityState(std::uint32_t* state) noexcept {
    return JudgePercentState(Get(m_dCurrent), Get(m_dTarget), Get(m_dToleranceBelow), Get(m_dToleranceAbove), m_iState,
                             state);
}

std::int32_t CDevApiInterface_Humidifier_Impl::SetTolerance(double below, double above) noexcept {
    return StoreTolerance(*m_pDevice, below, above, m_dToleranceBelow, m_dToleranceAbove);
}

std::int32_t CDevApiInterface_Humidifier_Impl::GetTolerance(double* below, double* above) noexcept {
    return LoadTolerance(*m_pDevice, m_dToleranceBelow, m_dToleranceAbove, below, above);
}

bool CDevApiInterface_Humidifier_Impl::HasFeature(std::int32_t) noexcept { return false; }

void* CDevApiInterface_Humidifier_Impl::DeletingDestructor(unsigned flags) noexcept {
    m_pDevice->ForgetHumidifier(m_iIndex);
    return DestroyChannel(this, flags);
}
