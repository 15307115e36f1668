// Slots 6, 7 and 3: the connection dialog with what its two buttons do, its settings text, and the value panel.

#include <algorithm>
#include <cstdint>

#include "core/CDevApiInterface_Impl.h"
#include "core/Flags.h"
#include "link/LinkOperation.h"
#include "platform/WaitCursor.h"
#include "ui/ConnectionDialog.h"
#include "ui/ConnectionSettings.h"
#include "ui/DialogEnd.h"
#include "ui/FindAndConnect.h"
#include "ui/ValuePanel.h"

namespace {

// kept: docs/oddities.md#settings-without-bound
void WriteConnectionText(CDevApiInterface_Impl& device) noexcept {
    const ConnectionSettingsText text = FormatConnectionSettings(device.m_iComPort);
    std::copy_n(text.c_str(), text.length() + 1, device.m_pszConnectionText);
    device.m_nConnectionTextLen = static_cast<std::int32_t>(text.length());
}

}  // namespace

std::int32_t CDevApiInterface_Impl::ShowConnection(wchar_t* text, std::int32_t length,
                                                   oko::WindowHandle parent) noexcept try {
    if (m_bSimulator) {
        return oko::kSuccess;  // it has no port to choose
    }
    if (text == nullptr || m_bSettingUp) {
        return oko::kFailure;  // called from the callback of an Init or a search, or on another thread meanwhile
    }
    m_pszConnectionText = text;
    m_nConnectionTextLen = length;
    if (length > 0) {
        m_iComPort = ParseConnectionSettings(text).port.value_or(m_iComPort);
    }

    switch (RunConnectionDialog(*this, parent)) {
        case DialogEnd::Ok:
            WriteConnectionText(*this);
            return oko::kSuccess;
        case DialogEnd::FindAndConnect: {
            if (m_bWatchOnly) {
                return oko::kFailure;  // a search sets every product's port anew
            }
            const FlagTurn turn(m_bSettingUp);
            if (!turn) {
                return oko::kFailure;
            }
            const WaitCursor wait;
            const FlagWhile busy(m_bBusy);  // the channels keep off the link that the search has to itself
            const LinkOperation operation(*this, ConnectSocket());
            FindAndConnect(operation, parent);
            if (operation.HasEnded()) {
                return oko::kFailure;  // what is open now is somebody else's
            }
            DisconnectSocket(operation.Link());
            // kept: docs/oddities.md#text-after-a-failed-search
            WriteConnectionText(*this);
            return oko::kSuccess;
        }
        case DialogEnd::CloseBox:
            return oko::kFailure;
        // kept: docs/oddities.md#other-ends-succeed
        default:
            return oko::kSuccess;
    }
} catch (...) {
    return oko::kFailure;
}

std::int32_t CDevApiInterface_Impl::ApplyConnection(const wchar_t* text) noexcept {
    ReportProgress(5);
    const ConnectionSettings settings = ParseConnectionSettings(text != nullptr ? text : L"");
    m_iComPort = settings.port.value_or(m_iComPort);
    // kept: docs/oddities.md#simulator-opens-a-link
    ConnectSocket(settings.link);
    return oko::kSuccess;
}

oko::WindowHandle CDevApiInterface_Impl::CreateValuePanel(oko::WindowHandle parent,
                                                          oko::DialogProcedure* procedure) noexcept {
    const oko::WindowHandle panel = OpenValuePanel(*this, parent);
    if (procedure != nullptr) {
        *procedure = ValuePanelProcedure();
    }
    return panel;
}
