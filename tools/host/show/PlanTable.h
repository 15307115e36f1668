#pragma once

#include <string>
#include <vector>

#include "judge/ProtocolPlan.h"
#include "model/ChannelInfo.h"

/// What a protocol would do, for a dry run: a heading and a table with a line a step.
std::vector<std::string> FormatPlan(const ProtocolPlan& plan, const std::vector<ChannelInfo>& channels);

/// The same for programs, as one line of JSON.
std::string PlanJson(const ProtocolPlan& plan, const std::vector<ChannelInfo>& channels);
