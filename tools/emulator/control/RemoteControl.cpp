#include "control/RemoteControl.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "control/ControlSession.h"
#include "protocol/Answer.h"
#include "server/EmulatedServer.h"

namespace emulator {

RemoteControl::RemoteControl(EmulatedServer& server, std::function<double()> now, std::function<void()> quit)
    : m_server(server), m_now(std::move(now)), m_quit(std::move(quit)) {}

std::shared_ptr<ControlSession> RemoteControl::Open(std::function<void(const std::string&)> tell) {
    auto session = std::make_shared<ControlSession>(*this, std::move(tell));
    m_sessions.push_back(session);
    return session;
}

void RemoteControl::TellExchange(const std::string& command, const Transmission& transmission) {
    ++m_commands;
    for (std::size_t i = 0; i < m_sessions.size(); ++i) {
        if (const auto session = m_sessions[i].lock()) {
            session->Meet(command, transmission);
        }
    }
}

void RemoteControl::Tick() {
    std::erase_if(m_sessions, [](const auto& session) { return session.expired(); });
    for (std::size_t i = 0; i < m_sessions.size(); ++i) {
        if (const auto session = m_sessions[i].lock()) {
            session->LookAtWait();
        }
    }
}

}  // namespace emulator
