#pragma once

#include "core/CommandText.h"
#include "link/Commands.h"       // IWYU pragma: export
#include "link/LinkOperation.h"  // IWYU pragma: export
#include "link/Reply.h"          // IWYU pragma: export

/// Sends a command and gives its reply, with room for `capacity` bytes. `operation`: the operation that the exchange is
/// a part of, or just the device. A command that was cut, and one of an operation that has ended, is not sent and gives
/// no answer. Blocks until the server answers.
Reply Ask(const LinkOperation& operation, const CommandText& command, int capacity = kReplySize) noexcept;

/// Sends a command whose reply nobody looks at.
void Tell(const LinkOperation& operation, const CommandText& command) noexcept;
