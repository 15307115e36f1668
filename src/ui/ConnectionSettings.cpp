#include "ui/ConnectionSettings.h"

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/Numbers.h"
#include "base/Scan.h"
#include "core/LinkOptions.h"
#include "oko/Settings.h"

namespace {

/// Takes a key and its number, or nothing.
std::optional<std::int32_t> TakeNumber(Scanner<wchar_t>& scanner, const wchar_t* key) noexcept {
    Scanner<wchar_t> ahead = scanner;
    std::int32_t number = 0;
    if (!ahead.Literal(key) || !ahead.Literal(" ") || !ahead.Integer(number)) {
        return std::nullopt;
    }
    scanner = ahead;
    return number;
}

bool TakeOption(Scanner<wchar_t>& scanner, LinkOptions& options) noexcept {
    scanner.Literal(" ");
    if (const auto milliseconds = TakeNumber(scanner, oko::kReplyTimeoutKey)) {
        if (*milliseconds >= 0) {
            options.replyTimeoutMs = static_cast<std::uint32_t>(*milliseconds);
        }
        return true;
    }
    const auto watchOnly = TakeNumber(scanner, oko::kWatchOnlyKey);
    options.watchOnly = watchOnly ? *watchOnly != 0 : options.watchOnly;
    return watchOnly.has_value();
}

}  // namespace

ConnectionSettings ParseConnectionSettings(std::wstring_view text) noexcept {
    Scanner scanner(text);
    ConnectionSettings settings;
    settings.port = TakeNumber(scanner, oko::kComPortKey);
    while (settings.port && TakeOption(scanner, settings.link)) {
    }
    return settings;
}

ConnectionSettingsText FormatConnectionSettings(std::int32_t port) noexcept {
    ConnectionSettingsText text;
    return text.Append(oko::kComPortKey).Append(L" ").AppendBytes(FormatInteger(port).view());
}
