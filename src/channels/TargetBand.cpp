#include "channels/TargetBand.h"

#include <algorithm>
#include <cstdint>
#include <mutex>

#include "channels/SharedValues.h"
#include "core/CDevApiInterface_Impl.h"
#include "oko/BandState.h"
#include "oko/Result.h"
#include "platform/Window.h"

double ClampPercentTarget(double value, double min, double max) noexcept {
    constexpr double kMaxPercent = 99.99;
    const double percent = std::clamp(value, 0.0, kMaxPercent);
    // In this order of arguments a NaN gives way to `min`; the gas stays at its lowest rather than at its highest.
    const double atLeast = std::max(min, percent);
    // kept: docs/oddities.md#minimum-above-the-maximum
    return atLeast > max ? max : atLeast;
}

bool IsWithinBand(double current, double target, double below, double above) noexcept {
    return target + above >= current && current >= target - below;
}

std::int32_t JudgePercentState(double current, double target, double below, double above, SharedInt& kept,
                               std::uint32_t* state) noexcept {
    if (state == nullptr) {
        return oko::kFailure;
    }
    *state = IsWithinBand(current, target, below, above) ? oko::kWithinBand : oko::kOutsideBand;
    Put(kept, static_cast<std::int32_t>(*state));
    return oko::kSuccess;
}

void StoreTarget(CDevApiInterface_Impl& device, SharedDouble& target, double value) noexcept {
    const std::scoped_lock lock(device.m_csData);
    Put(target, value);
    // kept: docs/oddities.md#notice-without-window
    PostValuesChanged(device.m_hNotifyWnd);
}

std::int32_t StoreTolerance(CDevApiInterface_Impl& device, double below, double above, SharedDouble& toleranceBelow,
                            SharedDouble& toleranceAbove) noexcept {
    const std::scoped_lock lock(device.m_csData);
    Put(toleranceBelow, below);
    Put(toleranceAbove, above);
    return oko::kSuccess;
}

std::int32_t LoadTolerance(CDevApiInterface_Impl& device, const SharedDouble& toleranceBelow,
                           const SharedDouble& toleranceAbove, double* below, double* above) noexcept {
    if (below == nullptr || above == nullptr) {
        return oko::kFailure;
    }
    const std::scoped_lock lock(device.m_csData);
    *below = Get(toleranceBelow);
    *above = Get(toleranceAbove);
    return oko::kSuccess;
}
