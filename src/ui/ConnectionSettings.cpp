#include "ui/ConnectionSettings.h"

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/Numbers.h"
#include "base/Scan.h"
#include "oko/Settings.h"

std::optional<std::int32_t> ParseConnectionSettings(std::wstring_view text) noexcept {
    Scanner scanner(text);
    std::int32_t port = 0;
    const bool matches = scanner.Literal(oko::kComPortKey) && scanner.Literal(" ") && scanner.Integer(port);
    return matches ? std::optional(port) : std::nullopt;
}

ConnectionSettingsText FormatConnectionSettings(std::int32_t port) noexcept {
    ConnectionSettingsText text;
    return text.Append(oko::kComPortKey).Append(L" ").AppendBytes(FormatInteger(port).view());
}
