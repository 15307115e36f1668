#pragma once

#include <cstdint>

#include "oko/Result.h"  // IWYU pragma: export

namespace oko {

/// Wide characters that hold the longest channel name and a terminator.
inline constexpr std::int32_t kChannelNameLength = 32;

}  // namespace oko

/// What every channel offers first: slots 0 to 2 of its table of operations.
///
/// The order of the virtual functions here and in the derived interfaces is the binary contract: the Microsoft C++
/// object layout of x64, one slot a function, whatever compiler built the library and the host. A channel belongs to
/// its device object, and its address is good until the library is unloaded; which product and sensor it stands for is
/// decided by each Init. All three slots answer from memory; the thread rules are CDevApiInterface's.
class INotify {
 public:
    /// Slot 0. Switches a channel on (1) or off (0). Only humidity channels keep the flag, and only the configuration
    /// dialog heeds it: values are read and set all the same. Returns 0.
    virtual std::int32_t SetEnabled(std::uint8_t flag) = 0;

    /// Slot 1. Copies the channel's display name into `buffer`, at most `length` wide characters and only the name's
    /// own: NO terminator is added, so hand in a buffer of zeros (one more than `length`; oko::kChannelNameLength is
    /// enough for every name and a terminator). A channel without a name copies nothing and returns 0. The name is
    /// known after Init. Returns -1 for a null buffer.
    virtual std::int32_t GetName(wchar_t* buffer, std::int32_t length) = 0;

    /// Slot 2. Does nothing. Returns 0.
    virtual std::int32_t NoOperation() = 0;

 protected:
    ~INotify() = default;
};
