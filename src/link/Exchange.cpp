#include "link/Exchange.h"

#include "core/CDevApiInterface_Impl.h"
#include "core/CommandText.h"

Reply Ask(CDevApiInterface_Impl& device, const CommandText& command, int capacity) noexcept {
    Reply reply(capacity);
    if (command.IsCut()) {
        reply.m_nLength = -1;
        return reply;
    }
    device.CommandSend(command.c_str(), static_cast<int>(command.length()), reply.data(), reply.capacity(),
                       &reply.m_nLength);
    return reply;
}

void Tell(CDevApiInterface_Impl& device, const CommandText& command) noexcept { Ask(device, command); }
