#include "judge/Describe.h"

#include <string>

#include "judge/Band.h"
#include "model/ChannelInfo.h"
#include "text/Number.h"

namespace {

constexpr int kDecimals = 2;
constexpr int kMostDecimals = 6;

std::string WithUnit(const ChannelInfo& channel, double value, int decimals) {
    return FormatFixed(value, decimals) + " " + UnitOf(channel.kind);
}

/// Two, or more where these would not tell the one from the other.
int DecimalsThatTell(double value, double beside) {
    int decimals = kDecimals;
    while (decimals < kMostDecimals && value != beside &&
           FormatFixed(value, decimals) == FormatFixed(beside, decimals)) {
        ++decimals;
    }
    return decimals;
}

}  // namespace

std::string DescribeValue(const ChannelInfo& channel, double value) { return WithUnit(channel, value, kDecimals); }

std::string DescribeBand(const ChannelInfo& channel, const Band& band) {
    return FormatFixed(band.low, kDecimals) + " to " + DescribeValue(channel, band.high);
}

std::string DescribePlace(const ChannelInfo& channel, double value, const Band& band) {
    if (band.Holds(value)) {
        return DescribeValue(channel, value) + ", within " + DescribeBand(channel, band);
    }
    const bool above = value > band.high;
    const double limit = above ? band.high : band.low;
    const int decimals = DecimalsThatTell(value, limit);
    return WithUnit(channel, value, decimals) + (above ? ", above " : ", below ") + WithUnit(channel, limit, decimals);
}
