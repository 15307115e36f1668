// The library's devices, and what channels one of them has.

#include <cstdint>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ExitCode.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/WatchRequest.h"
#include "commands/WatchRun.h"
#include "commands/Watching.h"
#include "device/Library.h"
#include "model/Snapshot.h"
#include "oko/LibQuery.h"
#include "show/ChannelList.h"
#include "show/Output.h"

namespace {

using Json = nlohmann::ordered_json;

struct ListRequest {
    WatchRequest watch;
    bool json = false;
};

/// The word that the other commands know it by.
const char* DeviceWord(std::uint32_t index) { return index == oko::kSimulatorDevice ? "simulator" : "incubator"; }

int ListDevices(const ListRequest& request) {
    const Library library(request.watch.device.library);
    Json devices = Json::array();
    std::string lines;
    std::uint32_t index = 0;
    for (auto texts = library.Texts(index); texts; texts = library.Texts(++index)) {
        lines += std::to_string(index) + "  " + texts->type + "  " + texts->name + "\n";
        devices.push_back(
            {{"index", index}, {"type", texts->type}, {"name", texts->name}, {"device", DeviceWord(index)}});
    }
    Print(request.json ? Json{{"devices", devices}}.dump(2, ' ', false, Json::error_handler_t::replace) + "\n" : lines);
    return kExitDone;
}

int RunListChannels(const ListRequest& request) {
    WatchParts parts;
    parts.announce = [&](const std::vector<std::string>& lines) {
        if (request.json) {
            std::cerr << JoinLines(lines) << std::flush;  // the output is for a program
        } else {
            Print(JoinLines(lines));
        }
    };
    parts.onOpened = [&](const WatchRun& run) {
        const Snapshot& now = run.Now();
        Print(request.json ? ChannelListJson(now.device, now.channels)
                           : JoinLines(ChannelList(now.device, now.channels)));
        return kExitDone;
    };
    parts.isEnough = [] { return true; };
    return RunWatch(request.watch, parts);
}

}  // namespace

void AddListCommand(Command& program) {
    Command list = program.AddCommand("list", "Shows the library's devices, or a device's channels");
    Command devices = list.AddCommand("devices", "Shows the library's devices, as \"list\" alone does");
    Command channels = list.AddCommand("channels", "Shows what each channel of a device is called and what can be set");
    const auto request = std::make_shared<ListRequest>();
    request->watch.device.readChannels = false;
    AddLibraryOption(list, request->watch.device.library);
    AddLibraryOption(devices, request->watch.device.library);
    AddDeviceOptions(channels, request->watch);
    for (Command command : {list, devices, channels}) {
        command.AddFlag("--json", request->json, "Writes JSON, for programs");
    }
    list.Footer(
        "Examples:\n"
        "  oko-host list --library OkoLabBoldLine.dll\n"
        "  oko-host list channels --device incubator\n"
        "  oko-host list channels --json");
    channels.Footer(
        "A channel is named by its key where a command wants one. From \"min\" to \"max\" a target may lie; \"below\"\n"
        "and \"above\" are how far under and over it a value still counts as reached. For gases and humidity the "
        "library\n"
        "tells no narrower range than 0 to 99.99: the device may take less, and \"set\" says what it took. To know "
        "all\n"
        "of it the device is started and ended again; what that sends to an incubator is said first.");
    list.Run([channels, request] { return channels.IsChosen() ? RunListChannels(*request) : ListDevices(*request); });
}
