#pragma once

#include "core/CommandText.h"
#include "link/Commands.h"  // IWYU pragma: export
#include "link/Reply.h"     // IWYU pragma: export

class CDevApiInterface_Impl;

/// Sends a command and gives its reply, with room for `capacity` bytes. A command that was cut is not sent and gives no
/// answer. Blocks until the server answers.
Reply Ask(CDevApiInterface_Impl& device, const CommandText& command, int capacity = kReplySize) noexcept;

/// Sends a command whose reply nobody looks at.
void Tell(CDevApiInterface_Impl& device, const CommandText& command) noexcept;
