// Slot 1: stops what Init started. The object stays and may be initialised again.

#include <cstddef>

#include "catalogue/Catalogue.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"

void CDevApiInterface_Impl::Close() noexcept {
    // The link is Close's from here on: an Init or a search on another thread sends nothing more over it, and a link
    // that is opened from now on is not Close's to close.
    const LinkOperation operation(*this, ++m_nLink);
    m_bServerErrorShown = false;
    if (m_bSimulator) {
        StopValueThread();
    }
    // kept: docs/oddities.md#close-keeps-state
    Tell(operation, FormatCommand(command::kStart, {0}));
    for (std::size_t i = 0; const auto product = ProductAt(*this, i); ++i) {
        Tell(operation, FormatCommand(command::kDisconnect, {*product}));
    }
    DisconnectSocket(operation.Link());
    m_bSetupComplete = false;
}
