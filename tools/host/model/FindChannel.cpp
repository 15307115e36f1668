#include "model/FindChannel.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "model/ChannelInfo.h"
#include "text/Parsed.h"

namespace {

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

/// "channels are: H301-T, Base, CO2"
template <class Predicate>
std::string KeysWhere(const std::vector<ChannelInfo>& channels, Predicate predicate) {
    std::string keys;
    for (const ChannelInfo& channel : channels) {
        if (predicate(channel)) {
            keys += (keys.empty() ? "" : ", ") + channel.key;
        }
    }
    return keys;
}

}  // namespace

Parsed<std::size_t> FindChannel(const std::vector<ChannelInfo>& channels, std::string_view text) {
    const auto indexOf = [&](auto found) { return static_cast<std::size_t>(found - channels.begin()); };
    if (const auto found = std::ranges::find(channels, text, &ChannelInfo::key); found != channels.end()) {
        return Parsed<std::size_t>::Of(indexOf(found));
    }
    const auto matches = [&](const ChannelInfo& channel) {
        return text == channel.name || text == std::string(KindName(channel.kind)) + ":" + channel.name;
    };
    const auto found = std::ranges::find_if(channels, matches);
    if (found == channels.end()) {
        return Parsed<std::size_t>::Error("no channel is called " + Quoted(text) + "; the channels are: " +
                                          KeysWhere(channels, [](const ChannelInfo&) { return true; }));
    }
    const auto other = std::find_if(found, channels.end(), [&](const ChannelInfo& channel) {
        return matches(channel) && channel.kind != found->kind;
    });
    if (other != channels.end()) {
        const std::string first = KindName(found->kind);
        const std::string second = KindName(other->kind);
        return Parsed<std::size_t>::Error(Quoted(text) + " is the name of a " + first + " and of a " + second +
                                          " channel: write " + first + ":" + found->name + " or " + second + ":" +
                                          other->name);
    }
    return Parsed<std::size_t>::Of(indexOf(found));
}

Parsed<std::size_t> FindChannelWithTarget(const std::vector<ChannelInfo>& channels, std::string_view text) {
    auto found = FindChannel(channels, text);
    if (found && !channels[*found].canSetTarget) {
        return Parsed<std::size_t>::Error(
            Quoted(text) + " is a sensor without a target; targets have: " +
            KeysWhere(channels, [](const ChannelInfo& channel) { return channel.canSetTarget; }));
    }
    return found;
}
