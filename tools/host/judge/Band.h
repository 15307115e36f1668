#pragma once

#include "model/ChannelInfo.h"

/// The values that count as right; the limits belong to it.
struct Band {
    double low = 0.0;
    double high = 0.0;

    double Width() const { return high - low; }
    bool Holds(double value) const { return value >= low && value <= high; }
    friend bool operator==(const Band&, const Band&) = default;
};

/// The band that the device itself judges by.
inline Band BandAround(double target, const ChannelInfo& channel) {
    return {target - channel.below, target + channel.above};
}

/// Whether a band can be had from the channel's tolerances: it has a target, and some room around it.
inline bool HasTolerances(const ChannelInfo& channel) {
    return channel.canSetTarget && channel.below + channel.above > 0.0;
}
