#include "link/LinkOperation.h"

#include "core/CDevApiInterface_Impl.h"

LinkOperation LinkOperation::OverThisLink(CDevApiInterface_Impl& device) noexcept { return {device, device.m_nLink}; }

bool LinkOperation::HasLostLink() const noexcept { return m_nLink && *m_nLink != m_device.m_nLink; }
