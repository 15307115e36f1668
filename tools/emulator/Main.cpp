// oko-control-emulator: a stand-in for the OKO-Control Server.

#include <exception>
#include <iostream>
#include <variant>

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

int Act(const Options& options) {
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
        Install(options.install, options.displayName, options.installed);
    } else {
        Run(options);
    }
    return kExitDone;
}

int Main(int argc, char** argv) {
    try {
        const std::variant<Options, int> read = ReadOptions(argc, argv);
        const int* const exitCode = std::get_if<int>(&read);
        return exitCode != nullptr ? *exitCode : Act(std::get<Options>(read));
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
