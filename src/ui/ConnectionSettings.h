#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/Text.h"
#include "oko/Settings.h"

using ConnectionSettingsText = BoundedText<wchar_t, oko::kConnectionTextLength>;

/// Reads the port from "m_iComPort 3"; nothing when the text does not match.
std::optional<std::int32_t> ParseConnectionSettings(std::wstring_view text) noexcept;

/// Writes the same.
ConnectionSettingsText FormatConnectionSettings(std::int32_t port) noexcept;
