#include "channels/Simulation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <mutex>

#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "channels/CDevApiInterface_Humidifier_Impl.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "channels/SharedValues.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/OwnSlots.h"
#include "link/Products.h"
#include "platform/Clock.h"
#include "platform/Random.h"
#include "platform/Window.h"

namespace {

constexpr double kRoomTemperature = 25.0;  // degrees Celsius
constexpr double kWarmSensor = 60.0;       // degrees Celsius

/// Whose sensors, when nothing else moves them, show a warm place.
// kept: docs/oddities.md#followers-first
constexpr std::array kWarmProducts{product::kCo2, product::kO2, product::kMixer12, product::kActiveHumidifier,
                                   product::kSevenZones};

/// Trembles about the room's temperature when it is at its target.
// kept: docs/oddities.md#room-of-product-9
constexpr ChannelAddress kRoomAtRest{product::kH301, 1};

/// Half of the time nothing, else a tenth of a degree up or down.
double Jitter() noexcept {
    if (NextRandom() % 2 == 1) {
        return 0.0;
    }
    return NextRandom() % 2 == 1 ? 0.1 : -0.1;
}

/// What moves a temperature channel that is not at rest.
enum class ZoneKind { Follower, Room, Warm, Controlled };

/// The order decides: a product's further channels follow its first one before anything else is asked.
ZoneKind KindOf(ChannelAddress address) noexcept {
    const ProductTraits& traits = TraitsOf(address.m_iProduct);
    const bool room = traits.roomSensor && address.m_iChannel == parameter::kRoomTemperature;
    if (traits.kind == ChannelKind::Temperature && address.m_iChannel >= traits.setPointZones && !room) {
        return ZoneKind::Follower;
    }
    if (room) {
        return ZoneKind::Room;
    }
    const bool warm = std::ranges::find(kWarmProducts, address.m_iProduct) != kWarmProducts.end();
    return warm ? ZoneKind::Warm : ZoneKind::Controlled;
}

/// The zone that a product's sensors follow; null when the product has none.
const CDevApiInterface_Temperature_Impl* FindMainZone(const CDevApiInterface_Impl& device,
                                                      std::int32_t product) noexcept {
    for (const CDevApiInterface_Temperature_Impl* const candidate : device.m_pTemperature) {
        if (candidate != nullptr && Get(candidate->m_address) == ChannelAddress{product, 0}) {
            return candidate;
        }
    }
    return nullptr;
}

/// Where the current value lies, as found at the start of a step.
struct Band {
    bool above;
    bool below;
    bool Within() const noexcept { return !above && !below; }
};

void MoveControlledZone(CDevApiInterface_Temperature_Impl& channel, const Band& band, double target,
                        double elapsedSeconds) noexcept {
    if (band.Within()) {
        Put(channel.m_iState, static_cast<std::int32_t>(oko::kTemperatureWithin));
    }
    const double current = Get(channel.m_dCurrent);
    const double distance = std::abs(current - target);
    const double damping = distance <= 0.5 ? 500.0 : distance <= 2.0 ? 200.0 : 60.0;
    Put(channel.m_dCurrent, current + channel.m_dRate * elapsedSeconds / damping);
    if (band.above) {
        Put(channel.m_iState, static_cast<std::int32_t>(oko::kTemperatureAbove));
    } else if (band.below) {
        Put(channel.m_iState, static_cast<std::int32_t>(oko::kTemperatureBelow));
    }
}

void MoveTemperature(CDevApiInterface_Temperature_Impl& channel, const Band& band, double target,
                     double elapsedSeconds) noexcept {
    const ChannelAddress address = Get(channel.m_address);
    switch (KindOf(address)) {
        case ZoneKind::Follower:
            if (const auto* main = FindMainZone(*channel.m_pDevice, address.m_iProduct)) {
                Put(channel.m_dCurrent, Get(main->m_dCurrent) + Jitter());
            }
            return;
        case ZoneKind::Room:
            Put(channel.m_dCurrent, kRoomTemperature + Jitter());
            return;
        case ZoneKind::Warm:
            Put(channel.m_dCurrent, kWarmSensor + Jitter());
            return;
        case ZoneKind::Controlled:
            MoveControlledZone(channel, band, target, elapsedSeconds);
            return;
    }
}

/// A channel at its target: it stays there and trembles a little.
void RestTemperature(CDevApiInterface_Temperature_Impl& channel, const Band& band, double target) noexcept {
    if (!band.Within()) {
        Put(channel.m_iState, static_cast<std::int32_t>(oko::kTemperatureNone));
        return;
    }
    if (Get(channel.m_address) == kRoomAtRest) {
        Put(channel.m_dCurrent, kRoomTemperature + Jitter());
    } else if (NextRandom() % 5 == 1) {
        Put(channel.m_dCurrent, target + Jitter());
    }
    Put(channel.m_iState, static_cast<std::int32_t>(oko::kTemperatureWithin));
}

/// One step of a gas or humidity value: pulled by at most a point towards a target that is a percentage, plus noise.
double MovePercent(double current, double target, double noise) noexcept {
    // kept: docs/oddities.md#pull-within-percent
    if (target >= 0.0 && target <= 100.0) {
        if (target - current > 0.5) {
            current += 1.0;
        } else if (target - current < -0.5) {
            current -= 1.0;
        }
    }
    return std::clamp(current + noise, 0.0, 100.0);
}

/// The tolerances count from the target to the value here.
// kept: docs/oddities.md#mirrored-band
std::int32_t PercentState(double target, double current, double below, double above) noexcept {
    const double difference = target - current;
    const bool within = difference <= above && difference >= -below;
    return static_cast<std::int32_t>(within ? oko::kWithinBand : oko::kOutsideBand);
}

/// Between 0 and 1.
double NextFraction() noexcept { return NextRandom() / static_cast<double>(kRandomMax); }

/// What a value thread finds after each round.
enum class ThreadOrder { GoOn, Stop, Replaced };

ThreadOrder AskOrder(const ValueThreadStart& thread) noexcept {
    const std::scoped_lock lock(thread.device.m_csData);
    if (thread.device.m_nThreadRun != thread.run) {
        return ThreadOrder::Replaced;
    }
    return thread.device.m_bThreadRun ? ThreadOrder::GoOn : ThreadOrder::Stop;
}

/// How many channels of each kind the thread visits: those that were live when it started.
struct LiveCounts {
    std::uint32_t temperatures;
    std::uint32_t gasConcentrations;
    std::uint32_t humidifiers;
};

void StepAllChannels(CDevApiInterface& device, const LiveCounts& counts) noexcept {
    for (std::uint32_t i = 0; i < counts.temperatures; ++i) {
        CDevApiInterface_Temperature* channel = nullptr;
        device.GetTemperature(i, &channel);
        if (channel != nullptr) {
            SimulateTemperature(static_cast<CDevApiInterface_Temperature_Impl&>(*channel));
        }
    }
    for (std::uint32_t i = 0; i < counts.gasConcentrations; ++i) {
        CDevApiInterface_GasConcentration* channel = nullptr;
        device.GetGasConcentration(i, &channel);
        if (channel != nullptr) {
            SimulateGasConcentration(static_cast<CDevApiInterface_GasConcentration_Impl&>(*channel));
        }
    }
    for (std::uint32_t i = 0; i < counts.humidifiers; ++i) {
        CDevApiInterface_Humidifier* channel = nullptr;
        device.GetHumidifier(i, &channel);
        if (channel != nullptr) {
            SimulateHumidity(static_cast<CDevApiInterface_Humidifier_Impl&>(*channel));
        }
    }
}

}  // namespace

