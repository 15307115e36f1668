#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

#include "control/RemoteControl.h"
#include "control/Wait.h"
#include "protocol/Answer.h"

namespace emulator {

/// One who controls: takes requests, a line each, and answers each with a line of JSON, in their order: {"ok": true,
/// ...}, or {"ok": false, "error": "..."}, with the request's "id" where it had one. While he waits for something, his
/// next requests wait, too. One thread; must not outlive `control`.
class ControlSession {
 public:
    using Tell = std::function<void(const std::string& line)>;

    static constexpr std::size_t kMostWaiting = 1000;

    ControlSession(RemoteControl& control, Tell tell) : m_control(control), m_tell(std::move(tell)) {}

    /// Of requests that have to wait no more than kMostWaiting are kept; the next ones are refused at once.
    void Take(const std::string& line);

    /// Nobody listens any more.
    void Leave();

 private:
    friend class RemoteControl;

    /// What is waited for, and by which request.
    struct Waiting {
        Wait wait;
        nlohmann::json id;
        double since;
        double within;  // real seconds
    };

    void TakeNext();
    void Do(const std::string& line);
    nlohmann::json Carry(const nlohmann::json& request);
    nlohmann::json CarryChange(const nlohmann::json& request, double now);
    nlohmann::json CarryTime(const nlohmann::json& request, double now);
    void BeginWait(const nlohmann::json& request, double now);
    void Reply(nlohmann::json reply, const nlohmann::json& id);
    void Meet(const std::string& command, const Transmission& transmission);
    void LookAtWait();

    RemoteControl& m_control;
    Tell m_tell;
    std::deque<std::string> m_lines;  // that are still to be taken
    std::optional<Waiting> m_waiting;
    bool m_watching = false;
    bool m_busy = false;
};

}  // namespace emulator
