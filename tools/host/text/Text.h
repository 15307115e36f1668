#pragma once

#include <string>
#include <string_view>

/// Wide text as UTF-8. Half of a surrogate pair becomes "?".
std::string ToUtf8(std::wstring_view text);
