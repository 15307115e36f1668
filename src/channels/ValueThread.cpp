// The device object's side of the simulator's value thread, and what the simulator sees of the channels.

#include <algorithm>
#include <mutex>

#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "channels/CDevApiInterface_Humidifier_Impl.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "channels/Simulation.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Simulator.h"
#include "platform/Clock.h"

namespace {

constexpr std::uint32_t kStopTimeoutMs = 5000;
constexpr std::uint32_t kReturnDelayMs = 100;

void SetThreadRun(CDevApiInterface_Impl& device, bool run) noexcept {
    const std::scoped_lock lock(device.m_csData);
    device.m_bThreadRun = run;
}

template <class Channel>
ChannelView ViewOf(const Channel* channel) noexcept {
    if (channel == nullptr) {
        return {};
    }
    return {true, channel->m_iProduct, channel->m_iChannel, Get(channel->m_dCurrent), Get(channel->m_dTarget)};
}

}  // namespace

void CDevApiInterface_Impl::StartValueThread() noexcept {
    // Armed anew: after a Close both still say that the thread is to stop.
    SetThreadRun(*this, true);
    m_hThreadStopped.Reset();
    m_hThread.Start(SimulationThread, this);
}

void CDevApiInterface_Impl::StopValueThread() noexcept {
    SetThreadRun(*this, false);
    if (!m_hThread.IsOpen()) {
        return;
    }
    m_hThreadStopped.Wait(kStopTimeoutMs);
    SleepMilliseconds(kReturnDelayMs);  // the thread returns after it has set the event
    m_hThread.Close();
}

ChannelViews CDevApiInterface_Impl::ViewChannels() const noexcept {
    ChannelViews views;
    std::ranges::transform(m_pTemperature, views.temperatures.begin(), ViewOf<CDevApiInterface_Temperature_Impl>);
    std::ranges::transform(m_pGasConcentration, views.gasConcentrations.begin(),
                           ViewOf<CDevApiInterface_GasConcentration_Impl>);
    std::ranges::transform(m_pHumidifier, views.humidifiers.begin(), ViewOf<CDevApiInterface_Humidifier_Impl>);
    return views;
}
