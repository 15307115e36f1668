#pragma once

#include <optional>
#include <vector>

#include "incubator/DeviceFault.h"

namespace emulator {

/// A fault that runs, in the incubator's time.
struct RunningFault {
    int number = 0;
    DeviceFault fault;
    double since = 0.0;
    std::optional<double> until;  // nothing: until somebody ends it
};

/// What a sensor shows.
struct Shown {
    double value = 0.0;
    bool frozen = false;
};

/// The faults that run on a device, and what they do to its readings.
class RunningFaults {
 public:
    /// `value` is the device's, where its sensor freezes. The same fault again goes on for longer under its number;
    /// numbers count from 1, and none is given twice.
    int Begin(const DeviceFault& fault, double now, double value);

    /// False when no such fault runs.
    bool End(int number);

    /// Ends those whose time is over.
    void EndUntil(double now);

    /// When the next one ends by itself.
    std::optional<double> NextEnd() const;

    bool Has(DeviceFault::Kind kind, int product, int device) const;

    /// Takes a reading of the sensor of a value.
    Shown Read(int product, int device, double value, double now);

    std::vector<RunningFault> List() const;

 private:
    struct Entry {
        RunningFault running;
        double frozen;     // reading
        int readings = 0;  // since it began
    };

    double DriftOf(int product, int device, double now) const;

    std::vector<Entry> m_entries;
    int m_last = 0;  // number
};

}  // namespace emulator
