#pragma once

#include <cstdint>

#include "oko/INotify.h"

namespace oko {

/// States that GetGasConcentrationState and GetHumidityState give.
inline constexpr std::uint32_t kWithinBand = 0;
inline constexpr std::uint32_t kOutsideBand = 1;

/// The feature that CDevApiInterface_GasConcentration::HasFeature knows: the O2 controller works in air mode.
inline constexpr std::int32_t kFeatureAirMode = 2;

}  // namespace oko

/// One CO2 or O2 controller. Concentrations are percent, 0 to 99.99.
///
/// Results are 0 for success and -1 for failure. A null pointer where a value is to be written gives -1. The two reads
/// and the write block while the server answers; the thread rules are CDevApiInterface's. Slots 0 to 2 are INotify's.
class CDevApiInterface_GasConcentration : public INotify {
 public:
    /// Slot 3. Sets the target, clamped to 0 to 99.99 and to the controller's range (NaN becomes its lowest), and sent
    /// with two decimals. Then posts WM_COMMAND (command 1003, notification code 1) to the calling thread's message
    /// queue. -1: no answer, or the server refused. [blocks]
    virtual std::int32_t SetTargetGasConcentration(double value) = 0;

    /// Slot 4. Reads the target from the server; the last known one while the device is busy. A reply without a value
    /// returns 0 and leaves `*value` as it was. On an O2 controller it also watches the air mode and may call the host
    /// with oko::kCallbackAirModeChanged. -1: no answer, an error reply. [blocks]
    virtual std::int32_t GetTargetGasConcentration(double* value) = 0;

    /// Slot 5. Reads the current concentration; otherwise as slot 4, without the watch. [blocks]
    virtual std::int32_t GetCurrentGasConcentration(double* value) = 0;

    /// Slot 6. Writes oko::kWithinBand or oko::kOutsideBand for the last known values. Returns 0.
    virtual std::int32_t GetGasConcentrationState(std::uint32_t* state) = 0;

    /// Slot 7. Stores how far below and above the target the current value still counts as reached. Returns 0.
    virtual std::int32_t SetTolerance(double below, double above) = 0;

    /// Slot 8. Writes both tolerances. Returns 0.
    virtual std::int32_t GetTolerance(double* below, double* above) = 0;

    /// Slot 9. True only for oko::kFeatureAirMode on an O2 controller while the air mode is on.
    virtual bool HasFeature(std::int32_t feature) = 0;

    /// Slot 10. The deleting destructor; see CDevApiInterface_Temperature.
    virtual void* DeletingDestructor(unsigned flags) = 0;

 protected:
    ~CDevApiInterface_GasConcentration() = default;
};
