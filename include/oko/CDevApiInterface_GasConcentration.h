#pragma once

#include <cstdint>

#include "oko/BandState.h"     // IWYU pragma: export
#include "oko/ChangeNotice.h"  // IWYU pragma: export
#include "oko/INotify.h"       // IWYU pragma: export

namespace oko {

/// The feature that CDevApiInterface_GasConcentration::HasFeature knows: the O2 controller works in air mode.
inline constexpr std::int32_t kFeatureAirMode = 2;

}  // namespace oko

/// One CO2 or O2 controller; GetName tells which. Concentrations are percent, 0 to 99.99.
///
/// Results are 0 for success and -1 for failure; a null pointer where a value is to be written gives -1. Calls marked
/// [blocks] wait while the server answers, the others for no longer than a lock; the thread rules are
/// CDevApiInterface's. Slots 0 to 2 are INotify's.
class CDevApiInterface_GasConcentration : public INotify {
 public:
    /// Slot 3. Sets the target: any number, clamped to 0 to 99.99 and to the controller's range as the server gave it
    /// to Init (NaN becomes its lowest), and sent with two decimals. The result does not tell of the clamping: read the
    /// target back. On success it posts the change notice (oko/ChangeNotice.h) to the calling thread's message queue.
    /// Sends also while the device is busy. -1: no answer, the server refused, or the link only watches
    /// (nothing is sent); nothing is posted. [blocks]
    virtual std::int32_t SetTargetGasConcentration(double value) = 0;

    /// Slot 4. Reads the target from the server; while the device is busy, the last known one from memory. A reply
    /// without a value returns 0 and leaves `*value` as it was: set it to NaN before the call, and take NaN as "no
    /// value"; a value that is written is finite. -1: no answer, an error reply or a refusal; `*value` is as it was.
    ///
    /// On an O2 controller it also watches the air mode: a new one that four reads in a row find is believed, and the
    /// host is told with oko::kCallbackAirModeChanged before this call returns. [blocks: two exchanges]
    virtual std::int32_t GetTargetGasConcentration(double* value) = 0;

    /// Slot 5. Reads the current concentration; otherwise as slot 4, without the watch. [blocks]
    virtual std::int32_t GetCurrentGasConcentration(double* value) = 0;

    /// Slot 6. Writes oko::kWithinBand or oko::kOutsideBand for the last known values. Asks nobody. Returns 0.
    virtual std::int32_t GetGasConcentrationState(std::uint32_t* state) = 0;

    /// Slot 7. Stores how far below and above the target the current value still counts as reached, in percent; 0.5
    /// each at first. Not sent to the server, and not checked. Returns 0.
    virtual std::int32_t SetTolerance(double below, double above) = 0;

    /// Slot 8. Writes both tolerances. Returns 0.
    virtual std::int32_t GetTolerance(double* below, double* above) = 0;

    /// Slot 9. What the controller can do, for a host to decide what to show. True only for oko::kFeatureAirMode on an
    /// O2 controller while the air mode is on, from memory. Ask again after oko::kCallbackAirModeChanged.
    virtual bool HasFeature(std::int32_t feature) = 0;

    /// Slot 10. The deleting destructor; see CDevApiInterface_Temperature.
    virtual void* DeletingDestructor(unsigned flags) = 0;

 protected:
    ~CDevApiInterface_GasConcentration() = default;
};
