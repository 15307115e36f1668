#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "protocol/Answer.h"

namespace emulator {

/// The port cannot be had; the text is for the user.
class PortError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// What is sent for a command.
using CommandHandler = std::function<Transmission(const std::string& command)>;

/// Answers datagrams on a port of the loopback address until `stop` gives true; it is asked several times a second. A
/// placeholder on the port is asked to make room. Calls `onReady` when it has the port. Throws PortError when somebody
/// else has it.
void Serve(int port, const CommandHandler& handler, const std::function<void()>& onReady,
           const std::function<bool()>& stop);

/// Holds a port until the real emulator starts: answers every command with an empty datagram, which says "no answer".
/// Where a system does not report that nobody listens (Wine does not), a client would else wait for ever. Calls
/// `onReady` when it has the port. Throws PortError.
void HoldPort(int port, const std::function<void()>& onReady, const std::function<bool()>& stop);

}  // namespace emulator
