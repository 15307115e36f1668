#pragma once

#include <cstdint>

namespace oko {

/// The host's function that the plug-in calls. It is given to CDevApiInterface::Init.
///
/// code  kCallbackLog or kCallbackAirModeChanged. Ignore every other code.
/// text  wide text ending in a zero; null for kCallbackAirModeChanged. It is valid only during the call: copy what is
///       kept.
///
/// It stays in use after Close, until an Init brings another one (or null) or the library is unloaded. It is called on
/// the thread that called into the plug-in, before that call returns, and never on the simulator's value thread; two
/// threads in the plug-in may be in it at once. There is no argument for the host's own use: it finds its objects
/// itself. What it may call and what it must not wait for: the thread rules of CDevApiInterface. It must not throw.
using HostCallbackFunction = void (*)(std::int32_t code, const wchar_t* text);

/// One line for the host's log, without a line end: what Init finds and does, and trouble that the server tells of.
/// With the registry value LogCommunication (REG_DWORD, 1) in HKEY_LOCAL_MACHINE\Software\Vellmark\Misc, read by Init,
/// also each command and its reply.
inline constexpr std::int32_t kCallbackLog = 1000;

/// The air mode was switched on or off: ask the gas channels' HasFeature again.
inline constexpr std::int32_t kCallbackAirModeChanged = 1001;

}  // namespace oko
