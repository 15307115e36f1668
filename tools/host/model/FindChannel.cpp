#include "model/FindChannel.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "model/ChannelInfo.h"
#include "text/Parsed.h"
#include "text/Words.h"

namespace {

std::vector<std::string> Keys(const std::vector<ChannelInfo>& channels) {
    std::vector<std::string> keys;
    std::ranges::transform(channels, std::back_inserter(keys), &ChannelInfo::key);
    return keys;
}

bool IsMeant(const ChannelInfo& channel, std::string_view name) {
    return name == channel.name || name == std::string(KindName(channel.kind)) + ":" + channel.name;
}

std::string Unknown(const std::vector<ChannelInfo>& channels, std::string_view name) {
    const std::string sentence = "no channel is called " + InQuotes(name);
    if (channels.empty()) {
        return sentence + ": there is none at all";
    }
    return sentence + ": write " + JoinWords(Keys(channels), "or");
}

}  // namespace

Parsed<std::size_t> FindChannel(const std::vector<ChannelInfo>& channels, std::string_view name) {
    const auto byKey = std::ranges::find(channels, name, &ChannelInfo::key);
    if (byKey != channels.end()) {
        return Parsed<std::size_t>::Of(static_cast<std::size_t>(byKey - channels.begin()));
    }
    std::vector<ChannelInfo> meant;
    std::ranges::copy_if(channels, std::back_inserter(meant),
                         [&](const auto& channel) { return IsMeant(channel, name); });
    if (meant.empty()) {
        return Parsed<std::size_t>::Error(Unknown(channels, name));
    }
    if (meant.size() > 1) {
        return Parsed<std::size_t>::Error(InQuotes(name) + " is the name of " + std::to_string(meant.size()) +
                                          " channels: write " + JoinWords(Keys(meant), "or"));
    }
    const auto found = std::ranges::find(channels, meant.front().key, &ChannelInfo::key);
    return Parsed<std::size_t>::Of(static_cast<std::size_t>(found - channels.begin()));
}

Parsed<std::size_t> FindChannelWithTarget(const std::vector<ChannelInfo>& channels, std::string_view name) {
    auto found = FindChannel(channels, name);
    if (!found || channels[*found].canSetTarget) {
        return found;
    }
    std::vector<ChannelInfo> settable;
    std::ranges::copy_if(channels, std::back_inserter(settable), &ChannelInfo::canSetTarget);
    return Parsed<std::size_t>::Error(InQuotes(name) + " is a sensor without a target: write " +
                                      JoinWords(Keys(settable), "or"));
}
