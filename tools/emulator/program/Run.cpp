#include "program/Run.h"

#include <boost/asio/io_context.hpp>
#include <chrono>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "faults/FaultRule.h"
#include "incubator/Scenario.h"
#include "net/Placeholder.h"
#include "net/UdpServer.h"
#include "program/Ending.h"
#include "program/Input.h"
#include "program/LineOutput.h"
#include "program/Options.h"
#include "protocol/Answer.h"
#include "server/EmulatedServer.h"
#include "transcript/Recorder.h"
#include "transcript/Replay.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

/// Seconds since the program started.
double Elapsed() {
    static const auto start = std::chrono::steady_clock::now();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::string ReadFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    if (!file) {
        throw TranscriptError(name + ": cannot be read");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Answers from a scenario, with its faults.
CommandHandler ScenarioHandler(const Options& options, LineOutput& output) {
    const auto server = std::make_shared<EmulatedServer>(
        LoadScenario(options.scenario), options.seed, [&output](const FaultRule& rule, std::string_view command) {
            output.Say("fault \"" + rule.source + "\" on \"" + std::string(command) + "\"");
        });
    for (std::size_t i = 0; i < options.faults.size(); ++i) {
        server->AddRule(options.faults[i], "--fault " + std::to_string(i + 1));
    }
    server->SetSpeed(options.speed);
    return [server](const std::string& command) { return server->Answer(command, Elapsed()); };
}

CommandHandler ReplayHandler(const Options& options) {
    ReplayOptions replaying;
    replaying.missing = MissingReply::Silent;
    const auto replay = std::make_shared<Replay>(ReadTranscript(ReadFile(options.replay)), replaying);
    return [replay](const std::string& command) { return replay->Answer(command); };
}

CommandHandler HandlerOf(const Options& options, LineOutput& output) {
    return options.replay.empty() ? ScenarioHandler(options, output) : ReplayHandler(options);
}

/// The same with a line for every exchange, on the screen and in the record once that is open.
CommandHandler Recorded(CommandHandler handler, bool quiet, LineOutput& output, std::ofstream& record) {
    return [handler = std::move(handler), quiet, &output, &record](const std::string& command) {
        Transmission transmission = handler(command);
        if (quiet && !record.is_open()) {
            return transmission;
        }
        const std::string line = FormatTranscriptLine(ExchangeOf(Elapsed(), command, transmission));
        if (!quiet) {
            output.Show(line);
        }
        if (record.is_open()) {
            record << line << std::endl;
        }
        return transmission;
    };
}

void OpenRecord(std::ofstream& record, const std::string& name) {
    record.open(name, std::ios::binary);
    if (!record) {
        throw TranscriptError(name + ": cannot be written");
    }
}

/// Whoever started the program is gone, or has no more use for it, when its standard input ends. Under Wine a program
/// that is killed instead can leave its port taken.
std::unique_ptr<Input> EndWithInput(boost::asio::io_context& context, bool wanted) {
    return wanted ? std::make_unique<Input>(
                        context, [](const std::string&) {}, [&context] { context.stop(); })
                  : nullptr;
}

}  // namespace

void RunServer(const Options& options) {
    Elapsed();
    boost::asio::io_context context;
    LineOutput output(WriteToOutput);
    std::ofstream record;
    UdpServer server(context, Recorded(HandlerOf(options, output), options.quiet, output, record));
    server.Open(options.port);
    // Not before the port is ours: a running emulator may be writing the same record.
    if (!options.record.empty()) {
        OpenRecord(record, options.record);
    }
    const Ending ending(context, options.forSeconds);
    const auto input = EndWithInput(context, options.untilEof);
    output.Say("answering on 127.0.0.1:" + std::to_string(server.Port()) + " as " +
               (options.replay.empty() ? options.scenario : options.replay));
    context.run();
}

void RunPlaceholder(const Options& options) {
    boost::asio::io_context context;
    LineOutput output(WriteToOutput);
    const Placeholder placeholder(context, options.port, [&context] { context.stop(); });
    const Ending ending(context, options.forSeconds);
    const auto input = EndWithInput(context, options.untilEof);
    output.Say("holding port " + std::to_string(placeholder.Port()) + " until an emulator starts");
    context.run();
}

void CheckInput(const Options& options) {
    LineOutput nowhere([](std::string_view) {});
    HandlerOf(options, nowhere);
}

}  // namespace emulator
