#pragma once

#include <string>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/Snapshot.h"

/// What a device's channels are, without their values.

/// For people: the device, a heading and a row a channel.
std::vector<std::string> ChannelList(const DeviceInfo& device, const std::vector<ChannelInfo>& channels);

/// The same for programs. What a sensor does not have is null.
std::string ChannelListJson(const DeviceInfo& device, const std::vector<ChannelInfo>& channels);
