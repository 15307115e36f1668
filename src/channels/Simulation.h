#pragma once

#include <cstdint>

class CDevApiInterface_Temperature_Impl;
class CDevApiInterface_GasConcentration_Impl;
class CDevApiInterface_Humidifier_Impl;

/// The simulator's value thread: ten times a second every channel's current value drifts towards its target, as a real
/// incubator's would.

/// The thread's procedure; `device` is a CDevApiInterface_Impl. Returns 0 when m_bThreadRun is clear, after it has set
/// m_hThreadStopped. A null device returns at once.
std::uint32_t SimulationThread(void* device) noexcept;

/// One step of one channel. The temperature step holds the data lock; the other two take none and post the change
/// notice to the calling thread.
void SimulateTemperature(CDevApiInterface_Temperature_Impl& channel) noexcept;
void SimulateGasConcentration(CDevApiInterface_GasConcentration_Impl& channel) noexcept;
void SimulateHumidity(CDevApiInterface_Humidifier_Impl& channel) noexcept;
