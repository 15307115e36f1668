#pragma once

#include <cstdint>

#include "oko/BandState.h"     // IWYU pragma: export
#include "oko/ChangeNotice.h"  // IWYU pragma: export
#include "oko/INotify.h"       // IWYU pragma: export

/// One humidifier. Humidity is percent relative humidity, 0 to 99.99.
///
/// Results are 0 for success and -1 for failure; a null pointer where a value is to be written gives -1. Calls marked
/// [blocks] wait while the server answers, the others for no longer than a lock; the thread rules are
/// CDevApiInterface's. Slots 0 to 2 are INotify's; this channel keeps the flag of SetEnabled.
class CDevApiInterface_Humidifier : public INotify {
 public:
    /// Slot 3. Sets the target: any number, clamped to 0 to 99.99 and to the humidifier's range as the server gave it
    /// to Init (NaN becomes its lowest), and sent as a whole percent. The result does not tell of the clamping: read
    /// the target back. On success it posts the change notice (oko/ChangeNotice.h) to the calling thread's message
    /// queue. Sends also while the device is busy. -1: no answer, the server refused, or the link only
    /// watches (nothing is sent); nothing is posted. [blocks]
    virtual std::int32_t SetTargetHumidity(double value) = 0;

    /// Slot 4. Reads the target from the server, also while the device is busy. A reply without a value returns 0 and
    /// leaves `*value` as it was: set it to NaN before the call, and take NaN as "no value"; a value that is written is
    /// finite. -1: no answer, an error reply or a refusal; `*value` is as it was. [blocks]
    virtual std::int32_t GetTargetHumidity(double* value) = 0;

    /// Slot 5. Reads the current humidity; otherwise as slot 4. [blocks]
    virtual std::int32_t GetCurrentHumidity(double* value) = 0;

    /// Slot 6. Writes oko::kWithinBand or oko::kOutsideBand for the last known values. Asks nobody. Returns 0.
    virtual std::int32_t GetHumidityState(std::uint32_t* state) = 0;

    /// Slot 7. Stores how far below and above the target the current value still counts as reached, in percent; 0.5
    /// below and 2.0 above at first. Not sent to the server, and not checked. Returns 0.
    virtual std::int32_t SetTolerance(double below, double above) = 0;

    /// Slot 8. Writes both tolerances. Returns 0.
    virtual std::int32_t GetTolerance(double* below, double* above) = 0;

    /// Slot 9. False for every feature.
    virtual bool HasFeature(std::int32_t feature) = 0;

    /// Slot 10. The deleting destructor; see CDevApiInterface_Temperature.
    virtual void* DeletingDestructor(unsigned flags) = 0;

 protected:
    ~CDevApiInterface_Humidifier() = default;
};
