#pragma once

#include <cstdint>

namespace oko {

/// The change notice: a WM_COMMAND that says that values changed; read those that are shown.
///
/// Posted by a successful SetTargetGasConcentration and SetTargetHumidity to the message queue of the thread that
/// called it, for no window (its `hwnd` is null) and with a second parameter of 0. Temperature posts none; the
/// simulator's moving values reach no queue of the host's.
///
/// A thread message is dropped by DispatchMessage, and by the loops of message boxes and modal dialogs. Look for it in
/// the thread's own loop, before the dispatch:
///
///     if (message.hwnd == nullptr && message.message == WM_COMMAND && message.wParam == oko::kValuesChangedParameter)
inline constexpr std::uint16_t kValuesChangedCommand = 1003;  // IDC_VALUES_CHANGED, the low word of the first parameter
inline constexpr std::uint16_t kValuesChangedCode = 1;        // notification code, the high word
inline constexpr std::uint32_t kValuesChangedParameter =
    std::uint32_t{kValuesChangedCode} << 16 | kValuesChangedCommand;

}  // namespace oko
