// oko-control-emulator: a stand-in for the OKO-Control Server.

#include <windows.h>

#include <CLI/CLI.hpp>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "OkoVersion.h"
#include "faults/Faults.h"
#include "incubator/Incubator.h"
#include "incubator/Scenario.h"
#include "net/Server.h"
#include "platform/Installation.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "transcript/Transcript.h"

using namespace emulator;

namespace {

enum ExitCode { kExitDone = 0, kExitBadInput = 1, kExitPortInUse = 2 };

std::atomic<bool> g_bStop = false;

BOOL WINAPI OnConsoleControl(DWORD) {
    g_bStop = true;
    return TRUE;
}

struct Options {
    std::string scenario = "full-incubator";
    int port = 60000;
    double speed = 1.0;
    unsigned seed = 1;
    double forSeconds = 0.0;  // 0: until Ctrl+C
    std::vector<std::string> faults;
    std::string record;
    std::string replay;
    std::string install;
    std::string displayName = "OKO-Control Server (emulator)";
    std::vector<std::string> serverWords;  // "server address=localhost port=60000", as clients start it
    bool listScenarios = false;
    bool uninstall = false;
    bool placeholder = false;
    bool quiet = false;
    bool untilEof = false;
};

/// Seconds since the program started.
double Elapsed() {
    static const auto start = std::chrono::steady_clock::now();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

bool ShallStop(const Options& options) {
    return g_bStop || (options.forSeconds > 0.0 && Elapsed() > options.forSeconds);
}

/// Reads its standard input to its end and then stops the program: whoever started it is gone, or has no more use for
/// it. Under Wine a program that is killed instead can leave its port taken.
void StopAtEndOfInput() {
    std::array<char, 256> ignored;
    DWORD length = 0;
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    while (::ReadFile(input, ignored.data(), static_cast<DWORD>(ignored.size()), &length, nullptr) != FALSE &&
           length > 0) {
    }
    g_bStop = true;
}

std::string ReadFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    if (!file) {
        throw TranscriptError(name + ": cannot be read");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<FaultRule> ParseRules(const std::vector<std::string>& scenario, const std::vector<std::string>& line) {
    std::vector<FaultRule> rules;
    for (const auto* const list : {&scenario, &line}) {
        for (const std::string& text : *list) {
            rules.push_back(ParseFaultRule(text));
        }
    }
    return rules;
}

/// Answers from a scenario, with its faults.
CommandHandler ScenarioHandler(const Options& options) {
    Scenario scenario = LoadScenario(options.scenario);
    auto rules = ParseRules(scenario.faults, options.faults);
    const auto incubator = std::make_shared<Incubator>(std::move(scenario), options.seed);
    const auto faults =
        std::make_shared<Faults>(std::move(rules), options.seed, [](const FaultRule& rule, std::string_view command) {
            std::cout << "fault \"" << rule.source << "\" on \"" << command << "\"" << std::endl;
        });
    const auto last = std::make_shared<double>(Elapsed());
    return [incubator, faults, last, speed = options.speed](const std::string& command) {
        const double now = Elapsed();
        incubator->Advance((now - *last) * speed);
        *last = now;
        return faults->Apply(command, incubator->Execute(ParseCommand(command)), now);
    };
}

CommandHandler ReplayHandler(const Options& options) {
    const auto replay = std::make_shared<Replay>(ReadFile(options.replay));
    return [replay](const std::string& command) { return Transmission{replay->Answer(command), 0}; };
}

/// Throws what is wrong with the scenario, the rules or the transcript.
CommandHandler HandlerOf(const Options& options) {
    return options.replay.empty() ? ScenarioHandler(options) : ReplayHandler(options);
}

/// The same with a line for every exchange, on the screen and in the record once that is open.
CommandHandler Recorded(CommandHandler handler, bool quiet, std::ofstream& record) {
    return [handler = std::move(handler), quiet, &record](const std::string& command) {
        Transmission transmission = handler(command);
        const std::string line = FormatTranscriptLine(Elapsed(), command, transmission.datagrams);
        if (!quiet) {
            std::cout << line << std::endl;
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

int Run(const Options& options) {
    const auto stop = [&options] { return ShallStop(options); };
    if (options.untilEof) {
        std::thread(StopAtEndOfInput).detach();
    }
    if (options.placeholder) {
        const auto onHeld = [&options] {
            std::cout << "holding port " << options.port << " until an emulator starts" << std::endl;
        };
        HoldPort(options.port, onHeld, stop);
        return kExitDone;
    }
    const CommandHandler handler = HandlerOf(options);
    std::ofstream record;
    const auto onReady = [&] {
        // Not before the port is ours: a running emulator may be writing the same record.
        if (!options.record.empty()) {
            OpenRecord(record, options.record);
        }
        std::cout << "answering on 127.0.0.1:" << options.port << " as "
                  << (options.replay.empty() ? options.scenario : options.replay) << std::endl;
    };
    Serve(options.port, Recorded(handler, options.quiet, record), onReady, stop);
    return kExitDone;
}

int ListScenarios() {
    for (const auto& [name, json] : ReadyScenarios()) {
        std::cout << name << "  " << ParseScenario(json, name).description << "\n";
    }
    return kExitDone;
}

/// "port=60000" among the words with which a client starts its server.
void TakeServerWords(Options& options) {
    constexpr std::string_view kPort = "port=";
    constexpr int kLastPort = 65535;
    for (const std::string& word : options.serverWords) {
        if (!word.starts_with(kPort)) {
            continue;
        }
        int port = 0;
        const char* const end = word.data() + word.size();
        const auto result = std::from_chars(word.data() + kPort.size(), end, port);
        if (result.ec != std::errc{} || result.ptr != end || port < 1 || port > kLastPort) {
            throw std::runtime_error("\"" + word + "\" names no port");
        }
        options.port = port;
    }
}

/// A file's name that an installed copy finds from its own folder too.
std::string FromAnywhere(const std::string& name) { return std::filesystem::absolute(name).generic_string(); }

std::string ScenarioFromAnywhere(const std::string& name) {
    return std::filesystem::exists(name) && !ReadyScenarios().contains(name) ? FromAnywhere(name) : name;
}

void AddOptions(CLI::App& app, Options& options) {
    app.add_option("--scenario", options.scenario, "A ready-made scenario, or a scenario file")
        ->transform(ScenarioFromAnywhere)
        ->capture_default_str();
    app.add_option("--port", options.port, "UDP port on 127.0.0.1")->check(CLI::Range(1, 65535))->capture_default_str();
    app.add_option("--speed", options.speed, "How much faster the incubator's time runs")->check(CLI::PositiveNumber);
    app.add_option("--seed", options.seed, "Start of the random numbers; the same one repeats a run");
    app.add_option("--for", options.forSeconds, "Ends after this many seconds");
    app.add_option("--fault", options.faults, "\"PATTERN; TRIGGER; EFFECT\", may be repeated")->take_all();
    app.add_option("--record", options.record, "Writes every exchange to this file")->transform(FromAnywhere);
    app.add_option("--replay", options.replay, "Answers from such a file")
        ->check(CLI::ExistingFile)
        ->transform(FromAnywhere);
    app.add_flag("--quiet", options.quiet, "Shows no exchanges");
    app.add_option("server", options.serverWords, "The words with which clients start their server: server port=60000");
}

/// What only a person asks for. Not part of the stored options.
void AddActions(CLI::App& app, Options& options) {
    app.set_version_flag("--version", std::string("oko-control-emulator ") + kOkoVersion)->configurable(false);
    app.add_flag("--list-scenarios", options.listScenarios, "Shows the ready-made scenarios")->configurable(false);
    app.add_option("--install", options.install, "Installs a copy, with the other options, in this folder")
        ->configurable(false);
    app.add_option("--display-name", options.displayName, "The name that --install enters")->configurable(false);
    app.add_flag("--uninstall", options.uninstall, "Removes the installed copy")->configurable(false);
    app.add_flag("--until-eof", options.untilEof, "Ends when its standard input does")->configurable(false);
    app.add_flag("--placeholder", options.placeholder, "Holds the port, without answers, until an emulator starts")
        ->configurable(false);
}

int Main(CLI::App& app, Options& options) {
    TakeServerWords(options);
    if (options.listScenarios) {
        return ListScenarios();
    }
    if (options.uninstall) {
        Uninstall();
        return kExitDone;
    }
    if (!options.install.empty()) {
        HandlerOf(options);  // a mistake shows now, not when a client starts the copy
        Install(options.install, std::wstring(options.displayName.begin(), options.displayName.end()),
                app.config_to_str(false, false));
        return kExitDone;
    }
    return Run(options);
}

}  // namespace

// What is left to throw is want of memory.
int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape)
    CLI::App app{"Stands in for the OKO-Control Server: answers its commands for an emulated incubator."};
    app.footer(
        "Examples:\n"
        "  oko-control-emulator --list-scenarios\n"
        "  oko-control-emulator --scenario full-incubator --speed 60\n"
        "  oko-control-emulator --scenario product-9 --fault \"readcurval*; every 5; code 2\" --record run.txt");
    Options options;
    AddOptions(app, options);
    AddActions(app, options);
    if (std::filesystem::exists(OptionsFile())) {
        app.set_config("--options-file", OptionsFile().string());
    }
    CLI11_PARSE(app, argc, argv);
    SetConsoleCtrlHandler(OnConsoleControl, TRUE);
    Elapsed();
    try {
        return Main(app, options);
    } catch (const PortError& error) {
        std::cerr << "oko-control-emulator: " << error.what() << "\n";
        return kExitPortInUse;
    } catch (const std::exception& error) {
        std::cerr << "oko-control-emulator: " << error.what() << "\n";
        return kExitBadInput;
    }
}
