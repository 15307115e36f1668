#include "ui/ConnectionSettings.h"

#include <array>

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
    std::array<char, 16> number;
    const int length = FormatInteger(number, port);
    ConnectionSettingsText text;
    return text.AppendBytes(kKey).AppendBytes({number.data(), static_cast<std::size_t>(length)});
}
