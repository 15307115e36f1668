#include "channels/ChannelNames.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "oko/Result.h"

std::wstring_view FindChannelName(std::span<const ProductNames> names, std::int32_t product,
                                  std::int32_t channel) noexcept {
    const auto row = std::ranges::find(names, product, &ProductNames::product);
    if (row == names.end()) {
        return {};
    }
    const auto named = std::ranges::find(row->channels, channel, &ChannelName::channel);
    return named != row->channels.end() ? named->name : std::wstring_view{};
}

// kept: docs/oddities.md#text-without-terminator
std::int32_t CopyChannelName(std::wstring_view name, wchar_t* buffer, std::int32_t length) noexcept {
    if (buffer == nullptr) {
        return oko::kFailure;
    }
    if (length > 0) {
        std::ranges::copy(name.substr(0, static_cast<std::size_t>(length)), buffer);
    }
    return oko::kSuccess;
}
