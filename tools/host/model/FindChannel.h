#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "model/ChannelInfo.h"
#include "text/Parsed.h"

/// The index of the channel that people mean by a key, a name, or a name after its kind ("gas:CO2"). A name that stands
/// for several is refused with their keys, an unknown one with all keys.
Parsed<std::size_t> FindChannel(const std::vector<ChannelInfo>& channels, std::string_view name);

/// As FindChannel; a sensor is refused, too: it has no target.
Parsed<std::size_t> FindChannelWithTarget(const std::vector<ChannelInfo>& channels, std::string_view name);
