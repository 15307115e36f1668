#include "ui/ConnectionSettings.h"

#include <array>

#include "base/Scan.h"

namespace {

constexpr std::string_view kKey = "m_iComPort ";

}  // namespace

void ParseConnectionSettings(std::wstring_view text, std::int32_t& port) noexcept {
    Scanner scanner(text);
    if (scanner.Literal(kKey)) {
        scanner.Integer(port);
    }
}

ConnectionSettingsText FormatConnectionSettings(std::int32_t port) noexcept {
    std::array<char, 16> number;
    const int length = FormatInteger(number, port);
    ConnectionSettingsText text;
    return text.AppendBytes(kKey).AppendBytes({number.data(), static_cast<std::size_t>(length)});
}
