#pragma once

#include <cstdint>

/// The host's function that the plug-in calls. It is given to CDevApiInterface::Init.
///
/// code  oko::kCallbackLog: one line for the host's log.
///       oko::kCallbackAirModeChanged: the air mode changed; ask the gas channels' HasFeature again.
/// text  wide text ending in a zero; null for oko::kCallbackAirModeChanged. It is valid only during the call: copy what
///       is kept.
///
/// Called on the thread that called into the plug-in, never on the simulator's value thread, and without the
/// socket lock. It may call back into a channel. It must not throw.
using HostCallback = void (*)(std::int32_t code, const wchar_t* text);

namespace oko {

inline constexpr std::int32_t kCallbackLog = 1000;
inline constexpr std::int32_t kCallbackAirModeChanged = 1001;

/// Results of every operation that gives a 32-bit result.
inline constexpr std::int32_t kSuccess = 0;
inline constexpr std::int32_t kFailure = -1;

}  // namespace oko
