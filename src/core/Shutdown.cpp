// Slot 1: stops what Init started. The object stays and may be initialised again.

#include <cstddef>

#include "catalogue/Catalogue.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"

void CDevApiInterface_Impl::Close() noexcept {
    m_bServerErrorShown = false;
    if (m_bSimulator) {
        StopValueThread();
    }
    // kept: docs/oddities.md#close-keeps-state
    Tell(*this, FormatCommand(command::kStart, {0}));
    for (std::size_t i = 0; const auto product = ProductAt(*this, i); ++i) {
        Tell(*this, FormatCommand(command::kDisconnect, {*product}));
    }
    DisconnectSocket();
    m_bSetupComplete = false;
}
