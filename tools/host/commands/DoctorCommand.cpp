// Looks at all that the device needs, and says what to do about what is wrong.

#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "ExitCode.h"
#include "OkoVersion.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/WatchRequest.h"
#include "device/Library.h"
#include "device/SettingsFile.h"
#include "judge/Checkup.h"
#include "model/SystemFacts.h"
#include "platform/DynamicLibrary.h"
#include "platform/SystemFacts.h"
#include "show/CheckupText.h"
#include "show/Output.h"
#include "text/Text.h"

namespace {

struct DoctorRequest {
    WatchRequest watch;
    bool json = false;
};

constexpr const char* kPromise =
    "doctor only looks: it initialises no device, starts nothing and changes nothing. The server is asked\n"
    "\"listprod\" and, when it answers, \"listconprod\".\n";

LibraryFacts LookAtLibrary(const std::filesystem::path& file) {
    LibraryFacts facts;
    facts.file = PathText(file);
    facts.found = std::filesystem::is_regular_file(file);
    if (!facts.found) {
        return facts;
    }
    facts.version = FileVersion(file);
    try {
        const DynamicLibrary loaded(file);
        for (const char* const name : {"LibQueryPhysDevice", "LibQueryInterface"}) {
            if (loaded.Find(name) == nullptr) {
                facts.missingExports.emplace_back(name);
            }
        }
        if (facts.missingExports.empty()) {
            const Library library(file);
            std::uint32_t index = 0;
            for (auto texts = library.Texts(index); texts; texts = library.Texts(++index)) {
                facts.devices.push_back(texts->name);
            }
        }
    } catch (const LibraryError& error) {
        facts.loadError = error.what();
    }
    return facts;
}

SettingsFacts LookAtSettings(const std::string& name) {
    const std::filesystem::path file = PathOf(name);
    const Settings settings = ReadSettings(file);
    return {name, std::filesystem::is_regular_file(file), PortOf(settings), ToUtf8(settings.alarms)};
}

SystemFacts Look(const WatchRequest& request) {
    constexpr double kUsual = 3.0;
    const double within = request.answerWithinSeconds > 0.0 ? request.answerWithinSeconds : kUsual;
    SystemFacts facts;
    facts.incubator = request.device.device == "incubator";
    facts.askedPort = request.port;
    facts.programVersion = kOkoVersion;
    facts.library = LookAtLibrary(request.device.library);
    facts.installation = FindServerInstallation();
    facts.servers = RunningServers();
    facts.portHolder = HolderOfServerPort();
    facts.products = AskServer("listprod", within);
    if (facts.products && !facts.products->reply.empty()) {
        facts.connectedProducts = AskServer("listconprod", within);
    }
    facts.serialPorts = SerialPorts();
    facts.settings = LookAtSettings(request.settingsFile);
    facts.switches = ReadLibrarySwitches();
    return facts;
}

int RunDoctor(const DoctorRequest& request) {
    if (request.json) {
        std::cerr << kPromise << std::flush;  // the output is for a program
    } else {
        Print(kPromise);
    }
    const auto findings = Examine(Look(request.watch));
    const std::string& device = request.watch.device.device;
    Print(request.json ? CheckupJson(findings, device) : JoinLines(CheckupText(findings, device)));
    return HasProblem(findings) ? kExitProblem : kExitDone;
}

}  // namespace

void AddDoctorCommand(Command& program) {
    Command command = program.AddCommand("doctor", "Looks at library, server, ports and settings, and says what to do");
    const auto request = std::make_shared<DoctorRequest>();
    request->watch.device.device = "incubator";
    AddDeviceOptions(command, request->watch);
    command.Find("--device").Describe("Which device is wanted; none is opened");
    command.Find("--answer-within").Describe("How long the server may take to answer; 3s when left out");
    command.Remove("--start-within");  // nothing is started
    command.AddFlag("--json", request->json, "Writes JSON, for programs");
    command.Footer(
        "Examples:\n"
        "  oko-host doctor\n"
        "  oko-host doctor --device simulator --json\n"
        "\n"
        "It only looks: it initialises no device, starts nothing and changes nothing. The exit code is 0 when there\n"
        "is no problem, and 16 when there is one.");
    command.Run([request] { return RunDoctor(*request); });
}
