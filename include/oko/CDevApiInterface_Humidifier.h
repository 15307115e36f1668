#pragma once

#include <cstdint>

#include "oko/INotify.h"

/// One humidifier. Humidity is percent relative humidity, 0 to 99.99.
///
/// Results are 0 for success and -1 for failure. A null pointer where a value is to be written gives -1. The two reads
/// and the write block while the server answers; the thread rules are CDevApiInterface's. Slots 0 to 2 are INotify's;
/// this channel keeps the flag of SetEnabled.
class CDevApiInterface_Humidifier : public INotify {
 public:
    /// Slot 3. Sets the target, clamped to 0 to 99.99 and to the humidifier's range (NaN becomes its lowest), and sent
    /// as a whole percent. Then posts WM_COMMAND (command 1003, notification code 1) to the calling thread's message
    /// queue. -1: no answer, or the server refused. [blocks]
    virtual std::int32_t SetTargetHumidity(double value) = 0;

    /// Slot 4. Reads the target from the server, also while the device is busy. A reply without a value returns 0 and
    /// leaves `*value` as it was. -1: no answer, an error reply. [blocks]
    virtual std::int32_t GetTargetHumidity(double* value) = 0;

    /// Slot 5. Reads the current humidity; otherwise as slot 4. [blocks]
    virtual std::int32_t GetCurrentHumidity(double* value) = 0;

    /// Slot 6. Writes oko::kWithinBand (0) or oko::kOutsideBand (1) for the last known values. Returns 0.
    virtual std::int32_t GetHumidityState(std::uint32_t* state) = 0;

    /// Slot 7. Stores how far below and above the target the current value still counts as reached. Returns 0.
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
