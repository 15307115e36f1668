#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

#include "link/Commands.h"

class CDevApiInterface_Impl;

/// The two roads that every channel takes to the server: reading a value and writing a set point. What differs between
/// the channels is data.

/// A field that the value thread shares with the host's threads without a lock: accessed relaxed, torn reads excluded.
using SharedDouble = std::atomic<double>;
using SharedInt = std::atomic<std::int32_t>;

inline double Get(const SharedDouble& field) noexcept { return field.load(std::memory_order_relaxed); }
inline std::int32_t Get(const SharedInt& field) noexcept { return field.load(std::memory_order_relaxed); }
inline void Put(SharedDouble& field, double value) noexcept { field.store(value, std::memory_order_relaxed); }
inline void Put(SharedInt& field, std::int32_t value) noexcept { field.store(value, std::memory_order_relaxed); }

/// Which sensor of which product a channel stands for. One value, so that no command pairs a product with the sensor of
/// another one while Init assigns the channels anew.
struct ChannelAddress {
    std::int32_t m_iProduct = 0;  // 7 to 17; 0 until Init assigns it
    std::int32_t m_iChannel = 0;  // sensor in the product, or the parameter number of a sensor read as one
    bool operator==(const ChannelAddress&) const = default;
};
using SharedAddress = std::atomic<ChannelAddress>;
static_assert(SharedAddress::is_always_lock_free);

inline ChannelAddress Get(const SharedAddress& field) noexcept { return field.load(std::memory_order_relaxed); }
inline void Put(SharedAddress& field, ChannelAddress value) noexcept { field.store(value, std::memory_order_relaxed); }

/// Where a set point goes and what it may be; read together because Init changes them together.
struct SetPointPlace {
    ChannelAddress address;
    double min;
    double max;
};

template <class Channel>
SetPointPlace PlaceOf(const Channel& channel) noexcept {
    const std::scoped_lock lock(channel.m_pDevice->m_csCatalogue);
    return {Get(channel.m_address), channel.m_dMin, channel.m_dMax};
}

/// A command that names a channel by its product and its number in it.
CommandText FormatFor(std::string_view format, ChannelAddress address) noexcept;

/// Which log lines a road sends.
enum class LogGate {
    Always,
    WhenChannelLogs,          // only when the channel's m_bLogCommunication is set
    ServerProblemWhenLogging  // result code 1 only then, everything else always
};

/// How a read operation differs from the others.
struct ReadRules {
    std::wstring_view method;      // full name, the start of its log lines
    std::string_view errorMarks;   // payloads that begin with one of these are logged and fail
    std::string_view silentMarks;  // payloads that begin with one of these fail without a line
    bool answersWhileBusy;         // from the last known value, without asking the server
    LogGate gate;
};

/// Sends `command` and reads the value of its reply into `value` and `cache`. A reply without a value leaves both as
/// they were and succeeds. `bChannelLogs`: the channel's own log flag. Returns the host's result, -1 when `value` is
/// null. Any thread; blocks until the server answers; allocates nothing.
std::int32_t AskChannelValue(CDevApiInterface_Impl& device, const ReadRules& rules, bool bChannelLogs,
                             const CommandText& command, SharedDouble& cache, double* value) noexcept;

/// The same, but answers from `cache` while the device is busy, where the rules say so.
std::int32_t ReadChannelValue(CDevApiInterface_Impl& device, const ReadRules& rules, bool bChannelLogs,
                              const CommandText& command, SharedDouble& cache, double* value) noexcept;

/// How a write operation differs from the others.
struct WriteRules {
    std::wstring_view method;
    std::string_view format;
    LogGate gate;
};

/// Sends a set point and judges the reply. Returns the host's result. Any thread; blocks until the server answers;
/// allocates nothing.
std::int32_t WriteSetPoint(CDevApiInterface_Impl& device, const WriteRules& rules, bool bChannelLogs,
                           ChannelAddress address, double value) noexcept;

/// The part of SetTarget... that gas and humidity share: 0 to 99.99, then the channel's own range. A number that is
/// none becomes the lowest target.
double ClampPercentTarget(double value, double min, double max) noexcept;

/// Whether the current value lies in the band around the target.
bool IsWithinBand(double current, double target, double below, double above) noexcept;

/// The state slot of gas and humidity: oko::kWithinBand or oko::kOutsideBand, kept in `kept`. Takes no lock.
std::int32_t JudgePercentState(double current, double target, double below, double above, SharedInt& kept,
                               std::uint32_t* state) noexcept;

/// The end of SetTarget... that gas and humidity share: stores the target under the data lock and posts the change
/// notice.
void StoreTarget(CDevApiInterface_Impl& device, SharedDouble& target, double value) noexcept;

/// The tolerance slots of all three channel classes, under the data lock.
std::int32_t StoreTolerance(CDevApiInterface_Impl& device, double below, double above, SharedDouble& toleranceBelow,
                            SharedDouble& toleranceAbove) noexcept;
std::int32_t LoadTolerance(CDevApiInterface_Impl& device, const SharedDouble& toleranceBelow,
                           const SharedDouble& toleranceAbove, double* below, double* above) noexcept;

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
    return channel;
}