std::uint32_t SimulationThread(void* start) noexcept {
    constexpr std::uint32_t kCycleMs = 100;
    const std::unique_ptr<ValueThreadStart> thread(static_cast<ValueThreadStart*>(start));
    if (thread == nullptr) {
        return 0;
    }
    // kept: docs/oddities.md#through-the-own-slot
    CDevApiInterface& device = ThroughSlots<CDevApiInterface>(thread->device);
    const LiveCounts counts{static_cast<std::uint32_t>(device.GetTemperatureCount()),
                            static_cast<std::uint32_t>(device.GetGasConcentrationCount()),
                            static_cast<std::uint32_t>(device.GetHumidifierCount())};
    ThreadOrder order = AskOrder(*thread);
    while (order == ThreadOrder::GoOn) {
        StepAllChannels(device, counts);
        SleepMilliseconds(kCycleMs);
        order = AskOrder(*thread);
    }
    if (order == ThreadOrder::Stop) {
        thread->device.m_hThreadStopped.Set();  // the last that it does with the device; who waits may destroy it now
    }
    return 0;
}

// kept: docs/oddities.md#no-temperature-notice
void SimulateTemperature(CDevApiInterface_Temperature_Impl& channel) noexcept {
    const std::scoped_lock lock(channel.m_pDevice->m_csData);
    const std::int64_t now = PerformanceCounter();
    const double elapsedSeconds = channel.m_llLastTick == 0 ? 0.0
                                                            : static_cast<double>(now - channel.m_llLastTick) /
                                                                  static_cast<double>(channel.m_llFrequency);
    const double current = Get(channel.m_dCurrent);
    const double target = Get(channel.m_dTarget);
    const double difference = current - target;
    const Band band{difference > Get(channel.m_dToleranceAbove), difference < -Get(channel.m_dToleranceBelow)};

    if (!band.Within()) {
        // kept: docs/oddities.md#rate-of-its-own
        constexpr double kRate = 10.0;
        channel.m_dRate = band.below ? kRate : -kRate;
    } else if (target - 0.01 <= current && current <= target + 0.01) {
        channel.m_dRate = 0.0;
    }

    // A step that went past the target ends on it.
    if ((channel.m_dRate > 0.0 && current > target) || (channel.m_dRate < 0.0 && target > current)) {
        Put(channel.m_dCurrent, target);
    }

    if (channel.m_dRate == 0.0) {
        RestTemperature(channel, band, target);
    } else {
        MoveTemperature(channel, band, target, elapsedSeconds);
    }
    channel.m_llLastTick = now;
}

void SimulateGasConcentration(CDevApiInterface_GasConcentration_Impl& channel) noexcept {
    const double target = Get(channel.m_dTarget);
    const double current = MovePercent(Get(channel.m_dCurrent), target, NextFraction() - 0.5);
    Put(channel.m_dCurrent, current);
    Put(channel.m_iState,
        PercentState(target, current, Get(channel.m_dToleranceBelow), Get(channel.m_dToleranceAbove)));
    // kept: docs/oddities.md#notice-without-window
    PostValuesChanged(channel.m_pDevice->m_hNotifyWnd);
}

void SimulateHumidity(CDevApiInterface_Humidifier_Impl& channel) noexcept {
    const double target = Get(channel.m_dTarget);
    // kept: docs/oddities.md#sagging-humidity
    const double current = MovePercent(Get(channel.m_dCurrent), target, NextFraction() - 1.0);
    // kept: docs/oddities.md#humidity-judged-unrounded
    Put(channel.m_dCurrent, static_cast<int>(current + 0.5));  // NOLINT(bugprone-incorrect-roundings): 0 to 100
    Put(channel.m_iState,
        PercentState(target, current, Get(channel.m_dToleranceBelow), Get(channel.m_dToleranceAbove)));
    PostValuesChanged(channel.m_pDevice->m_hNotifyWnd);
}
