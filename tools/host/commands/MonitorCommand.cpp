// Shows a device's channels until the time is over.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/WatchRequest.h"
#include "commands/WatchRun.h"
#include "commands/Watching.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Snapshot.h"
#include "platform/Now.h"
#include "show/DeviceTable.h"
#include "show/Output.h"
#include "show/Screen.h"
#include "show/Table.h"
#include "text/Time.h"

namespace {

/// The monitor's terminal: tables in place, events above them.
class Terminal {
 public:
    void ShowRow(const Snapshot& snapshot) {
        Guard([&] { m_screen.Show(DeviceTable(snapshot)); });
    }

    /// Everything but the library's lines tells of the experiment; those go where errors go, as they always did.
    void ShowEvent(const Event& event) {
        Guard([&] { m_screen.MakeRoom(); });
        const std::string subject = event.channel.empty() ? "" : " " + event.channel;
        const std::string text = event.text.empty() ? "" : ": " + event.text;
        std::cerr << FormatLocal(event.when.utcMs) << "  " << EventKindName(event.kind) << subject << text << std::endl;
    }

    void Leave() { m_screen.Leave(); }

 private:
    /// The watch goes on without its view: it may have a log to keep.
    template <class Show>
    static void Guard(const Show& show) {
        try {
            show();
        } catch (const OutputError& error) {
            std::cerr << "oko-host: " << error.what() << std::endl;
        }
    }

    Screen m_screen;
};

void PrintSummary(const WatchRun& run, double seconds) {
    const Snapshot& snapshot = run.Now();
    const auto count = [&](ChannelKind kind) {
        return std::ranges::count(snapshot.channels, kind, &ChannelInfo::kind);
    };
    Print("done: " + run.Request().device.device + ", " + FormatValue(seconds) + " s, " +
          std::to_string(count(ChannelKind::Temperature)) + " temperature, " + std::to_string(count(ChannelKind::Gas)) +
          " gas and " + std::to_string(count(ChannelKind::Humidity)) + " humidity channels, " +
          std::to_string(snapshot.row) + " rows\n");
}

int RunMonitor(const WatchRequest& request) {
    Terminal terminal;
    const double begun = Now().seconds;
    WatchParts parts;
    parts.announce = [](const std::vector<std::string>& lines) { Print(JoinLines(lines)); };
    parts.onRow = [&](const Snapshot& snapshot) { terminal.ShowRow(snapshot); };
    parts.onEvent = [&](const Event& event) { terminal.ShowEvent(event); };
    parts.beforeClose = [&](const WatchRun& run) {
        terminal.Leave();
        PrintSummary(run, Now().seconds - begun);
    };
    return RunWatch(request, parts);
}

}  // namespace

void AddMonitorCommand(CLI::App& app, CommandRun& run) {
    CLI::App* const command = app.add_subcommand("monitor", "Shows all channels of a device while their values change");
    const auto request = std::make_shared<WatchRequest>();
    request->device.intervalSeconds = 0.5;
    AddDeviceOptions(*command, *request);
    AddWatchOptions(*command, *request);
    command->footer(
        "Examples:\n"
        "  oko-host monitor --device simulator --for 10s --set H301-T=38.5 --set gas:CO2=7\n"
        "  oko-host monitor --device incubator --csv night.csv --every 1s --for 3d --alarm all\n"
        "\n"
        "KIND is temperature, gas or humidity: needed for a name that stands in several kinds. Lines that the\n"
        "library logs go to the standard error output. The first Ctrl+C ends the watch, the second the program.");
    command->callback([&run, request] { run = [request] { return RunMonitor(*request); }; });
}
