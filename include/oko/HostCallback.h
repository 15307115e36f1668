#pragma once

#include <cstdint>

/// The host's function that the plug-in calls. It is given to CDevApiInterface::Init.
///
/// code  oko::kCallbackLog: one line for the host's log.
///       oko::kCallbackAirModeChanged: the air mode changed; ask the gas channels' HasFeature again.
/// text  wide text ending in a zero; null for oko::kCallbackAirModeChanged. It is valid only during the call: copy what
///       is kept.
///
/// Never called on the simulator's value thread. What it may call and what it must not wait for: the thread rules of
/// CDevApiInterface. It must not throw.
using HostCallback = void (*)(std::int32_t code, const wchar_t* text);

namespace oko {

inline constexpr std::int32_t kCallbackLog = 1000;
inline constexpr std::int32_t kCallbackAirModeChanged = 1001;

/// Results of every operation that gives a 32-bit result.
inline constexpr std::int32_t kSuccess = 0;
inline constexpr std::int32_t kFailure = -1;

}  // namespace oko
