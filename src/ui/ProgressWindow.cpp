#include "ui/ProgressWindow.h"

#include "core/CDevApiInterface_Impl.h"
#include "platform/Window.h"

// kept: docs/oddities.md#dead-progress-window
void CloseProgressWindow(CDevApiInterface_Impl& device) noexcept {
    // Once only: the system gives the handle of a window that is gone to another one.
    if (device.m_bProgressUp.exchange(false)) {
        DestroyWindowHandle(device.m_hProgressWnd);
    }
}
