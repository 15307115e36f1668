#include "platform/ThreadMessages.h"

#include <windows.h>

#include <cstddef>

#include "oko/ChangeNotice.h"

std::size_t TakeThreadMessages() {
    std::size_t notices = 0;
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        const bool isNotice =
            message.hwnd == nullptr && message.message == WM_COMMAND && message.wParam == oko::kValuesChangedParameter;
        notices += isNotice ? 1U : 0U;
        DispatchMessageW(&message);
    }
    return notices;
}
