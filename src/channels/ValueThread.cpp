// The device object's side of the simulator's value thread, and what the simulator sees of the channels.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <tuple>

#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "channels/CDevApiInterface_Humidifier_Impl.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "channels/Simulation.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/LinkOperation.h"
#include "link/Simulator.h"
#include "platform/Clock.h"

namespace {

constexpr std::uint32_t kStopTimeoutMs = 5000;
constexpr std::uint32_t kReturnDelayMs = 100;

template <class Channel>
ChannelView ViewOf(const Channel* channel) noexcept {
    if (channel == nullptr) {
        return {};
    }
    return {true, Get(channel->m_address), Get(channel->m_dCurrent), Get(channel->m_dTarget)};
}

}  // namespace

void CDevApiInterface_Impl::StartValueThread(const LinkOperation& operation) noexcept try {
    auto start = std::make_unique<ValueThreadStart>(*this, 0U);
    {
        const std::scoped_lock lock(m_csData);
        m_bThreadRun = true;  // armed anew: after a Close it still says that the thread is to stop
        start->run = ++m_nThreadRun;
    }
    const std::scoped_lock lock(m_csThread);
    if (operation.HasEnded()) {
        return;  // a Close that comes later finds the thread; one that came before does not stop it
    }
    m_hThreadStopped.Reset();
    m_hThread.Start(SimulationThread, start.get());
    if (m_hThread.IsOpen()) {
        std::ignore = start.release();  // the thread owns it now
    }
} catch (...) {  // NOLINT(bugprone-empty-catch)
    // Out of memory: the simulator answers, but its values stand still.
}

void CDevApiInterface_Impl::StopValueThread() noexcept {
    {
        const std::scoped_lock lock(m_csData);
        m_bThreadRun = false;
    }
    // Never under the data lock: the thread needs it to end. A host that calls Close from a callback that holds it
    // waits for the whole time-out; the thread ends by itself later.
    const std::scoped_lock lock(m_csThread);
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
