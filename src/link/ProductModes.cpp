#include "link/ProductModes.h"

#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"

void SendModes(const LinkOperation& operation) noexcept {
    const CDevApiInterface_Impl& device = operation.Device();
    const int mode = device.m_bSimulator ? 1 : 0;
    for (int product = device.m_iFirstProduct; product <= device.m_iLastProduct; ++product) {
        Tell(operation, FormatCommand(command::kMode, {product, mode}));
    }
}
