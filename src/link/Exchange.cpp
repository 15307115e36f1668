#include "link/Exchange.h"

#include <cstddef>

#include "core/CDevApiInterface_Impl.h"
#include "core/CommandText.h"
#include "platform/UdpSocket.h"

Reply Ask(const LinkOperation& operation, const CommandText& command, int capacity) noexcept {
    Reply reply(capacity);
    if (command.IsCut() || operation.HasEnded()) {
        reply.m_nLength = -1;
        return reply;
    }
    const Received received = operation.Device().SendOverLink(
        command.view(), {reply.data(), static_cast<std::size_t>(reply.capacity())}, operation.Link());
    operation.Note(received.outcome);
    reply.m_nLength = received.length;
    return reply;
}

void Tell(const LinkOperation& operation, const CommandText& command) noexcept { Ask(operation, command); }
