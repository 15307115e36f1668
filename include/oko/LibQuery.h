#pragma once

#include <cstdint>

#include "oko/CDevApiInterface.h"  // IWYU pragma: export

/// The plug-in's two exports, undecorated, for LoadLibrary and GetProcAddress. These headers are C++17 and need no
/// other: no Windows header, no import library.

namespace oko {

/// Device indexes.
inline constexpr std::uint32_t kRealDevice = 0;
inline constexpr std::uint32_t kSimulatorDevice = 1;

/// Characters that hold every text of LibQueryPhysDevice and a terminator.
inline constexpr std::int32_t kDeviceTextLength = 64;

}  // namespace oko

extern "C" {

/// Exported by OkoLabBoldLine.dll. What the device at `index` (oko::kRealDevice or oko::kSimulatorDevice) is called:
/// `type` "Incubator", the three names alike. `reserved` is not used. Each buffer may be null; its size counts
/// characters. A text that fills its buffer gets no terminator; the rest of a longer buffer is filled with zeros.
/// Returns 0, or -1 for any other index, when nothing is written. Any thread; does not wait, makes no device.
std::int32_t LibQueryPhysDevice(std::uint32_t index, void* reserved, char* type, std::int32_t typeSize, char* name,
                                std::int32_t nameSize, wchar_t* wideName, std::int32_t wideNameSize, wchar_t* wideName2,
                                std::int32_t wideName2Size);

/// Exported by OkoLabBoldLine.dll. Stores the device object of `index` through `device`, which the first call makes;
/// the same one at each call. It belongs to the library and goes with it. `reserved` is not used. Returns 0, or -1 for
/// any other index, for a null `device` and when memory is short, and leaves `*device` as it was. Does not wait. Not
/// locked: call it from one thread.
std::int32_t LibQueryInterface(std::uint32_t index, void* reserved, CDevApiInterface** device);
}

namespace oko {

/// The exports' types, for hosts that look them up by name.
using LibQueryPhysDeviceFunction = decltype(&LibQueryPhysDevice);
using LibQueryInterfaceFunction = decltype(&LibQueryInterface);

}  // namespace oko
