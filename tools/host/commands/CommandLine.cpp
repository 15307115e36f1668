#include "commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "ExitCode.h"
#include "OkoVersion.h"
#include "commands/Commands.h"
#include "commands/WatchRequest.h"
#include "device/Library.h"
#include "device/SettingsFile.h"
#include "device/TargetSetting.h"
#include "judge/AlarmRule.h"
#include "keep/CsvFormat.h"
#include "platform/GrowingFile.h"
#include "show/Output.h"
#include "text/Duration.h"
#include "text/Parsed.h"

namespace {

/// The clock of a watch counts from a millisecond on.
std::string TakeDuration(const std::string& text, double& seconds) {
    constexpr double kShortest = 0.001;
    const auto parsed = ParseDuration(text);
    if (!parsed) {
        return parsed.error;
    }
    if (*parsed < kShortest) {
        return "\"" + text + "\" is too short: write 1ms or more";
    }
    seconds = *parsed;
    return {};
}

/// An option that may be repeated, each text of it parsed.
template <class Value>
void AddTexts(CLI::App& command, const char* name, const char* type, std::vector<Value>& values,
              Parsed<Value> (*parse)(std::string_view), const char* what) {
    const auto take = [name, &values, parse](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
            const Parsed<Value> parsed = parse(text);
            if (!parsed) {
                throw CLI::ValidationError(name, parsed.error);
            }
            values.push_back(*parsed);
        }
    };
    command.add_option_function<std::vector<std::string>>(name, take, what)->type_name(type);
}

int Fail(const std::exception& error, ExitCode code) {
    std::cerr << "oko-host: " << error.what() << "\n";
    return code;
}

constexpr const char* kFooter =
    "Examples:\n"
    "  oko-host doctor\n"
    "  oko-host list channels\n"
    "  oko-host monitor --device simulator --for 10s\n"
    "  oko-host connect --device incubator\n"
    "  oko-host monitor --device incubator --csv night.csv --alarm all\n"
    "  oko-host serve --device incubator --csv night.csv --alarm \"CO2: 4.5..5.5 for 2m\"\n"
    "\n"
    "oko-host COMMAND --help tells more.\n"
    "\n";

}  // namespace

std::filesystem::path PathOf(const std::string& utf8) { return std::u8string(utf8.begin(), utf8.end()); }

CLI::Option* AddDuration(CLI::App& command, const std::string& name, double& seconds, const std::string& what) {
    return command
        .add_option_function<std::string>(
            name,
            [name, &seconds](const std::string& text) {
                if (const std::string error = TakeDuration(text, seconds); !error.empty()) {
                    throw CLI::ValidationError(name, error);
                }
            },
            what)
        ->type_name("TIME");
}

void AddLibraryOption(CLI::App& command, std::filesystem::path& library) {
    library = DefaultLibraryFile();
    // What the user names counts from the current folder; the system would look elsewhere first.
    command
        .add_option_function<std::string>(
            "--library", [&library](const std::string& name) { library = std::filesystem::absolute(PathOf(name)); },
            "The library; OkoLabBoldLine.dll beside this program when left out")
        ->type_name("FILE");
}

void AddDeviceOptions(CLI::App& command, WatchRequest& request) {
    AddLibraryOption(command, request.device.library);
    command.add_option("--device", request.device.device, "Which device to open")
        ->check(CLI::IsMember({"simulator", "incubator"}))
        ->capture_default_str();
    command.add_option("--port", request.port, "The incubator's COM port, instead of the stored one")
        ->check(CLI::Range(1, 256));
    command.add_option("--settings", request.settingsFile, "Where the stored settings are")->capture_default_str();
    AddDuration(command, "--answer-within", request.answerWithinSeconds,
                "How long an answer of the device may take; 10s when left out, or by the library's ReplyTimeout");
    AddDuration(command, "--start-within", request.startWithinSeconds,
                "How long starting it may take; 60s when left out");
}

void AddWatchOptions(CLI::App& command, WatchRequest& request) {
    AddDuration(command, "--every", request.device.intervalSeconds, "Time between two rows");
    command
        .add_option_function<std::string>(
            "--for",
            [&request](const std::string& text) {
                double seconds = 0.0;
                if (const std::string error = TakeDuration(text, seconds); !error.empty()) {
                    throw CLI::ValidationError("--for", error);
                }
                request.seconds = seconds;
            },
            "How long, such as 10s, 2min or 3d; until Ctrl+C when left out")
        ->type_name("TIME");
    AddTexts(command, "--set", "NAME=VALUE", request.targets, ParseTargetSetting,
             "Sets a target first: NAME=VALUE, or KIND:NAME=VALUE; may be repeated");
    command.add_flag("--strict", request.strict, "A target that the device changes is a failure");
    AddTexts(
        command, "--alarm", "RULE", request.alarms, ParseAlarm,
        "Watches a channel: \"CO2: 4.5..5.5 for 2m\", \"CO2 for 2m\" (by the tolerances), \"all\"; may be repeated");
    AddDuration(command, "--missing", request.missingWithinSeconds,
                "A channel without a value for that long is an alarm; 30s or three rows when left out");
    command.add_flag("--beep", request.beep, "Sounds when an alarm comes on");
    command
        .add_option_function<std::string>(
            "--on-alarm", [&request](const std::string& file) { request.onAlarm = PathOf(file); },
            "Starts this program when an alarm comes on or goes off")
        ->type_name("PROGRAM");
    command
        .add_option_function<std::string>(
            "--csv", [&request](const std::string& file) { request.csv = PathOf(file); },
            "Keeps each row and event in a file")
        ->type_name("FILE");
    command.add_flag("--append", request.append, "Goes on in a CSV file that exists");
}

int RunCommandLine(std::vector<std::string> arguments) {
    CLI::App app{"Watches an incubator through the OKO-Lab bold line plug-in, as an imaging application would load it.",
                 "oko-host"};
    app.set_version_flag("--version", std::string("oko-host ") + kOkoVersion);
    app.require_subcommand(1);
    app.footer(std::string(kFooter) + ExitCodesHelp());
    CommandRun run;
    AddCommands(app, run);
    std::ranges::reverse(arguments);  // as CLI11 wants them
    try {
        app.parse(arguments);
        return run();
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const LibraryError& error) {
        return Fail(error, kExitNoLibrary);
    } catch (const SettingsError& error) {
        return Fail(error, kExitNotKept);
    } catch (const OutputError& error) {
        return Fail(error, kExitNotWritten);
    } catch (const FileError& error) {
        return Fail(error, kExitNotWritten);
    } catch (const CsvError& error) {
        return Fail(error, kExitBadFile);
    }
}
