#include "program/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "OkoVersion.h"
#include "control/ControlTable.h"
#include "net/Address.h"
#include "platform/Installation.h"
#include "scenarios/ScenarioReader.h"
#include "text/Duration.h"
#include "text/Number.h"
#include "text/Parsed.h"
#include "text/Words.h"
#include "transcript/Recorder.h"
#include "transcript/Replay.h"

namespace emulator {

namespace {

constexpr int kLastPort = 65'535;

/// A file's name that an installed copy finds from its own folder too.
std::string FromAnywhere(const std::string& name) { return std::filesystem::absolute(name).generic_string(); }

std::string ScenarioFromAnywhere(const std::string& name) {
    return std::filesystem::exists(name) && !ReadyScenarios().contains(name) ? FromAnywhere(name) : name;
}

/// "10s", "2m30s"; nothing and less is no duration to run for.
std::string TakeDuration(const std::string& text, double& seconds) {
    const Parsed<double> duration = ParseDuration(text);
    if (!duration) {
        return duration.error;
    }
    if (!(*duration > 0.0)) {
        return "\"" + text + "\" is no time to run for; leave the option out to run until somebody ends it";
    }
    seconds = *duration;
    return {};
}

/// What a taker complains about is a mistake of the command line.
void Expect(const std::string& mistake) {
    if (!mistake.empty()) {
        throw CLI::ValidationError(mistake);
    }
}

/// An option, those that it would not heed or that would not heed it, and the one without which it says nothing.
struct Combination {
    std::string_view option;
    std::vector<std::string_view> notWith;
    std::string_view onlyWith;
};

const std::vector<Combination>& Combinations() {
    static const std::vector<std::string_view> incubator{"--scenario", "--speed", "--fault", "--control-port",
                                                         "--control-input"};
    static const std::vector<std::string_view> roads{"--replay", "--proxy", "--record", "--placeholder"};
    const auto with = [](std::vector<std::string_view> names, const std::vector<std::string_view>& more) {
        names.insert(names.end(), more.begin(), more.end());
        return names;
    };
    static const std::vector<Combination> combinations{
        {"--overwrite", {"--append"}, "--record"},
        {"--append", {}, "--record"},
        {"--replay", {"--fault", "--control-port", "--control-input", "--proxy", "--placeholder"}, {}},
        {"--missing", {}, "--replay"},
        {"--proxy", {"--scenario", "--speed", "--timing", "--control-port", "--control-input", "--placeholder"}, {}},
        {"--start", {}, "--proxy"},
        {"--placeholder", with({"--record", "--seed"}, incubator), {}},
        {"--check", with(roads, incubator), {}},
        {"--show", with(with({"--check", "--timing"}, roads), incubator), {}},
        {"--server", {}, "--check"},
        {"--tolerance", {}, "--check"},
    };
    return combinations;
}

/// One of some words.
template <class Value>
using Choice = std::pair<std::string_view, Value>;

/// Adds an option that takes one of some words.
template <class Value, std::size_t Count>
CLI::Option* AddChoice(CLI::App& app, const char* name, Value& value, const std::array<Choice<Value>, Count>& choices,
                       const char* description) {
    std::vector<std::string> words;
    std::string type;
    for (const auto& [word, meaning] : choices) {
        words.emplace_back(word);
        type += (type.empty() ? "" : "|") + words.back();
    }
    return app
        .add_option_function<std::string>(
            name,
            [&value, choices, words](const std::string& text) {
                const auto found = std::ranges::find(choices, std::string_view(text), &Choice<Value>::first);
                Expect(found == choices.end() ? InQuotes(text) + " is none of " + JoinWords(words, "and") : "");
                value = found->second;
            },
            description)
        ->type_name(type);
}

CLI::Validator IsFile() { return CLI::Validator(CLI::ExistingFile).description(""); }

void AddIncubatorOptions(CLI::App& app, Options& options) {
    app.add_option("--scenario", options.scenario, "A ready-made scenario, or a scenario file")
        ->transform(ScenarioFromAnywhere)
        ->type_name("NAME|FILE")
        ->capture_default_str();
    app.add_option("--speed", options.speed, "How much faster the incubator's time runs")
        ->check(CLI::Range(1e-6, 1e6))
        ->type_name("FACTOR")
        ->capture_default_str();
    app.add_option("--seed", options.seed, "Start of the random numbers; the same one repeats a run");
    app.add_option(
           "--fault", options.faults,
           "\"PATTERN; TRIGGER; EFFECT\", or a fault of the device such as \"freeze 9 0 for 30\"; may be repeated")
        ->take_all()
        ->allow_extra_args(false)
        ->type_name("RULE");
}

void AddServerOptions(CLI::App& app, Options& options) {
    app.add_option("--port", options.port, "UDP port on 127.0.0.1; 0 takes a free one and says which")
        ->check(CLI::Range(0, kLastPort))
        ->type_name("PORT")
        ->capture_default_str();
    app.add_option_function<std::string>(
           "--for", [&](const std::string& text) { Expect(TakeDuration(text, options.forSeconds)); },
           "Ends after this time: 90, 10s, 2m30s")
        ->type_name("DURATION");
    app.add_flag("--quiet", options.quiet, "Shows no exchanges");
    app.add_option("--control-port", options.controlPort,
                   "TCP port on 127.0.0.1 for the remote control; 0 takes a free one")
        ->check(CLI::Range(0, kLastPort))
        ->type_name("PORT");
    app.add_flag("--control-input", options.controlInput, "Takes the remote control's requests from the standard input")
        ->configurable(false);
    app.add_option("server", options.serverWords,
                   "The words with which clients start their server: server address=localhost port=60000");
}

/// "HOST:PORT" into an address.
auto AddressInto(ServerAddress& address) {
    return [&address](const std::string& text) {
        const Parsed<ServerAddress> parsed = ParseServerAddress(text);
        Expect(parsed.error);
        address = *parsed;
    };
}

void AddTranscriptOptions(CLI::App& app, Options& options) {
    app.add_option("--record", options.record, "Writes every exchange to this file, which must not be there yet")
        ->type_name("FILE")
        ->transform(FromAnywhere);
    app.add_flag_callback(
        "--overwrite", [&] { options.recordMode = RecordMode::Overwrite; },
        "With --record: instead of what the file has");
    app.add_flag_callback(
        "--append", [&] { options.recordMode = RecordMode::Append; }, "With --record: behind what the file has");
    app.add_option("--replay", options.replay, "Answers from such a file")
        ->check(IsFile())
        ->type_name("FILE")
        ->transform(FromAnywhere);
    AddChoice(
        app, "--timing", options.timing,
        std::array{Choice<ReplayTiming>{"at-once", ReplayTiming::AtOnce},
                   Choice<ReplayTiming>{"recorded", ReplayTiming::Recorded}},
        "With --replay: when answers come. With --check: when commands are sent, at once or after the pauses that "
        "they had");
    AddChoice(app, "--missing", options.missing,
              std::array{Choice<MissingReply>{"refuse", MissingReply::Refuse},
                         Choice<MissingReply>{"silent", MissingReply::Silent},
                         Choice<MissingReply>{"model", MissingReply::Model}},
              "With --replay: what a command gets that the file does not have: result code 3, nothing, or the "
              "scenario's answer");
    app.add_option_function<std::string>(
           "--proxy",
           [&, take = AddressInto(options.proxied)](const std::string& text) {
               take(text);
               options.proxy = true;
           },
           "Stands between clients and the server at HOST:PORT, and passes everything on")
        ->type_name("HOST:PORT");
    app.add_option("--start", options.startProgram,
                   "With --proxy: starts this server's program on that port first, unless it runs")
        ->check(IsFile())
        ->type_name("FILE")
        ->transform(FromAnywhere);
}

/// What only a person asks for. Not part of the stored options.
void AddActions(CLI::App& app, Options& options) {
    app.set_version_flag("--version", std::string("oko-control-emulator ") + kOkoVersion)->configurable(false);
    app.add_flag("--list-scenarios", options.listScenarios, "Shows the ready-made scenarios")->configurable(false);
    app.add_flag("--commands", options.commands, "Shows every command that it knows, as the library sends it")
        ->configurable(false);
    app.add_option("--show", options.show, "Shows such a file to people")
        ->check(IsFile())
        ->type_name("FILE")
        ->configurable(false);
    app.add_option("--check", options.check,
                   "Sends such a file's commands to another server, and shows what that answers differently")
        ->check(IsFile())
        ->type_name("FILE")
        ->configurable(false);
    app.add_option_function<std::string>("--server", AddressInto(options.checked),
                                         "With --check: the server, 127.0.0.1:60000 when left out")
        ->type_name("HOST:PORT")
        ->configurable(false);
    app.add_option("--tolerance", options.tolerance, "With --check: how much numbers may differ")
        ->check(CLI::NonNegativeNumber)
        ->type_name("NUMBER")
        ->configurable(false);
    app.add_flag("--until-eof", options.untilEof, "Ends when its standard input does")->configurable(false);
    app.add_flag("--placeholder", options.placeholder, "Holds the port, without answers, until an emulator starts")
        ->configurable(false);
    if (CanInstall()) {
        app.add_option("--install", options.install, "Installs a copy, with the other options, in this folder")
            ->check([](const std::string& folder) {
                return folder.empty() ? std::string("--install needs a folder") : std::string();
            })
            ->configurable(false);
        app.add_option("--display-name", options.displayName, "The name that --install enters")->configurable(false);
        app.add_flag("--uninstall", options.uninstall, "Removes the installed copy")->configurable(false);
    }
}

void AddCtl(CLI::App& app, Options& options) {
    CLI::App* const ctl =
        app.add_subcommand("ctl", "Says a request to an emulator that runs: ctl state, ctl start freeze 9 0");
    ctl->add_option("--control-port", options.ctlPort, "Its remote control's TCP port")
        ->check(CLI::Range(1, kLastPort))
        ->type_name("PORT")
        ->capture_default_str();
    ctl->footer("Requests:\n" + ControlHelp() + "Without one, each line of the standard input is a request.");
    ctl->prefix_command();
    ctl->configurable(false);
    ctl->callback([&options, ctl] {
        options.ctl = true;
        options.controlWords = ctl->remaining();
    });
}

void AddOptions(CLI::App& app, Options& options) {
    app.option_defaults()->group("The incubator");
    AddIncubatorOptions(app, options);
    app.option_defaults()->group("The server");
    AddServerOptions(app, options);
    app.option_defaults()->group("Records and real servers");
    AddTranscriptOptions(app, options);
    app.option_defaults()->group("Other things to do");
    AddActions(app, options);
    app.option_defaults()->group("Options");
    AddCtl(app, options);
}

/// Holds together what was read: options that would be ignored, or do harm, are refused. Throws std::runtime_error.
void CheckCombinations(const CLI::App& app, const Options& options) {
    const auto isThere = [&app](std::string_view name) { return app.get_option(std::string(name))->count() > 0; };
    for (const Combination& combination : Combinations()) {
        if (!isThere(combination.option)) {
            continue;
        }
        const auto found = std::ranges::find_if(combination.notWith, isThere);
        if (found != combination.notWith.end()) {
            throw std::runtime_error(std::string(combination.option) + " does not go with " + std::string(*found));
        }
        if (!combination.onlyWith.empty() && !isThere(combination.onlyWith)) {
            throw std::runtime_error(std::string(combination.option) + " goes with " +
                                     std::string(combination.onlyWith) + " alone");
        }
    }
    const bool usesScenario = options.replay.empty() || options.missing == MissingReply::Model;
    for (const char* const name : {"--scenario", "--speed", "--seed"}) {
        if (!usesScenario && isThere(name)) {
            throw std::runtime_error(
                std::string(name) +
                " says nothing to --replay, which answers from the file alone; --missing model asks a scenario, too");
        }
    }
    if (!options.record.empty() && !options.replay.empty() && IsSameFile(options.record, options.replay)) {
        throw std::runtime_error(options.replay + " cannot be replayed and recorded at the same time");
    }
    if (isThere("--timing") && options.replay.empty() && options.check.empty()) {
        throw std::runtime_error("--timing goes with --replay or --check");
    }
    if (!options.install.empty() && !options.record.empty() && options.recordMode == RecordMode::Refuse) {
        throw std::runtime_error(
            "an installed copy is started again and again: say --append or --overwrite with --record");
    }
}

/// Takes the port from the words with which a client starts its server. Throws std::runtime_error for a word that is
/// none of those.
void TakeServerWords(Options& options) {
    constexpr std::string_view kPort = "port=";
    for (const std::string& word : options.serverWords) {
        if (word.starts_with(kPort)) {
            const auto port = ReadExactly<int>(std::string_view(word).substr(kPort.size()));
            if (!port || *port < 1 || *port > kLastPort) {
                throw std::runtime_error("\"" + word + "\" names no port");
            }
            options.port = *port;
        } else if (word != "server" && !word.starts_with("address=")) {
            throw std::runtime_error("\"" + word +
                                     "\" is no word that starts a server: server address=localhost port=60000");
        }
    }
}

}  // namespace

std::variant<Options, int> ReadOptions(int argc, char** argv) {
    CLI::App app{"Stands in for the OKO-Control Server: answers its commands for an emulated incubator."};
    app.footer(
        "Examples:\n"
        "  oko-control-emulator --list-scenarios\n"
        "  oko-control-emulator --scenario full-incubator --speed 60\n"
        "  oko-control-emulator --scenario product-9 --fault \"readcurval*; every 5; code 2\" --record run.txt");
    Options options;
    AddOptions(app, options);
    if (std::filesystem::exists(OptionsFile())) {
        app.set_config("--options-file", OptionsFile().string());
    }
    CLI11_PARSE(app, argc, argv);
    TakeServerWords(options);
    CheckCombinations(app, options);
    if (!options.install.empty()) {
        options.installed = app.config_to_str(false, false);
    }
    return options;
}

}  // namespace emulator
