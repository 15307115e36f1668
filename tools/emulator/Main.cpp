// oko-control-emulator: a stand-in for the OKO-Control Server.

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <iostream>

#include "control/Ctl.h"
#include "net/UdpServer.h"
#include "platform/Installation.h"
#include "program/Options.h"
#include "program/Run.h"
#include "protocol/CommandTable.h"
#include "scenarios/ScenarioReader.h"

namespace emulator {

namespace {

void ListScenarios() {
    for (const auto& [name, json] : ReadyScenarios()) {
        std::cout << name << "  " << ParseScenario(json, name).description << "\n";
    }
}

void Run(const Options& options) {
    if (options.placeholder) {
        RunPlaceholder(options);
    } else if (options.proxy) {
        RunProxy(options);
    } else if (!options.replay.empty()) {
        RunReplay(options);
    } else {
        RunScenario(options);
    }
}

int Act(const CLI::App& app, Options& options) {
    TakeServerWords(options);
    CheckCombinations(app, options);
    if (options.ctl) {
        return RunCtl(options.ctlPort, options.controlWords, std::cin, std::cout, std::cerr);
    }
    if (!options.check.empty()) {
        return RunCheck(options);
    }
    if (options.listScenarios) {
        ListScenarios();
    } else if (options.commands) {
        std::cout << FormatCommandTable();
    } else if (!options.show.empty()) {
        RunShow(options);
    } else if (options.uninstall) {
        Uninstall();
    } else if (!options.install.empty()) {
        CheckInput(options);
        Install(options.install, options.displayName, StoredOptions(app));
    } else {
        Run(options);
    }
    return kExitDone;
}

int Main(int argc, char** argv) {
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
    try {
        return Act(app, options);
    } catch (const PortError& error) {
        std::cerr << "oko-control-emulator: " << error.what() << "\n";
        return kExitPortInUse;
    } catch (const std::exception& error) {
        std::cerr << "oko-control-emulator: " << error.what() << "\n";
        return kExitBadInput;
    }
}

}  // namespace

}  // namespace emulator

// What is left to throw is want of memory.
int main(int argc, char** argv) { return emulator::Main(argc, argv); }  // NOLINT(bugprone-exception-escape)
