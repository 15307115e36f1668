#pragma once

#include "model/ChannelInfo.h"
#include "model/Moment.h"

/// A gas with a target, a sensor, and moments, for the tests of what judges them.
inline ChannelInfo Co2() { return {ChannelKind::Gas, 0, "CO2", "CO2", true, 0.0, 20.0, 0.5, 0.5}; }
inline ChannelInfo Room() { return {ChannelKind::Temperature, 1, "Room", "Room", false, 0.0, 0.0, 0.0, 0.0}; }

/// Ten seconds into the program.
inline Moment SinceBegin(double seconds) { return {0, 10.0 + seconds}; }
