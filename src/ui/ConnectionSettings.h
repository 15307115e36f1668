#pragma once

#include <cstdint>
#include <string_view>

#include "base/Text.h"
#include "oko/CDevApiInterface.h"

using ConnectionSettingsText = BoundedText<wchar_t, oko::kConnectionTextLength>;

/// Reads "m_iComPort 3". `port` stays as it was when the text does not match.
void ParseConnectionSettings(std::wstring_view text, std::int32_t& port) noexcept;

/// Writes the same.
ConnectionSettingsText FormatConnectionSettings(std::int32_t port) noexcept;
