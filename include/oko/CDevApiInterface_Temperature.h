#pragma once

#include <cstdint>

#include "oko/BandState.h"  // IWYU pragma: export
#include "oko/INotify.h"    // IWYU pragma: export

namespace oko {

/// The feature that CDevApiInterface_Temperature::HasFeature knows: the channel is a sensor without a set point.
inline constexpr std::int32_t kFeatureSensorOnly = 4;

}  // namespace oko

/// One temperature zone or sensor. Temperatures are degrees Celsius.
///
/// Results are 0 for success and -1 for failure; a null pointer where a value is to be written gives -1. Calls marked
/// [blocks] wait while the server answers, the others for no longer than a lock; the thread rules are
/// CDevApiInterface's. Slots 0 to 2 are INotify's.
class CDevApiInterface_Temperature : public INotify {
 public:
    /// Slot 3. Sets the target: any number, clamped to GetTemperatureLimits (NaN becomes the lowest) and sent with one
    /// decimal. The result does not tell of the clamping: read the target back. When the plug-in itself cannot read it
    /// back (after two more tries, where it ran into a timeout), the previous target is sent again and kept, a line of
    /// the host's log tells of it, and the result is still 0. Sends also while the device is busy. -1: the channel has
    /// no set point (nothing is sent), no answer came, the server refused, the link only watches (nothing is sent), or
    /// it was closed or opened anew meanwhile. [blocks]
    virtual std::int32_t SetTargetTemperature(double value) = 0;

    /// Slot 4. Reads the target from the server; while the device is busy, the last known one from memory. A reply
    /// without a value returns 0 and leaves `*value` as it was: set it to NaN before the call, and take NaN as "no
    /// value"; a value that is written is finite. -1: no set point, no answer, an error reply or a refusal; `*value` is
    /// as it was. [blocks]
    virtual std::int32_t GetTargetTemperature(double* value) = 0;

    /// Slot 5. Reads the current temperature; otherwise as slot 4, for every channel. [blocks]
    virtual std::int32_t GetCurrentTemperature(double* value) = 0;

    /// Slot 6. Writes where the last known current value lies (oko::kTemperatureBelow, ...). Asks nobody: it is as
    /// fresh as the last read of both values. Returns 0.
    virtual std::int32_t GetTemperatureState(std::uint32_t* state) = 0;

    /// Slot 7. Stores the rate at which the simulator moves the current value: degrees Celsius per minute, negative for
    /// cooling, 0.4 at first; of it 0.3 within 2 degrees of the target and 0.12 within 0.5. It lasts while the value is
    /// in the band: outside the simulator takes 10 towards the target, on the target 0. The real incubator has no use
    /// for it. Returns 0.
    virtual std::int32_t SetTemperatureRate(double value) = 0;

    /// Slot 8. Writes the step in which a host's controls may change the target: 0.2 degrees Celsius for every channel.
    /// Returns 0.
    virtual std::int32_t GetTemperatureStep(double* value) = 0;

    /// Slot 9. Stores how far below and above the target the current value still counts as reached, in degrees Celsius;
    /// 0.2 each at first. Not sent to the server, and not checked. Returns 0.
    virtual std::int32_t SetTolerance(double below, double above) = 0;

    /// Slot 10. Writes both tolerances. Returns 0.
    virtual std::int32_t GetTolerance(double* below, double* above) = 0;

    /// Slot 11. Returns -1 and does nothing else.
    virtual std::int32_t NotSupported() = 0;

    /// Slot 12. Writes the lowest and the highest target, as the server gave them to Init; 0 and 0 for a sensor.
    /// Returns 0.
    virtual std::int32_t GetTemperatureLimits(double* min, double* max) = 0;

    /// Slot 13. What the channel can do, for a host to decide which controls to show. True only for
    /// oko::kFeatureSensorOnly on a channel that is one: show its current value and no target. Known after Init.
    virtual bool HasFeature(std::int32_t feature) = 0;

    /// Slot 14. The Microsoft layout's deleting destructor: destroys the channel, frees its memory when bit 0 of
    /// `flags` is set, and returns the address of the object. The device object deletes its channels itself; a host has
    /// no need to call it. After it the device has no channel at this index, until an Init makes a new one. Declared as
    /// an ordinary function because other compilers give a virtual destructor two slots.
    virtual void* DeletingDestructor(unsigned flags) = 0;

 protected:
    ~CDevApiInterface_Temperature() = default;
};
