#pragma once

#include <cstdint>

#include "oko/INotify.h"

namespace oko {

/// States that CDevApiInterface_Temperature::GetTemperatureState gives.
inline constexpr std::uint32_t kTemperatureNone = 0;
inline constexpr std::uint32_t kTemperatureBelow = 1;   // below the band around the target: heating
inline constexpr std::uint32_t kTemperatureAbove = 2;   // above the band
inline constexpr std::uint32_t kTemperatureWithin = 4;  // within the band

/// The feature that CDevApiInterface_Temperature::HasFeature knows: the channel is a sensor without a set point.
inline constexpr std::int32_t kFeatureSensorOnly = 4;

}  // namespace oko

/// One temperature zone or sensor. Temperatures are degrees Celsius.
///
/// Results are 0 for success and -1 for failure. A null pointer where a value is to be written gives -1. The two reads
/// and the write block while the server answers, nothing else for longer than a lock; the thread rules are
/// CDevApiInterface's. Slots 0 to 2 are INotify's.
class CDevApiInterface_Temperature : public INotify {
 public:
    /// Slot 3. Sets the target, clamped to the channel's limits (NaN becomes the lowest) and sent with one decimal.
    /// When it cannot be read back, the previous target is sent again and kept, and the result is still 0. -1: the
    /// channel has no set point, no answer came, or the server refused. [blocks]
    virtual std::int32_t SetTargetTemperature(double value) = 0;

    /// Slot 4. Reads the target from the server; the last known one while the device is busy. A reply without a value
    /// returns 0 and leaves `*value` as it was. -1: no set point, no answer, an error reply. [blocks]
    virtual std::int32_t GetTargetTemperature(double* value) = 0;

    /// Slot 5. Reads the current temperature; otherwise as slot 4, for every channel. [blocks]
    virtual std::int32_t GetCurrentTemperature(double* value) = 0;

    /// Slot 6. Where the last known current value lies: one of oko::kTemperature... . Returns 0.
    virtual std::int32_t GetTemperatureState(std::uint32_t* state) = 0;

    /// Slot 7. Stores the heating rate, which only the simulator uses. Returns 0.
    virtual std::int32_t SetTemperatureRate(double value) = 0;

    /// Slot 8. Writes the step of the set point, 0.2. Returns 0.
    virtual std::int32_t GetTemperatureStep(double* value) = 0;

    /// Slot 9. Stores how far below and above the target the current value still counts as reached. Returns 0.
    virtual std::int32_t SetTolerance(double below, double above) = 0;

    /// Slot 10. Writes both tolerances. Returns 0.
    virtual std::int32_t GetTolerance(double* below, double* above) = 0;

    /// Slot 11. Returns -1 and does nothing else.
    virtual std::int32_t NotSupported() = 0;

    /// Slot 12. Writes the lowest and the highest target. Returns 0.
    virtual std::int32_t GetTemperatureLimits(double* min, double* max) = 0;

    /// Slot 13. True only for oko::kFeatureSensorOnly on a channel that is one.
    virtual bool HasFeature(std::int32_t feature) = 0;

    /// Slot 14. The Microsoft layout's deleting destructor: destroys the channel, frees its memory when bit 0 of
    /// `flags` is set, and returns the address of the object. The device object deletes its channels itself; a host has
    /// no need to call it. Declared as an ordinary function because other compilers give a virtual destructor two
    /// slots.
    virtual void* DeletingDestructor(unsigned flags) = 0;

 protected:
    ~CDevApiInterface_Temperature() = default;
};
