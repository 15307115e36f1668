// One process owns the incubator, and everyone looks at its page.

#include <cstdint>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ExitCode.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/WatchRequest.h"
#include "commands/WatchRun.h"
#include "commands/Watching.h"
#include "device/MessageQueue.h"
#include "model/DeviceMessage.h"
#include "model/Event.h"
#include "model/FindChannel.h"
#include "model/Snapshot.h"
#include "page/LivePage.h"
#include "show/Events.h"
#include "show/Output.h"
#include "show/Summary.h"

namespace {

/// A target that somebody at the page wants.
struct WantedTarget {
    std::uint64_t request = 0;
    std::string key;
    double value = 0.0;
};

struct ServeOptions {
    WatchRequest watch;
    LivePage::Options page;
    std::string tokenFile;
};

/// The first line of the file, which others than its owner should not be able to read.
std::optional<std::string> ReadToken(const std::string& file) {
    std::ifstream stream(PathOf(file));
    std::string token;
    return std::getline(stream, token) && !token.empty() ? std::optional(token) : std::nullopt;
}

bool IsOfThisComputer(const std::string& address) { return address.starts_with("127.") || address == "::1"; }

/// What the page's readers want is asked of the device by the main thread.
void PassOn(const WantedTarget& wanted, WatchRun& run, LivePage& page) {
    const auto channel = FindChannelWithTarget(run.Now().channels, wanted.key);
    if (!channel) {
        page.TargetDone(wanted.request, std::nullopt);
        return;
    }
    run.SetTarget(*channel, wanted.value, [&page, request = wanted.request](const device_message::TargetSet& set) {
        page.TargetDone(request, set.accepted ? set.taken : std::nullopt);
    });
}

int RunServe(ServeOptions options) {
    if (!options.tokenFile.empty()) {
        const auto token = ReadToken(options.tokenFile);
        if (!token) {
            std::cerr << "oko-host: " << options.tokenFile << " holds no token: write one into its first line\n";
            return kExitBadFile;
        }
        options.page.token = *token;
    }
    MessageQueue<WantedTarget> wanted;
    LivePage page(options.page, [&wanted](std::uint64_t request, const std::string& key, double value) {
        wanted.Push({request, key, value});
    });
    if (const auto error = page.Start()) {  // before the device is touched
        std::cerr << "oko-host: " << *error << "\n";
        return kExitNotServed;
    }

    WatchRun* watch = nullptr;
    WatchParts parts;
    parts.announce = [&](const std::vector<std::string>& lines) {
        Print(JoinLines(lines) + "page: " + page.Url() + "\n");
        if (options.page.allowSet || !IsOfThisComputer(options.page.address)) {
            Print("page with its token, for those who may " +
                  std::string(options.page.allowSet ? "set targets: " : "read it: ") + page.UrlWithToken() + "\n");
        }
    };
    parts.onOpened = [&watch](WatchRun& run) {
        watch = &run;
        return static_cast<int>(kExitDone);
    };
    parts.onRow = [&page](const Snapshot& snapshot) { page.Publish(snapshot); };
    parts.onEvent = [&page](const Event& event) {
        page.Publish(event);
        std::cerr << EventLine(event) << std::endl;
    };
    parts.isEnough = [&] {
        while (const auto target = wanted.PopFor(0.0)) {
            PassOn(*target, *watch, page);
        }
        return false;
    };
    parts.beforeClose = [](const WatchRun& run) { Print(JoinLines(FormatSummary(run.MakeSummary()))); };
    const int code = RunWatch(options.watch, parts);
    page.Stop();
    return code;
}

}  // namespace

void AddServeCommand(Command& program) {
    Command command = program.AddCommand("serve", "Watches a device and shows it on a page for everyone's browser");
    const auto options = std::make_shared<ServeOptions>();
    AddDeviceOptions(command, options->watch);
    AddWatchOptions(command, options->watch);
    command
        .AddOption("--address", options->page.address,
                   "The address to listen on; others than this computer see the page with a token alone")
        .ShowDefault();
    command.AddOption("--http-port", options->page.port, "The page's port; 0 takes a free one").ShowDefault();
    command.AddOption("--host-name", options->page.hostNames,
                      "A name by which the page may be called; may be repeated");
    command.AddFlag("--allow-set", options->page.allowSet, "Lets those with the token set targets");
    command.AddOption("--token", options->page.token, "The token; made up and shown when left out");
    command.AddOption("--token-file", options->tokenFile, "A file whose first line is the token");
    command.Footer(
        "Examples:\n"
        "  oko-host serve --device simulator\n"
        "  oko-host serve --device incubator --csv night.csv --alarm all --allow-set\n"
        "  oko-host serve --address 192.168.1.20 --host-name incubator-3 --token-file token.txt\n"
        "\n"
        "/metrics is for Prometheus, /api/channels for programs. Ctrl+C ends the watch and the page.");
    command.Run([options] { return RunServe(*options); });
}
