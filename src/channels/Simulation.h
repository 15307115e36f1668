#pragma once

#include <cstdint>

class CDevApiInterface_Impl;
class CDevApiInterface_Temperature_Impl;
class CDevApiInterface_GasConcentration_Impl;
class CDevApiInterface_Humidifier_Impl;

/// The simulator's value thread: ten times a second every channel's current value drifts towards its target, as a real
/// incubator's would.

/// What a value thread needs: its device, and which of the device's value threads it is.
struct ValueThreadStart {
    CDevApiInterface_Impl& device;
    std::uint32_t run;  // it goes on while this is m_nThreadRun
};

/// The thread's procedure; `start` is a ValueThreadStart made with std::make_unique, which it frees. Returns 0 when
/// m_bThreadRun is clear, after it has set m_hThreadStopped, or when a later thread has taken its place: one whose stop
/// timed out must not come back to life with the next Init. A null start returns at once.
std::uint32_t SimulationThread(void* start) noexcept;

/// One step of one channel. The temperature step holds the data lock; the other two take none and post the change
/// notice to the calling thread.
void SimulateTemperature(CDevApiInterface_Temperature_Impl& channel) noexcept;
void SimulateGasConcentration(CDevApiInterface_GasConcentration_Impl& channel) noexcept;
void SimulateHumidity(CDevApiInterface_Humidifier_Impl& channel) noexcept;
