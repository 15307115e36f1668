#pragma once

#include <string>
#include <string_view>

#include "text/Parsed.h"

/// A target that the user wants: "H301-T=38.5", or "gas:CO2=7" where a name stands in several kinds.
struct TargetSetting {
    std::string channel;  // as FindChannel takes it
    double value = 0.0;
};

/// An error says what to write instead. The number may not have a decimal comma.
Parsed<TargetSetting> ParseTargetSetting(std::string_view text);
