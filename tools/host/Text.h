#pragma once

#include <string>
#include <string_view>

/// Wide text as UTF-8. A character that UTF-16 cannot hold alone becomes "?".
std::string ToUtf8(std::wstring_view text);
