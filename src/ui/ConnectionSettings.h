#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/Text.h"
#include "core/LinkOptions.h"
#include "oko/Settings.h"

using ConnectionSettingsText = BoundedText<wchar_t, oko::kConnectionTextLength>;

/// What a connection settings text says.
struct ConnectionSettings {
    std::optional<std::int32_t> port;  // none when the text does not match
    LinkOptions link;
};

/// Reads "m_iComPort 3" and the options behind it, in any order, up to the first thing that is neither.
ConnectionSettings ParseConnectionSettings(std::wstring_view text) noexcept;

/// Writes "m_iComPort 3": the options are the host's, and no dialog changes them.
ConnectionSettingsText FormatConnectionSettings(std::int32_t port) noexcept;
