#include "commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ExitCode.h"
#include "OkoVersion.h"
#include "commands/Command.h"
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
#include "text/Number.h"
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
void AddTexts(Command& command, const char* name, const char* type, std::vector<Value>& values,
              Parsed<Value> (*parse)(std::string_view), const char* what) {
    const auto take = [&values, parse](const std::string& text) {
        const Parsed<Value> parsed = parse(text);
        if (parsed) {
            values.push_back(*parsed);
        }
        return parsed.error;
    };
    command.AddTexts(name, take, what).Type(type);
}

/// What a taker complains about is a mistake of the command line.
std::function<void(const std::string&)> Expecting(const std::string& name, Command::Take take) {
    return [name, take = std::move(take)](const std::string& text) {
        if (const std::string mistake = take(text); !mistake.empty()) {
            throw CLI::ValidationError(name, mistake);
        }
    };
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

CommandOption CommandOption::Type(const std::string& word) { return CommandOption(m_option->type_name(word)); }

CommandOption CommandOption::OneOf(const std::vector<std::string>& words) {
    return CommandOption(m_option->check(CLI::IsMember(words)));
}

CommandOption CommandOption::Required() { return CommandOption(m_option->required()); }

CommandOption CommandOption::ShowDefault() { return CommandOption(m_option->capture_default_str()); }

CommandOption CommandOption::Describe(const std::string& what) { return CommandOption(m_option->description(what)); }

Command Command::AddCommand(const std::string& name, const std::string& what) {
    return {*m_app->add_subcommand(name, what), *m_run};
}

CommandOption Command::AddFlag(const std::string& name, bool& value, const std::string& what) {
    return CommandOption(m_app->add_flag(name, value, what));
}

CommandOption Command::AddOption(const std::string& name, std::string& value, const std::string& what) {
    return CommandOption(m_app->add_option(name, value, what));
}

CommandOption Command::AddOption(const std::string& name, std::vector<std::string>& values, const std::string& what) {
    return CommandOption(m_app->add_option(name, values, what));
}

CommandOption Command::AddOption(const std::string& name, std::filesystem::path& value, const std::string& what) {
    const auto take = [&value](const std::string& file) { value = PathOf(file); };
    return CommandOption(m_app->add_option_function<std::string>(name, take, what));
}

CommandOption Command::AddOption(const std::string& name, std::uint16_t& value, const std::string& what) {
    return CommandOption(m_app->add_option(name, value, what));
}

CommandOption Command::AddOption(const std::string& name, Take take, const std::string& what) {
    return CommandOption(m_app->add_option_function<std::string>(name, Expecting(name, std::move(take)), what));
}

CommandOption Command::AddTexts(const std::string& name, Take take, const std::string& what) {
    const auto takeAll = [takeOne = Expecting(name, std::move(take))](const std::vector<std::string>& texts) {
        std::ranges::for_each(texts, takeOne);
    };
    return CommandOption(m_app->add_option_function<std::vector<std::string>>(name, takeAll, what));
}

CommandOption Command::AddNumber(const std::string& name, std::optional<int>& value, int lowest, int highest,
                                 const std::string& what) {
    return CommandOption(m_app->add_option(name, value, what)->check(CLI::Range(lowest, highest)));
}

CommandOption Command::Find(const std::string& name) { return CommandOption(m_app->get_option(name)); }

void Command::Remove(const std::string& name) { m_app->remove_option(m_app->get_option(name)); }

void Command::Footer(const std::string& text) { m_app->footer(text); }

void Command::Hide() { m_app->group(""); }

// The parser calls back the commands of a command before the command itself, whose run it is then.
void Command::Run(CommandRun run) {
    m_app->callback([chosen = m_run, run = std::move(run)] { *chosen = run; });
}

bool Command::IsChosen() const { return m_app->parsed(); }

std::filesystem::path PathOf(const std::string& utf8) { return std::u8string(utf8.begin(), utf8.end()); }

CommandOption AddDuration(Command& command, const std::string& name, double& seconds, const std::string& what) {
    const auto take = [&seconds](const std::string& text) { return TakeDuration(text, seconds); };
    return command.AddOption(name, take, what).Type("TIME");
}

void AddLibraryOption(Command& command, std::filesystem::path& library) {
    library = DefaultLibraryFile();
    // What the user names counts from the current folder; the system would look elsewhere first.
    const auto take = [&library](const std::string& name) {
        library = std::filesystem::absolute(PathOf(name));
        return std::string();
    };
    command.AddOption("--library", take, "The library; OkoLabBoldLine.dll beside this program when left out")
        .Type("FILE");
}

void AddDeviceOptions(Command& command, WatchRequest& request) {
    AddLibraryOption(command, request.device.library);
    command.AddOption("--device", request.device.device, "Which device to open")
        .OneOf({"simulator", "incubator"})
        .ShowDefault();
    command.AddNumber("--port", request.port, 1, 256, "The incubator's COM port, instead of the stored one");
    command.AddOption("--settings", request.settingsFile, "Where the stored settings are").ShowDefault();
    AddDuration(command, "--answer-within", request.answerWithinSeconds,
                "How long an answer of the device may take; 10s when left out, or by the library's ReplyTimeout");
    AddDuration(command, "--start-within", request.startWithinSeconds,
                "How long starting it may take; 60s when left out");
}

void AddRowsOption(Command& command, WatchRequest& request, const std::string& what) {
    const auto takeRows = [&request](const std::string& text) -> std::string {
        request.rows = ReadExactly<std::uint64_t>(text);
        return request.rows.value_or(0) > 0 ? "" : "\"" + text + "\" is no number of rows: write 1 or more";
    };
    command.AddOption("--rows", takeRows, what).Type("NUMBER");
}

void AddWatchOptions(Command& command, WatchRequest& request) {
    AddDuration(command, "--every", request.device.intervalSeconds, "Time between two rows");
    const auto takeSeconds = [&request](const std::string& text) {
        return TakeDuration(text, request.seconds.emplace());
    };
    command.AddOption("--for", takeSeconds, "How long, such as 10s, 2min or 3d; until Ctrl+C when left out")
        .Type("TIME");
    AddRowsOption(command, request,
                  "Ends after so many rows, counted once the targets are set; with --for, whichever comes first");
    AddTexts(command, "--set", "NAME=VALUE", request.targets, ParseTargetSetting,
             "Sets a target first: NAME=VALUE, or KIND:NAME=VALUE; may be repeated");
    command.AddFlag("--strict", request.strict, "A target that the device changes is a failure");
    AddTexts(
        command, "--alarm", "RULE", request.alarms, ParseAlarm,
        "Watches a channel: \"CO2: 4.5..5.5 for 2m\", \"CO2 for 2m\" (by the tolerances), \"all\"; may be repeated");
    AddDuration(command, "--missing", request.missingWithinSeconds,
                "A channel without a value for that long is an alarm; 30s or three rows when left out");
    command.AddFlag("--beep", request.beep, "Sounds when an alarm comes on");
    command.AddOption("--on-alarm", request.onAlarm, "Starts this program when an alarm comes on or goes off")
        .Type("PROGRAM");
    command.AddOption("--csv", request.csv, "Keeps each row and event in a file").Type("FILE");
    command.AddFlag("--append", request.append, "Goes on in a CSV file that exists");
}

int RunCommandLine(std::vector<std::string> arguments) {
    CLI::App app{"Watches an incubator through the OKO-Lab bold line plug-in, as an imaging application would load it.",
                 "oko-host"};
    app.set_version_flag("--version", std::string("oko-host ") + kOkoVersion);
    app.require_subcommand(1);
    app.footer(std::string(kFooter) + ExitCodesHelp());
    CommandRun run;
    Command program(app, run);
    AddCommands(program);
    std::ranges::reverse(arguments);  // as CLI11 wants them
    try {
        app.parse(arguments);
        return run();
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const MissingArgument& error) {
        return app.exit(CLI::RequiredError(error.what()));
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
