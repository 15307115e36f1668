#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What a request asks for: "/api/channels/gas%3ACO2/target?a=b" in its parts, decoded.
struct Target {
    std::vector<std::string> path;  // "api", "channels", "gas:CO2", "target"; one empty part for "/"
    std::vector<std::pair<std::string, std::string>> query;

    /// The first of that name.
    std::optional<std::string> Query(std::string_view name) const;
};

/// Nothing for what does not begin with a slash, for "%" without two digits behind it, and for control characters,
/// decoded or not.
std::optional<Target> ParseTarget(std::string_view text);

/// `text` with "%41" as "A"; nothing when it is badly encoded.
std::optional<std::string> PercentDecode(std::string_view text);

/// A whole number, all of the text; nothing for any other.
std::optional<std::int64_t> ParseWhole(std::string_view text);
