#pragma once

#include <span>
#include <string_view>

#include "base/Text.h"
#include "link/Reply.h"
#include "platform/UdpSocket.h"

class CDevApiInterface_Impl;

/// What an exchange has to tell the communication log beside the reply.
struct ExchangeNotes {
    int dropped = 0;  // replies to earlier commands
    BoundedText<char, kReplySize + 1> lastDropped;
    bool foundLooseEchoes = false;  // this exchange found that the server does not echo to the letter

    void NoteDropped(std::string_view reply) noexcept;
};

/// What an exchange without a reply reports as its length.
inline constexpr int kNoAnswer = -1;

/// Sends `command` over the device's link and receives its reply into `reply`; a send that was cut short is repeated.
/// Replies to earlier commands are dropped. A link that is not open gives Failed. Blocks until a reply comes, or for
/// m_nReplyTimeoutMs and then gives TimedOut; the socket stays open, so that the late reply does not meet a closed
/// port. Under the socket lock.
Received SendAndReceive(CDevApiInterface_Impl& device, std::string_view command, std::span<char> reply,
                        ExchangeNotes& notes) noexcept;
