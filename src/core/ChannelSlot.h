#pragma once

#include <atomic>

/// One place of the device's channel arrays: a pointer that a host's thread may read while another one deletes the
/// channel or Init makes a new one. The device object owns what it points to.
template <class Channel>
class ChannelSlot {
 public:
    Channel* Get() const noexcept { return m_pChannel.load(std::memory_order_acquire); }
    operator Channel*() const noexcept { return Get(); }
    Channel* operator->() const noexcept { return Get(); }

    void Set(Channel* channel) noexcept { m_pChannel.store(channel, std::memory_order_release); }

    /// Empties the slot and gives what was in it.
    Channel* Take() noexcept { return m_pChannel.exchange(nullptr, std::memory_order_acq_rel); }

 private:
    std::atomic<Channel*> m_pChannel = nullptr;
};
