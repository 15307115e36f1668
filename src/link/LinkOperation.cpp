#include "link/LinkOperation.h"

#include "core/CDevApiInterface_Impl.h"

LinkOperation LinkOperation::OverThisLink(CDevApiInterface_Impl& device, OnTimeout onTimeout) noexcept {
    return {device, device.m_nLink, onTimeout};
}

bool LinkOperation::HasLostLink() const noexcept { return m_nLink && *m_nLink != m_device.m_nLink; }
