#pragma once

#include <cstdint>
#include <mutex>

#include "channels/SharedValues.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Products.h"

/// A channel's target: what it may be, the band of tolerances around it, and whether the current value lies in it.

/// Where a set point goes and what it may be; read together because Init changes them together.
struct SetPointPlace {
    ChannelAddress address;
    double min;
    double max;
};

template <class Channel>
SetPointPlace PlaceOf(const Channel& channel) noexcept {
    const std::scoped_lock lock(channel.m_pDevice->m_csCatalogue);
    return {Get(channel.m_address), channel.m_dMin, channel.m_dMax};
}

/// The part of SetTarget... that gas and humidity share: 0 to 99.99, then the channel's own range. A number that is
/// none becomes the lowest target.
double ClampPercentTarget(double value, double min, double max) noexcept;

/// Whether the current value lies in the band around the target.
bool IsWithinBand(double current, double target, double below, double above) noexcept;

/// The state slot of gas and humidity: oko::kWithinBand or oko::kOutsideBand, kept in `kept`. Takes no lock.
std::int32_t JudgePercentState(double current, double target, double below, double above, SharedInt& kept,
                               std::uint32_t* state) noexcept;

/// The end of SetTarget... that gas and humidity share: stores the target under the data lock and posts the change
/// notice.
void StoreTarget(CDevApiInterface_Impl& device, SharedDouble& target, double value) noexcept;

/// The tolerance slots of all three channel classes, under the data lock.
std::int32_t StoreTolerance(CDevApiInterface_Impl& device, double below, double above, SharedDouble& toleranceBelow,
                            SharedDouble& toleranceAbove) noexcept;
std::int32_t LoadTolerance(CDevApiInterface_Impl& device, const SharedDouble& toleranceBelow,
                           const SharedDouble& toleranceAbove, double* below, double* above) noexcept;
