#pragma once

#include <atomic>
#include <cstdint>

#include "link/Products.h"

/// Fields that the value thread shares with the host's threads without a lock: accessed relaxed, torn reads excluded.
using SharedDouble = std::atomic<double>;
using SharedInt = std::atomic<std::int32_t>;

/// What a channel stands for. One value, so that no command pairs a product with the sensor of another one while Init
/// assigns the channels anew.
using SharedAddress = std::atomic<ChannelAddress>;
static_assert(SharedAddress::is_always_lock_free);

inline double Get(const SharedDouble& field) noexcept { return field.load(std::memory_order_relaxed); }
inline std::int32_t Get(const SharedInt& field) noexcept { return field.load(std::memory_order_relaxed); }
inline ChannelAddress Get(const SharedAddress& field) noexcept { return field.load(std::memory_order_relaxed); }
inline void Put(SharedDouble& field, double value) noexcept { field.store(value, std::memory_order_relaxed); }
inline void Put(SharedInt& field, std::int32_t value) noexcept { field.store(value, std::memory_order_relaxed); }
inline void Put(SharedAddress& field, ChannelAddress value) noexcept { field.store(value, std::memory_order_relaxed); }
