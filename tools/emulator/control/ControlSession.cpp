#include "control/ControlSession.h"

#include <exception>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "control/ControlTable.h"
#include "control/StateJson.h"
#include "incubator/Incubator.h"
#include "protocol/Answer.h"
#include "server/EmulatedServer.h"
#include "text/Number.h"
#include "text/Words.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

using Json = nlohmann::json;

constexpr double kDefaultWait = 10.0;  // s, when a wait names no time
constexpr double kLongestWait = 86'400.0;
constexpr double kFastest = 1e6;
constexpr double kLongestStep = 1e7;  // s of the incubator's time
constexpr const char* kOrigin = "remote control";

/// Text or number as a text: "to": 36.5 is as good as "to": "36.5".
std::string TextOf(const Json& request, const std::string& member) {
    if (!request.contains(member)) {
        return {};
    }
    const Json& value = request.at(member);
    return value.is_string() ? value.get<std::string>() : FormatShortest(value.get<double>());
}

double NumberOf(const Json& request, const std::string& member, double most) {
    const double number = request.at(member).get<double>();
    if (!(number > 0.0 && number <= most)) {
        throw ControlError(InQuotes(member) + " must be more than 0 and at most " + FormatShortest(most));
    }
    return number;
}

std::string Dumped(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace

void ControlSession::Take(const std::string& line) {
    if (m_lines.size() >= kMostWaiting) {
        Reply({{"ok", false}, {"error", "too many requests wait for an earlier one"}}, {});
        return;
    }
    m_lines.push_back(line);
    TakeNext();
}

void ControlSession::Leave() {
    m_tell = [](const std::string&) {};
    m_lines.clear();
    m_waiting.reset();
    m_watching = false;
}

void ControlSession::TakeNext() {
    // What a request does may end a wait, which asks for the next request in turn.
    if (std::exchange(m_busy, true)) {
        return;
    }
    while (!m_waiting && !m_lines.empty()) {
        const std::string line = std::move(m_lines.front());
        m_lines.pop_front();
        if (!TrimBlanks(line).empty()) {
            Do(line);
        }
    }
    m_busy = false;
}

void ControlSession::Do(const std::string& line) {
    Json id;
    try {
        const Json request = ReadRequest(line);
        id = request.value("id", Json());
        if (request["do"] == "wait") {
            BeginWait(request, m_control.m_now());
        } else {
            Reply(Carry(request), id);
        }
    } catch (const std::exception& error) {
        Reply({{"ok", false}, {"error", error.what()}}, id);
    }
}

Json ControlSession::Carry(const Json& request) {
    const std::string name = request["do"];
    const double now = m_control.m_now();
    EmulatedServer& server = m_control.m_server;
    if (name == "state") {
        return StateJson(server, m_control.m_commands, now);
    }
    if (name == "faults") {
        return {{"faults", FaultsJson(server, now)}};
    }
    if (name == "watch") {
        const std::string which = TextOf(request, "exchanges");
        if (which != "on" && which != "off") {
            throw ControlError("\"watch\" takes \"on\" or \"off\"");
        }
        m_watching = which == "on";
        return Json::object();
    }
    if (name == "quit") {
        m_control.m_quit();
        return Json::object();
    }
    const bool isTime = name == "speed" || name == "pause" || name == "resume" || name == "step";
    return isTime ? CarryTime(request, now) : CarryChange(request, now);
}

Json ControlSession::CarryChange(const Json& request, double now) {
    const std::string name = request["do"];
    EmulatedServer& server = m_control.m_server;
    Incubator& incubator = server.At(now);
    if (name == "set") {
        incubator.Set(request["product"], request["device"], TextOf(request, "what"), TextOf(request, "to"));
    } else if (name == "parameter") {
        incubator.SetParameter(request["product"], request["number"], TextOf(request, "to"));
    } else if (name == "status") {
        incubator.SetStatus(request["product"], request["device"], request["error"]);
    } else if (name == "load") {
        server.Load(TextOf(request, "scenario"), now);
    } else if (name == "start") {
        return {{"number", server.Start(TextOf(request, "fault"), kOrigin, now)}};
    } else if (name == "stop") {
        const std::string which = TextOf(request, "fault");
        const auto number = ReadExactly<int>(which);
        if (which == "all") {
            server.StopAll(kOrigin);
        } else if (!number || !server.Stop(*number)) {
            throw ControlError("there is no fault " + InQuotes(which) + "; \"faults\" lists them");
        }
    }
    return Json::object();
}

Json ControlSession::CarryTime(const Json& request, double now) {
    const std::string name = request["do"];
    EmulatedServer& server = m_control.m_server;
    Incubator& incubator = server.At(now);  // up to here time passed as it did
    if (name == "speed") {
        server.Clock().SetSpeed(NumberOf(request, "to", kFastest));
    } else if (name == "step") {
        incubator.Advance(NumberOf(request, "seconds", kLongestStep));
    } else {
        server.Clock().SetPaused(name == "pause");
    }
    return {{"seconds", incubator.Time()}};
}

void ControlSession::BeginWait(const Json& request, double now) {
    const double within = request.contains("within") ? NumberOf(request, "within", kLongestWait) : kDefaultWait;
    m_waiting.emplace(
        Waiting{Wait(TextOf(request, "until"), m_control.m_commands), request.value("id", Json()), now, within});
    LookAtWait();
}

void ControlSession::LookAtWait() {
    if (!m_waiting) {
        return;
    }
    const double now = m_control.m_now();
    const bool isSo = m_waiting->wait.IsSo(m_control.m_server, m_control.m_commands, now);
    const double waited = now - m_waiting->since;
    if (!isSo && waited < m_waiting->within) {
        return;
    }
    const Json id = m_waiting->id;
    const std::string within = FormatShortest(m_waiting->within);
    m_waiting.reset();
    Reply(isSo ? Json{{"waited", waited}} : Json{{"ok", false}, {"error", "it did not come within " + within + " s"}},
          id);
    TakeNext();
}

void ControlSession::Meet(const std::string& command, const Transmission& transmission) {
    if (m_watching) {
        Json replies = Json::array();
        for (const Datagram& datagram : transmission) {
            replies.push_back({{"bytes", Escape(datagram.bytes)}, {"delayMs", datagram.delayMs}});
        }
        m_tell(Dumped({{"exchange", {{"command", Escape(command)}, {"replies", replies}}}}));
    }
    if (m_waiting) {
        m_waiting->wait.Meet(command);
        LookAtWait();
    }
}

void ControlSession::Reply(Json reply, const Json& id) {
    if (!reply.contains("ok")) {
        reply["ok"] = true;
    }
    if (!id.is_null()) {
        reply["id"] = id;
    }
    m_tell(Dumped(reply));
}

}  // namespace emulator
