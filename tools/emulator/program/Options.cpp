#include "program/Options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "OkoVersion.h"
#include "incubator/Scenario.h"
#include "platform/Installation.h"
#include "text/Duration.h"

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

void AddIncubatorOptions(CLI::App& app, Options& options) {
    app.add_option("--scenario", options.scenario, "A ready-made scenario, or a scenario file")
        ->transform(ScenarioFromAnywhere)
        ->capture_default_str();
    app.add_option("--speed", options.speed, "How much faster the incubator's time runs")
        ->check(CLI::Range(1e-6, 1e6))
        ->capture_default_str();
    app.add_option("--seed", options.seed, "Start of the random numbers; the same one repeats a run");
    app.add_option("--fault", options.faults, "\"PATTERN; TRIGGER; EFFECT\", may be repeated")->take_all();
}

void AddServerOptions(CLI::App& app, Options& options) {
    app.add_option("--port", options.port, "UDP port on 127.0.0.1; 0 takes a free one and says which")
        ->check(CLI::Range(0, kLastPort))
        ->capture_default_str();
    app.add_option_function<std::string>(
           "--for", [&](const std::string& text) { Expect(TakeDuration(text, options.forSeconds)); },
           "Ends after this time: 90, 10s, 2m30s")
        ->type_name("DURATION");
    app.add_option("--record", options.record, "Writes every exchange to this file")->transform(FromAnywhere);
    app.add_option("--replay", options.replay, "Answers from such a file")
        ->check(CLI::ExistingFile)
        ->transform(FromAnywhere);
    app.add_flag("--quiet", options.quiet, "Shows no exchanges");
    app.add_option("server", options.serverWords,
                   "The words with which clients start their server: server address=localhost port=60000");
}

/// What only a person asks for. Not part of the stored options.
void AddActions(CLI::App& app, Options& options) {
    app.set_version_flag("--version", std::string("oko-control-emulator ") + kOkoVersion)->configurable(false);
    app.add_flag("--list-scenarios", options.listScenarios, "Shows the ready-made scenarios")->configurable(false);
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

}  // namespace

void AddOptions(CLI::App& app, Options& options) {
    AddIncubatorOptions(app, options);
    AddServerOptions(app, options);
    AddActions(app, options);
}

void TakeServerWords(Options& options) {
    constexpr std::string_view kPort = "port=";
    for (const std::string& word : options.serverWords) {
        if (word.starts_with(kPort)) {
            const char* const end = word.data() + word.size();
            const auto result = std::from_chars(word.data() + kPort.size(), end, options.port);
            if (result.ec != std::errc{} || result.ptr != end || options.port < 1 || options.port > kLastPort) {
                throw std::runtime_error("\"" + word + "\" names no port");
            }
        } else if (word != "server" && !word.starts_with("address=")) {
            throw std::runtime_error("\"" + word +
                                     "\" is no word that starts a server: server address=localhost port=60000");
        }
    }
}

std::string StoredOptions(const CLI::App& app) { return app.config_to_str(false, false); }

}  // namespace emulator
