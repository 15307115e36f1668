#include "ui/ConnectionSettings.h"

#include "base/Scan.h"

namespace {

constexpr std::string_view kKey = "m_iComPort ";

}  // namespace

std::optional<std::int32_t> ParseConnectionSettings(std::wstring_view text) noexcept {
    Scanner scanner(text);
    std::int32_t port = 0;
    const bool matches = scanner.Literal(kKey) && scanner.Integer(port);
    return matches ? std::optional(port) : std::nullopt;
}

ConnectionSettingsText FormatConnectionSettings(std::int32_t port) noexcept {
    ConnectionSettingsText text;
    return text.AppendBytes(kKey).AppendBytes(FormatInteger(port).view());
}
