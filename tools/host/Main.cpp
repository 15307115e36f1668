// oko-host: loads the plug-in's library as an imaging application would.

#include <CLI/CLI.hpp>
#include <iostream>
#include <map>

#include "DialogCommands.h"
#include "ExitCode.h"
#include "Library.h"
#include "ListCommand.h"
#include "MonitorCommand.h"

namespace {

/// Durations as people write them: "10s", "500ms", "2min"; a bare number is seconds.
CLI::AsNumberWithUnit DurationUnits() {
    const std::map<std::string, unsigned> milliseconds{{"ms", 1}, {"s", 1000}, {"min", 60'000}, {"h", 3'600'000}};
    return CLI::AsNumberWithUnit(milliseconds, CLI::AsNumberWithUnit::UNIT_OPTIONAL, "TIME");
}

void AddMonitor(CLI::App& app, MonitorOptions& options) {
    app.add_option("--device", options.device, "Which device to open")
        ->check(CLI::IsMember({"simulator", "incubator"}))
        ->capture_default_str();
    app.add_option("--for", options.durationMs, "How long, such as 10s or 2min; until Ctrl+C when left out")
        ->transform(DurationUnits());
    app.add_option("--every", options.intervalMs, "Time between two tables, 500ms when left out")
        ->transform(DurationUnits())
        ->check(CLI::PositiveNumber);
    app.add_option("--set", options.targets, "Sets a target first: NAME=VALUE, or KIND:NAME=VALUE; may be repeated");
    app.add_option("--port", options.port, "The incubator's COM port")->check(CLI::Range(1, 256));
    app.footer(
        "Examples:\n"
        "  oko-host monitor --device simulator --for 10s --set H301-T=38.5 --set CO2=7\n"
        "  oko-host monitor --device incubator --port 3\n"
        "\n"
        "KIND is temperature, gas or humidity. Lines that the library logs go to the standard error output.");
}

/// The commands that open a dialog.
CLI::App* AddDialog(CLI::App& app, const char* name, const char* what, DialogOptions& options) {
    CLI::App* const command = app.add_subcommand(name, what);
    command->add_option("--device", options.device, "Which device to open")
        ->check(CLI::IsMember({"simulator", "incubator"}))
        ->capture_default_str();
    command->add_option("--settings", options.settings, "Where the settings texts are kept")->capture_default_str();
    command->footer(
        std::string("Example:\n  oko-host ") + name +
        " --device incubator\n\n"
        "The dialogs' language is the system's; no process can choose it for itself. Under Wine it follows\n"
        "the environment: OKO_LANGUAGE=de_DE scripts/wine ...");
    return command;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Loads the OKO-Lab bold line plug-in as an imaging application would."};
    app.require_subcommand(1);
    app.footer(
        "Examples:\n"
        "  oko-host list\n"
        "  oko-host monitor --device simulator --for 10s\n"
        "  oko-host configure --device simulator");
    std::string libraryName;
    app.add_option("--library", libraryName, "The library; OkoLabBoldLine.dll beside this program when left out");

    MonitorOptions monitor;
    CLI::App* const list = app.add_subcommand("list", "Shows the library's devices");
    AddMonitor(*app.add_subcommand("monitor", "Shows all channels of a device while their values change"), monitor);
    DialogOptions dialog;
    const CLI::App* const configure = AddDialog(app, "configure", "Opens the configuration dialog", dialog);
    const CLI::App* const connect = AddDialog(app, "connect", "Opens the connection dialog", dialog);
    const CLI::App* const panel = AddDialog(app, "panel", "Shows the value panel until its window is closed", dialog);
    CLI11_PARSE(app, argc, argv);

    try {
        const std::filesystem::path library = libraryName.empty() ? DefaultLibraryFile() : libraryName;
        if (list->parsed()) {
            return RunList(library);
        }
        dialog.library = library;
        if (configure->parsed()) {
            return RunConfigure(dialog);
        }
        if (connect->parsed()) {
            return RunConnect(dialog);
        }
        if (panel->parsed()) {
            return RunPanel(dialog);
        }
        monitor.library = library;
        return RunMonitor(monitor);
    } catch (const LibraryError& error) {
        std::cerr << "oko-host: " << error.what() << "\n";
        return kExitNoLibrary;
    }
}
