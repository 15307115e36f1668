#pragma once

#include <optional>
#include <string>
#include <string_view>

/// A target that the user wants: "H301-T=38.5", or "gas:CO2=7" where a name stands in several kinds.
struct TargetSetting {
    std::string kind;  // empty: any
    std::string name;
    double value;
};

/// Nothing when the text is not of that form or its number is not finite.
std::optional<TargetSetting> ParseTargetSetting(std::string_view text);
