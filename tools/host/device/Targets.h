#pragma once

#include <string>
#include <vector>

#include "device/Channels.h"
#include "device/TargetSetting.h"

/// Sets one target. Returns why that cannot be done, or nothing. Of several channels of one kind and name it takes the
/// first; a name that stands in several kinds is refused until the kind is named too.
std::string SetTarget(const std::vector<Channel>& channels, const TargetSetting& setting);
