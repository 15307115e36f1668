#include "device/Targets.h"

#include <algorithm>
#include <string>
#include <vector>

#include "device/Channels.h"
#include "device/TargetSetting.h"

std::string SetTarget(const std::vector<Channel>& channels, const TargetSetting& setting) {
    const auto matches = [&](const Channel& channel) {
        return channel.name == setting.name && (setting.kind.empty() || setting.kind == KindName(channel.kind));
    };
    const auto found = std::ranges::find_if(channels, matches);
    if (found == channels.end()) {
        return "no " + setting.kind + (setting.kind.empty() ? "" : " ") + "channel is called \"" + setting.name + "\"";
    }
    const auto other = std::find_if(
        found, channels.end(), [&](const Channel& channel) { return matches(channel) && channel.kind != found->kind; });
    if (other != channels.end()) {
        return "\"" + setting.name + "\" is the name of a " + KindName(found->kind) + " and of a " +
               KindName(other->kind) + " channel: write " + KindName(found->kind) + ":" + setting.name + " or " +
               KindName(other->kind) + ":" + setting.name;
    }
    if (!found->setTarget(setting.value)) {
        return "the target of \"" + setting.name + "\" could not be set";
    }
    return {};
}
