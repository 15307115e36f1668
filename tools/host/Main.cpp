// oko-host: loads the plug-in's library as an imaging application would.

#include <windows.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <exception>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "ExitCode.h"
#include "OkoVersion.h"
#include "commands/ListCommand.h"
#include "commands/MonitorCommand.h"
#include "commands/win32/DialogCommands.h"
#include "commands/win32/Language.h"
#include "device/Library.h"
#include "device/SettingsFile.h"
#include "device/TargetSetting.h"
#include "text/Text.h"

namespace {

/// Lets the console read this program's UTF-8 while it runs.
class Utf8Console {
 public:
    Utf8Console() : m_nPreviousCodePage(GetConsoleOutputCP()) { SetConsoleOutputCP(CP_UTF8); }
    ~Utf8Console() { SetConsoleOutputCP(m_nPreviousCodePage); }
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;

 private:
    UINT m_nPreviousCodePage;
};

/// Durations as people write them: "10s", "1.5min", "500ms"; a bare number is seconds.
CLI::Validator Seconds() {
    const std::map<std::string, double> seconds{{"ms", 0.001}, {"s", 1.0}, {"min", 60.0}, {"h", 3600.0}};
    return CLI::AsNumberWithUnit(seconds, CLI::AsNumberWithUnit::UNIT_OPTIONAL).description("");
}

/// The clock counts nanoseconds, for some centuries.
std::string RefuseOddTime(const std::string& text) {
    double seconds = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), seconds);
    return result.ec == std::errc{} && seconds >= 0.001 && seconds <= 1e9 ? "" : "must be from 1ms to 1000000000s";
}

std::string RefuseNoTarget(const std::string& text) {
    return ParseTargetSetting(text) ? "" : "\"" + text + "\" is not of the form NAME=VALUE";
}

CLI::Option* AddDevice(CLI::App& command, std::string& device) {
    return command.add_option("--device", device, "Which device to open")
        ->check(CLI::IsMember({"simulator", "incubator"}))
        ->capture_default_str();
}

CLI::App* AddList(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("list", "Shows the library's devices");
    command->footer("Example:\n  oko-host list --library OkoLabBoldLine.dll");
    return command;
}

CLI::App* AddMonitor(CLI::App& app, MonitorOptions& options) {
    CLI::App* const command = app.add_subcommand("monitor", "Shows all channels of a device while their values change");
    AddDevice(*command, options.device);
    command->add_option("--for", options.seconds, "How long, such as 10s or 2min; until Ctrl+C when left out")
        ->type_name("TIME")
        ->transform(Seconds())
        ->check(RefuseOddTime);
    command->add_option("--every", options.intervalSeconds, "Time between two tables, 500ms when left out")
        ->type_name("TIME")
        ->transform(Seconds())
        ->check(RefuseOddTime);
    const auto addTargets = [&options](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
            options.targets.push_back(*ParseTargetSetting(text));
        }
    };
    command
        ->add_option_function<std::vector<std::string>>(
            "--set", addTargets, "Sets a target first: NAME=VALUE, or KIND:NAME=VALUE; may be repeated")
        ->check(RefuseNoTarget);
    command->add_option("--port", options.port, "The incubator's COM port")->check(CLI::Range(1, 256));
    command->footer(
        "Examples:\n"
        "  oko-host monitor --device simulator --for 10s --set H301-T=38.5 --set gas:CO2=7\n"
        "  oko-host monitor --device incubator --port 3\n"
        "\n"
        "KIND is temperature, gas or humidity: needed for a name that stands in several kinds. Lines that the\n"
        "library logs go to the standard error output.");
    return command;
}

/// The commands that open a dialog.
CLI::App* AddDialog(CLI::App& app, const char* name, const char* what, DialogOptions& options, std::string& settings) {
    CLI::App* const command = app.add_subcommand(name, what);
    AddDevice(*command, options.device);
    command->add_option("--settings", settings, "Where the settings texts are kept")->capture_default_str();
    command->add_option("--language", options.language, "Another language than the system's")
        ->check(CLI::IsMember(DialogLanguages()));
    command->footer(
        std::string("Examples:\n  oko-host ") + name + " --device incubator\n  oko-host " + name +
        " --language de\n\n"
        "Where the system lets no program choose the language of its dialogs, --language says so and opens\n"
        "nothing. Wine is such a system: it goes by the environment, OKO_LANGUAGE=de_DE scripts/wine ...");
    return command;
}

