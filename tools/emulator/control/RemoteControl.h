#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "protocol/Answer.h"
#include "server/EmulatedServer.h"

namespace emulator {

class ControlSession;

/// What remote control acts on, and all who control. One thread.
class RemoteControl {
 public:
    /// `now` gives the real seconds since the start; `quit` ends the run.
    RemoteControl(EmulatedServer& server, std::function<double()> now, std::function<void()> quit);

    /// Somebody who controls. `tell` gets what is said to him: a line of JSON each, without its end.
    std::shared_ptr<ControlSession> Open(std::function<void(const std::string& line)> tell);

    /// A command came and is answered so.
    void TellExchange(const std::string& command, const Transmission& transmission);

    /// Time passed: whoever waits may wait no longer. To be called some tens of times a second.
    void Tick();

 private:
    friend class ControlSession;

    EmulatedServer& m_server;
    std::function<double()> m_now;
    std::function<void()> m_quit;
    std::int64_t m_commands = 0;
    std::vector<std::weak_ptr<ControlSession>> m_sessions;
};

}  // namespace emulator
