// Shows a device's channels until the time is over.

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/WatchRequest.h"
#include "commands/WatchRun.h"
#include "commands/Watching.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Snapshot.h"
#include "show/DeviceTable.h"
#include "show/Events.h"
#include "show/Output.h"
#include "show/Screen.h"
#include "show/SnapshotJson.h"
#include "show/Summary.h"
#include "text/Number.h"

namespace {

/// The monitor's terminal: tables in place, events above them.
class Terminal {
 public:
    void ShowRow(const Snapshot& snapshot) { m_screen.Show(DeviceTable(snapshot)); }

    /// Where the library's lines and errors always went.
    void ShowEvent(const Event& event) {
        m_screen.MakeRoom();
        std::cerr << EventLine(event) << std::endl;
    }

    void Leave() { m_screen.Leave(); }

 private:
    Screen m_screen;
};

std::string DoneLine(const WatchRun& run) {
    const Snapshot& snapshot = run.Now();
    const auto count = [&](ChannelKind kind) {
        return std::ranges::count(snapshot.channels, kind, &ChannelInfo::kind);
    };
    const Summary summary = run.MakeSummary();
    return "done: " + run.Request().device.device + ", " + FormatFixed(summary.seconds, 2) + " s, " +
           std::to_string(count(ChannelKind::Temperature)) + " temperature, " +
           std::to_string(count(ChannelKind::Gas)) + " gas and " + std::to_string(count(ChannelKind::Humidity)) +
           " humidity channels, " + std::to_string(snapshot.row) + " rows, " +
           std::to_string(summary.statistics.Moved()) + " of " + std::to_string(snapshot.channels.size()) +
           " values moved";
}

WatchParts ForPeople(Terminal& terminal) {
    WatchParts parts;
    parts.announce = AnnounceForPeople(false);
    parts.onRow = [&terminal](const Snapshot& snapshot) { terminal.ShowRow(snapshot); };
    parts.onEvent = [&terminal](const Event& event) { terminal.ShowEvent(event); };
    parts.beforeClose = [&terminal](const WatchRun& run) {
        terminal.Leave();
        Print(DoneLine(run) + "\n" + JoinLines(FormatSummary(run.MakeSummary())));
    };
    return parts;
}

/// A line of JSON for each row and event, and one at the end; what is said to people goes where errors go.
WatchParts ForPrograms() {
    WatchParts parts;
    parts.announce = AnnounceForPeople(true);
    parts.onRow = [](const Snapshot& snapshot) { Print("{\"row\":" + SnapshotJson(snapshot, false) + "}\n"); };
    parts.onEvent = [](const Event& event) { Print("{\"event\":" + EventJson(event) + "}\n"); };
    parts.beforeClose = [](const WatchRun& run) { Print("{\"summary\":" + SummaryJson(run.MakeSummary()) + "}\n"); };
    return parts;
}

int RunMonitor(const WatchRequest& request, bool json) {
    Terminal terminal;
    return RunWatch(request, json ? ForPrograms() : ForPeople(terminal));
}

}  // namespace

void AddMonitorCommand(Command& program) {
    Command command = program.AddCommand("monitor", "Shows all channels of a device while their values change");
    const auto request = std::make_shared<WatchRequest>();
    request->device.intervalSeconds = 0.5;
    AddDeviceOptions(command, *request);
    AddWatchOptions(command, *request);
    command.Footer(
        "Examples:\n"
        "  oko-host monitor --device simulator --for 10s --set H301-T=38.5 --set gas:CO2=7\n"
        "  oko-host monitor --device incubator --csv night.csv --every 1s --for 3d --alarm all\n"
        "\n"
        "KIND is temperature, gas or humidity: needed for a name that stands in several kinds. Lines that the\n"
        "library logs go to the standard error output. The first Ctrl+C ends the watch, the second the program.");
    const auto json = std::make_shared<bool>(false);
    command.AddFlag("--json", *json, "A line of JSON for each row and event, instead of tables");
    command.Run([request, json] { return RunMonitor(*request, *json); });
}
