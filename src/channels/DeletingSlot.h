#pragma once

#include <memory>

/// The deleting destructor of a channel, as the Microsoft object layout calls it: bit 0 of `flags` asks to free the
/// memory too.
template <class Channel>
void* DestroyChannel(Channel* channel, unsigned flags) noexcept {
    constexpr unsigned kFreeMemory = 1;
    if ((flags & kFreeMemory) != 0) {
        const std::unique_ptr<Channel> reclaimed(channel);
    } else {
        std::destroy_at(channel);
    }
    return channel;  // the contract's: no more than an address now. NOLINT(clang-analyzer-cplusplus.NewDelete)
}
