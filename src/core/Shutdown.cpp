// Slot 1: stops what Init started. The object stays and may be initialised again.

#include "catalogue/ProductRecord.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"

void CDevApiInterface_Impl::Close() noexcept {
    m_bServerErrorShown = false;
    if (m_bSimulator) {
        StopValueThread();
    }
    Tell(*this, FormatCommand(command::kStart, {0}));
    for (const ProductRecord& record : m_products) {
        Tell(*this, FormatCommand(command::kDisconnect, {record.m_iProduct}));
    }
    DisconnectSocket();
    m_bSetupComplete = false;
}
