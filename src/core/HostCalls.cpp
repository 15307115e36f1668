// What the device object tells the host and the progress window.

#include <cstdint>

#include "core/CDevApiInterface_Impl.h"
#include "platform/FailFast.h"
#include "platform/Window.h"

void CDevApiInterface_Impl::CallHost(std::int32_t code, const wchar_t* text) noexcept try {
    if (const oko::HostCallbackFunction callback = HostCallback) {
        callback(code, text);
    }
} catch (...) {  // NOLINT(bugprone-empty-catch)
    // The host's own trouble: it must not unwind through our locks and slots.
}

void CDevApiInterface_Impl::Log(const wchar_t* line) noexcept { CallHost(oko::kCallbackLog, line); }

void CDevApiInterface_Impl::ReportProgress(int percent) noexcept {
    if (const oko::WindowHandle window = m_hProgressWnd) {
        m_iProgress = percent;
        SendProgress(window, percent);
    }
}

void CDevApiInterface_Impl::FatalFault(const wchar_t* reason) noexcept {
    Log(reason);
    FailFast();
}
