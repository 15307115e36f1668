#pragma once

#include <string>

#include "judge/Band.h"
#include "model/ChannelInfo.h"

/// Values in sentences for people.

/// "37.50 °C"
std::string DescribeValue(const ChannelInfo& channel, double value);

/// "4.50 to 5.50 %"
std::string DescribeBand(const ChannelInfo& channel, const Band& band);

/// "6.20 %, above 5.50 %", "4.20 %, below 4.50 %" or "5.00 %, within 4.50 to 5.50 %".
std::string DescribePlace(const ChannelInfo& channel, double value, const Band& band);
