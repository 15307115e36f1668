// Slots 3, 4 and 6. This build of the library carries no dialog templates: a host gets the answers of a dialog that
// could not be opened.

#include "core/CDevApiInterface_Impl.h"

oko::WindowHandle CDevApiInterface_Impl::CreateValuePanel(oko::WindowHandle, oko::DialogProcedure*) noexcept {
    return nullptr;
}

std::int32_t CDevApiInterface_Impl::ShowConfiguration(wchar_t*, std::int32_t, oko::WindowHandle) noexcept {
    return oko::kFailure;
}

std::int32_t CDevApiInterface_Impl::ShowConnection(wchar_t*, std::int32_t, oko::WindowHandle) noexcept {
    // The simulator has no port to choose.
    return m_bSimulator ? oko::kSuccess : oko::kFailure;
}
