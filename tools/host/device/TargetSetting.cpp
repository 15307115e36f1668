#include "device/TargetSetting.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>

namespace {

constexpr std::array<std::string_view, 3> kKinds{"temperature", "gas", "humidity"};

}  // namespace

std::optional<TargetSetting> ParseTargetSetting(std::string_view text) {
    TargetSetting setting{};
    for (const std::string_view kind : kKinds) {
        if (text.starts_with(kind) && text.substr(kind.size()).starts_with(':')) {
            setting.kind = kind;
            text.remove_prefix(kind.size() + 1);
            break;
        }
    }
    const std::size_t equals = text.rfind('=');
    if (equals == std::string_view::npos || equals == 0) {
        return std::nullopt;
    }
    setting.name = text.substr(0, equals);
    const std::string_view number = text.substr(equals + 1);
    const auto result = std::from_chars(number.data(), number.data() + number.size(), setting.value);
    if (result.ec != std::errc{} || result.ptr != number.data() + number.size() || !std::isfinite(setting.value)) {
        return std::nullopt;
    }
    return setting;
}
