#include "model/SystemFacts.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

bool IsServerName(std::string_view name) {
    std::string lower(name);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower.starts_with("oko-control") && lower.ends_with(".exe");
}
