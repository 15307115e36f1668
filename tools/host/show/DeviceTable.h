#pragma once

#include <string>
#include <vector>

#include "model/Snapshot.h"

/// "OKO-Lab bold line on COM3", "OKO-Lab bold line Simulator (simulated)".
std::string DeviceTitle(const DeviceInfo& device);

/// A snapshot as lines for a terminal: the device and the local time, why there is no data when there is none, a row
/// for each channel, and the alarms that are pending or on.
std::vector<std::string> DeviceTable(const Snapshot& snapshot);
