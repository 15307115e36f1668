#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "model/ChannelInfo.h"
#include "text/Parsed.h"

/// The channel that a user means by a key, a name or KIND:NAME. Of several channels of one kind and name the name means
/// the first. A name that stands in several kinds, or nowhere, is an error that tells what to write.
Parsed<std::size_t> FindChannel(const std::vector<ChannelInfo>& channels, std::string_view text);

/// As FindChannel, and an error for a sensor: it has no target.
Parsed<std::size_t> FindChannelWithTarget(const std::vector<ChannelInfo>& channels, std::string_view text);
