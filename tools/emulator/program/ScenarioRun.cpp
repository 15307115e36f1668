#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "control/ControlServer.h"
#include "control/ControlSession.h"
#include "control/RemoteControl.h"
#include "faults/Faults.h"
#include "net/UdpServer.h"
#include "program/ExchangeLog.h"
#include "program/LineOutput.h"
#include "program/Options.h"
#include "program/Run.h"
#include "program/RunFrame.h"
#include "program/TranscriptFile.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "server/EmulatedServer.h"
#include "transcript/Recorder.h"
#include "transcript/Replay.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

void SetUp(EmulatedServer& server, const Options& options) {
    server.Clock().SetSpeed(options.speed);
    for (std::size_t i = 0; i < options.faults.size(); ++i) {
        server.Start(options.faults[i], "--fault " + std::to_string(i + 1), 0.0);
    }
}

ReplayOptions ReplayOptionsOf(const Options& options, EmulatedServer* model, LineOutput* output) {
    ReplayOptions replaying;
    replaying.timing = options.timing;
    replaying.missing = options.missing;
    if (model != nullptr) {
        replaying.model = [model](const std::string& command) {
            return model->At(RunFrame::Now()).Execute(ParseCommand(command));
        };
    }
    replaying.onMissing = [output](const std::string& command) {
        output->Say("warning: the record has no answer to \"" + Escape(command) + "\"");
    };
    return replaying;
}

std::string Address(int port) { return "127.0.0.1:" + std::to_string(port); }

/// The port that may go away for a while, as a server that is restarted does.
void FollowServer(UdpServer& udp, bool isUp, int port, LineOutput& output) {
    if (isUp == udp.IsOpen()) {
        return;
    }
    if (!isUp) {
        udp.Close();
        output.Say("the server is away");
        return;
    }
    try {
        udp.Open(port);
    } catch (const PortError&) {
        return;  // somebody has the port meanwhile; it is asked for again at the next tick
    }
    output.Say("the server is back");
}

}  // namespace

void RunScenario(const Options& options) {
    std::shared_ptr<ControlSession> session;  // of the standard input
    RunFrame frame(options, [&session](const std::string& line) { session->Take(line); });
    LineOutput& output = frame.Output();
    EmulatedServer server(options.scenario, options.seed, [&output](const std::string& line) { output.Show(line); });
    SetUp(server, options);
    RemoteControl control(server, RunFrame::Now, [&frame] { frame.End(); });
    if (options.controlInput) {
        session = control.Open([&output](const std::string& line) { output.Say(line); });
    }
    std::optional<ControlServer> controlServer;
    ExchangeLog log(options, output);
    UdpServer udp(frame.Context(), [&](const std::string& command) {
        const double now = RunFrame::Now();
        Transmission sent = server.Answer(command, now);
        if (log.IsWanted()) {
            log.Add(ExchangeOf(now, command, sent));
        }
        control.TellExchange(command, sent);
        return sent;
    });
    udp.Open(options.port);
    log.Open();
    if (options.controlPort) {
        controlServer.emplace(frame.Context(), control, *options.controlPort);
        output.Say("remote control on " + Address(controlServer->Port()));
    }
    const int port = udp.Port();
    output.Say("answering on " + Address(port) + " as " + options.scenario);
    frame.Run([&] {
        FollowServer(udp, server.At(RunFrame::Now()).IsServerUp(), port, output);
        control.Tick();
    });
    for (const FaultStatus& status : server.NeverFired()) {
        output.Say(SayNeverFired(status));
    }
}

void RunReplay(const Options& options) {
    RunFrame frame(options);
    LineOutput& output = frame.Output();
    std::optional<EmulatedServer> model;
    if (options.missing == MissingReply::Model) {
        model.emplace(options.scenario, options.seed, [](const std::string&) {});
        SetUp(*model, options);
    }
    Replay replay(ReadTranscriptFile(options.replay), ReplayOptionsOf(options, model ? &*model : nullptr, &output));
    ExchangeLog log(options, output);
    UdpServer udp(frame.Context(), [&](const std::string& command) {
        const double now = RunFrame::Now();
        Transmission sent = replay.Answer(command);
        if (log.IsWanted()) {
            log.Add(ExchangeOf(now, command, sent));
        }
        return sent;
    });
    udp.Open(options.port);
    log.Open();
    output.Say("answering on " + Address(udp.Port()) + " as " + options.replay);
    frame.Run([] {});
}

void CheckInput(const Options& options) {
    if (!options.replay.empty()) {
        ReadTranscriptFile(options.replay);
    }
    if (options.proxy) {
        CheckProxyFaults(options);
        return;
    }
    if (options.replay.empty() || options.missing == MissingReply::Model) {
        EmulatedServer server(options.scenario, options.seed, [](const std::string&) {});
        SetUp(server, options);
    }
}

}  // namespace emulator