/// The arguments as CLI11 wants them: UTF-8, the last one first.
std::vector<std::string> Arguments(int argc, wchar_t** argv) {
    std::vector<std::string> arguments;
    for (int i = argc - 1; i > 0; --i) {
        arguments.push_back(ToUtf8(argv[i]));
    }
    return arguments;
}

std::filesystem::path PathOf(const std::string& utf8) { return std::u8string(utf8.begin(), utf8.end()); }

/// What the user named counts from the current folder; the system would look elsewhere first.
std::filesystem::path LibraryFile(const std::string& name) {
    return name.empty() ? DefaultLibraryFile() : std::filesystem::absolute(PathOf(name));
}

/// What the command line asked for.
struct Request {
    MonitorOptions monitor;
    DialogOptions dialog;
    std::string libraryName;
    std::string settingsName = "oko-host.ini";
};

struct Commands {
    CLI::App* list;
    CLI::App* monitor;
    CLI::App* configure;
    CLI::App* connect;
    CLI::App* panel;
};

Commands AddCommands(CLI::App& app, Request& request) {
    const auto addDialog = [&](const char* name, const char* what) {
        return AddDialog(app, name, what, request.dialog, request.settingsName);
    };
    const Commands commands{AddList(app), AddMonitor(app, request.monitor),
                            addDialog("configure", "Opens the configuration dialog"),
                            addDialog("connect", "Opens the connection dialog, then connects"),
                            addDialog("panel", "Shows the value panel until its window is closed")};
    for (CLI::App* const command :
         {&app, commands.list, commands.monitor, commands.configure, commands.connect, commands.panel}) {
        command->add_option("--library", request.libraryName,
                            "The library; OkoLabBoldLine.dll beside this program when left out");
    }
    return commands;
}

int Run(const Commands& commands, Request& request) {
    request.monitor.library = request.dialog.library = LibraryFile(request.libraryName);
    request.dialog.settings = PathOf(request.settingsName);
    if (commands.list->parsed()) {
        return RunList(request.monitor.library);
    }
    if (commands.configure->parsed()) {
        return RunConfigure(request.dialog);
    }
    if (commands.connect->parsed()) {
        return RunConnect(request.dialog);
    }
    if (commands.panel->parsed()) {
        return RunPanel(request.dialog);
    }
    return RunMonitor(request.monitor);
}

int Fail(const std::exception& error, ExitCode code) {
    std::cerr << "oko-host: " << error.what() << "\n";
    return code;
}

}  // namespace

int wmain(int argc,
          wchar_t** argv) {  // NOLINT(misc-use-internal-linkage,readability-identifier-naming): the system's name
    const Utf8Console console;
    CLI::App app{"Loads the OKO-Lab bold line plug-in as an imaging application would.", "oko-host"};
    app.set_version_flag("--version", std::string("oko-host ") + kOkoVersion);
    app.require_subcommand(1);
    app.footer(
        "Examples:\n"
        "  oko-host list\n"
        "  oko-host monitor --device simulator --for 10s\n"
        "  oko-host configure --device simulator\n"
        "  oko-host connect --device incubator\n"
        "  oko-host panel --device simulator\n"
        "\n"
        "oko-host COMMAND --help tells more.\n"
        "\n"
        "Exit codes: 0 done; 1 a target cannot be set; 3 the device could not be initialised; 4 no such library;\n"
        "5 no such language here; 6 the settings cannot be kept; 7 there is no screen; 100 and above: the command\n"
        "line is wrong.");
    Request request;
    const Commands commands = AddCommands(app, request);
    try {
        app.parse(Arguments(argc, argv));
        return Run(commands, request);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const LibraryError& error) {
        return Fail(error, kExitNoLibrary);
    } catch (const LanguageError& error) {
        return Fail(error, kExitNoLanguage);
    } catch (const SettingsError& error) {
        return Fail(error, kExitNotKept);
    } catch (const ScreenError& error) {
        return Fail(error, kExitNoScreen);
    }
}
