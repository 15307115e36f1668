#include "platform/SystemFacts.h"

#include <filesystem>
#include <string>
#include <vector>

#include "model/SystemFacts.h"

// The library and its server live on Windows alone; here there is nobody to ask.

namespace {

constexpr const char* kElsewhere = "only Windows tells";

}  // namespace

Fact<std::string> FileVersion(const std::filesystem::path&) { return Fact<std::string>::Unknown(kElsewhere); }

Fact<ServerInstallation> FindServerInstallation() { return Fact<ServerInstallation>::Unknown(kElsewhere); }

Fact<std::vector<RunningProgram>> RunningServers() { return Fact<std::vector<RunningProgram>>::Unknown(kElsewhere); }

Fact<PortHolder> HolderOfServerPort() { return Fact<PortHolder>::Unknown(kElsewhere); }

Fact<ServerAnswer> AskServer(const std::string&, double) {
    return Fact<ServerAnswer>::Unknown("the server runs on Windows alone");
}

Fact<std::vector<int>> SerialPorts() { return Fact<std::vector<int>>::Unknown(kElsewhere); }

Fact<LibrarySwitches> ReadLibrarySwitches() { return Fact<LibrarySwitches>::Unknown("there is no registry here"); }
