// Each check sees something that is wrong, and the library's own logic passes them all.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "RunCheck.h"

namespace {

/// A check, something that it has to see (see plugin/Defect.h), and what its verdict has to say of it.
struct Row {
    const char* check;
    const char* defect;
    const char* verdict;
    const char* says;
};

constexpr std::array<Row, 111> kRows{{
    {"export/texts", "LibQueryPhysDevice off", "failed", "expected \"Incubator\""},
    {"export/texts-cut", "LibQueryPhysDevice mark", "failed", "expected \"Incub\""},
    {"export/texts-zeros", "LibQueryPhysDevice mark", "failed", "zeros behind each text"},
    {"export/texts-null", "LibQueryPhysDevice other", "failed", "LibQueryPhysDevice(0, null): expected 0, got -1"},
    {"export/texts-no-device", "LibQueryPhysDevice other", "failed", "LibQueryPhysDevice(2"},
    {"export/same-object", "LibQueryInterface off", "failed", "that of device 0"},
    {"export/no-device", "LibQueryInterface other", "failed", "LibQueryInterface(2): expected -1, got 0"},
    {"export/loaded-again", "GetTemperatureCount other", "failed", "GetTemperatureCount: expected 16, got 0"},

    {"life/fresh-counts", "GetTemperatureCount other", "failed", "GetTemperatureCount before Init: expected 16"},
    {"life/channels", "GetGasConcentration off", "failed", "different channel objects"},
    {"life/no-channel", "GetHumidifier off", "failed", "GetHumidifier"},
    {"life/unused-slots", "Unused2 other", "failed", "Unused2: expected false"},
    {"life/close-before-init", "Close crash", "crashed", "crashed in Close: SIGSEGV"},
    {"life/read-without-link", "GetCurrentGasConcentration spoil", "failed",
     "GetCurrentGasConcentration(0) without a link: expected -1 and nothing"},
    {"life/init-without-link", "Init other", "failed", "Init without ApplyConnection: expected -1, got 0"},
    {"life/init-twice", "Init other 2", "failed", "Init again: expected 0, got -1"},
    {"life/again", "GetGasConcentration anew", "failed", "GetGasConcentration(0): expected the same object"},
    {"life/close", "send connect 12 0; drop", "failed", "Close: expected the commands \"start 0\""},
    {"life/after-close", "GetTargetHumidity skip", "failed", "GetTargetHumidity(0)"},
    {"life/both-devices", "SetTargetTemperature chatter", "failed", "the simulator's channels: expected the commands"},
    {"life/configuration", "send alarm 12 0.35; twice", "failed", "ApplyConfiguration: expected the commands"},
    {"life/configuration-broken", "ApplyConfiguration other", "failed", "ApplyConfiguration: expected 0, got -1"},
    {"life/no-configuration", "GetCurrentTemperature chatter", "failed", "reads while the device is busy"},
    {"life/connection-texts", "send comport 9 0 7; as comport 9 0 8", "failed", "expected \"comport 9 0 7\""},
    {"life/handles", "leak", "failed", "handles after 40 lives"},

    {"init/commands", "send mode 13 0; drop", "failed", "Init: expected the commands"},
    {"init/changes-nothing", "send checkcon 8; as alarm 9 0.2", "failed", "alarms that Init sends: expected 0, got 1"},
    {"init/callback", "callback off", "failed", "got code 1001 with a text"},
    {"init/no-callback", "Init mark", "crashed", "in Init(null)"},
    {"init/in-init", "callback drop", "failed", "expected a call during Init"},
    {"init/refused", "receive listprod; ok", "failed", "Init that is refused: expected -1, got 0"},
    {"init/no-answer", "receive listprod; filled", "failed", "Init without an answer: expected -1, got 0"},
    {"init/silent", "send listconprod; drop", "failed", "the live channels"},
    {"init/silent-server", "patient", "hung", "hung in Init for 3 s"},
    {"init/codes-1-2", "receive listprod; ok", "failed", "Init with code 1: expected a line about it"},
    {"init/asked-again", "receive listconprod; ok", "failed", "expected 2, got 1"},
    {"init/no-products", "receive listconprod; filled", "failed", "GetGasConcentrationCount under \"value\""},
    {"init/default-limits", "receive readmin 9 0; plain", "failed", "GetTemperatureLimits(0) under \"error none\""},
    {"init/replies-that-do-not-count", "Init exit 3", "crashed", "ended the process in Init, with exit code 7"},
    {"init/twice", "stale", "failed", "expected"},
    {"init/late", "GetCurrentTemperature off", "failed", "GetCurrentTemperature(0): expected 0 and 36.412"},
    {"init/failing-product", "receive status; as 0_status_9 0 4", "failed", "the live channels: expected"},
    {"init/absent-sensor", "receive bl-param-read 9 132; plain", "failed",
     "the live channels under \"error no sensor\""},
    {"init/products", "GetName off", "failed", "the live channels of product-7"},
    {"init/start-over", "Init other 2", "failed", "Init: expected 0, got -1"},

    {"channel/names", "GetName off", "failed", "GetName(0): expected \"H301-T\", got \"?301-T\""},
    {"channel/names-cut", "GetName mark", "failed", "that nothing is written behind the buffer"},
    {"channel/current", "GetCurrentTemperature off", "failed", "expected 0 and 36.412, got 0 and 37.412"},
    {"channel/target", "send readsetpoint 12 1 -1; twice", "failed",
     "GetTargetGasConcentration(1): expected the commands"},
    {"channel/new-target", "send writesetpoint 15 0 63; as writesetpoint 15 0 62.7", "failed",
     "SetTargetHumidity(0, 62.7): expected the commands"},
    {"channel/target-clamped", "send writesetpoint 9 0 51.0; as writesetpoint 9 0 50.9", "failed",
     "GetTargetTemperature(0) after SetTargetTemperature(0, 1000): expected 0 and 51, got 0 and 50.9"},
    {"channel/sensor", "SetTargetTemperature skip", "failed", "SetTargetTemperature(1, 30): expected -1, got 0"},
    {"channel/limits", "GetTemperatureLimits off", "failed", "GetTemperatureLimits(0): expected 21 and 51"},
    {"channel/step-rate", "NotSupported other", "failed", "NotSupported(0): expected -1, got 0"},
    {"channel/tolerances", "GetTolerance off", "failed", "GetTolerance at first: expected 0.2 and 0.2"},
    {"channel/state", "GetHumidityState off", "failed", "the state of channel 0 out of its band"},
    {"channel/features", "HasFeature other", "failed", "a zone, without a set point?: expected false"},
    {"channel/air-mode", "callback drop", "failed", "after read 4: expected 1, got 0"},
    {"channel/air-mode-flickers", "receive bl-param-read 12 237; as 0_bl-param-read 12 237_1", "failed",
     "told of the air mode: expected 0, got 1"},
    {"channel/switch", "SetEnabled other", "failed", "SetEnabled(0): expected 0, got -1"},
    {"channel/null", "GetTolerance skip", "failed", "GetTolerance(0, null): expected -1, got 0"},
    {"channel/deleted", "DeletingDestructor other", "failed",
     "DeletingDestructor(0, 1): expected the object's address"},

    {"read/code-1", "GetTargetTemperature off", "failed", "GetTargetTemperature(0)"},
    {"read/code-2", "GetCurrentGasConcentration other", "failed", "GetCurrentGasConcentration(0)"},
    {"read/code-3", "receive readcurval*; ok", "failed",
     "GetCurrentTemperature(0) under \"code 3\": expected -1 and nothing, got 0 and 36.412"},
    {"read/code-4", "receive readcurval*; ok", "failed", "under \"code 4\": expected 0 and nothing, got 0 and 36.412"},
    {"read/error", "receive readcurval*; plain", "failed", "expected -1 and nothing, got 0 and 7"},
    {"read/nan", "receive readsetpoint*; plain", "failed", "GetTargetTemperature(0) under \"value nan\""},
    {"read/infinite", "receive readcurval*; plain", "failed", "expected 0 and nothing, got 0 and 7"},
    {"read/no-payload", "receive readcurval*; filled", "failed", "expected 0 and nothing, got 0 and 1"},
    {"read/empty", "receive readcurval*; filled", "failed", "expected -1 and nothing, got 0 and 1"},
    {"read/long", "receive readcurval*; long", "failed", "expected -1 and nothing, got 0 and 36.412"},
    {"read/truncate", "receive readcurval*; filled", "failed", "expected 0 and nothing, got 0 and 1"},
    {"read/garbage", "GetCurrentHumidity crash 2", "crashed", "crashed in GetCurrentHumidity(0): SIGSEGV"},
    {"read/no-separator", "receive readcurval*; filled", "failed", "expected 0 and nothing, got 0 and 1"},
    {"read/no-return", "receive readcurval*; mend", "failed", "expected 0 and nothing, got 0 and 36.412"},
    {"read/late", "GetCurrentGasConcentration throw 3", "failed",
     "GetCurrentGasConcentration(0): expected no exception, got \"out of luck\""},
    {"read/twice", "stale", "failed", "expected"},
    {"read/silent", "GetCurrentTemperature spoil", "failed", "GetCurrentTemperature(0) under \"silent\""},
    {"read/foreign-echo", "receive readcurval*; loose", "failed", "expected -1 and nothing, got 0 and 36.412"},
    {"read/loose-echo", "GetCurrentTemperature skip 3", "failed", "expected 0 and 36.412, got 0 and nothing"},
    {"read/late-for-another", "GetCurrentTemperature spoil", "failed", "around a late answer"},
    {"read/first-token", "GetCurrentHumidity off", "failed", "GetCurrentHumidity(0): expected 0 and 36.512"},

    {"set-target/code-1", "SetTargetHumidity other", "failed", "SetTargetHumidity(0, 61) under \"code 1\""},
    {"set-target/code-2", "send writesetpoint 12 0*; twice", "failed", "how often it was sent: expected 1, got 2"},
    {"set-target/code-3", "receive writesetpoint*; ok", "failed",
     "SetTargetTemperature(0, 40.5) under \"code 3\": expected -1, got 0"},
    {"set-target/code-4", "SetTargetGasConcentration other", "failed", "SetTargetGasConcentration(0, 7.25)"},
    {"set-target/error", "send writesetpoint 9*; twice", "failed", "how often it was sent: expected 1, got 2"},
    {"set-target/value", "SetTargetTemperature throw", "failed", "expected no exception, got \"out of luck\""},
    {"set-target/empty", "receive writesetpoint*; filled", "failed", "expected -1, got 0"},
    {"set-target/long", "receive writesetpoint*; long", "failed", "expected -1, got 0"},
    {"set-target/truncate", "SetTargetHumidity other", "failed", "SetTargetHumidity(0, 61)"},
    {"set-target/garbage", "send writesetpoint 15*; twice", "failed", "how often it was sent: expected 1, got 2"},
    {"set-target/no-separator", "SetTargetGasConcentration other", "failed", "SetTargetGasConcentration(0, 7.25)"},
    {"set-target/no-return", "SetTargetTemperature other", "failed", "SetTargetTemperature(0, 40.5)"},
    {"set-target/late", "send writesetpoint 9*; twice", "failed", "how often it was sent: expected 1, got 2"},
    {"set-target/twice", "stale", "failed", "expected"},
    {"set-target/silent", "SetTargetTemperature skip", "failed", "under \"silent\": expected -1, got 0"},
    {"set-target/foreign-echo", "receive writesetpoint*; loose", "failed", "expected -1, got 0"},
    {"set-target/not-read-back", "send writesetpoint 9 0 37.1; drop", "failed", "expected the commands"},

    {"simulator/asks-nobody", "GetCurrentTemperature chatter", "failed", "the simulator's whole life"},
    {"simulator/no-link", "Init other", "failed", "Init without ApplyConnection: expected 0, got -1"},
    {"simulator/channels", "GetName skip", "failed", "GetName(0): expected a name"},
    {"simulator/values-move", "GetCurrentGasConcentration fill", "failed", "got 7 all the time"},
    {"simulator/again", "Init other 2", "failed", "Init: expected 0, got -1"},
    {"simulator/target", "GetTargetTemperature off", "failed", "GetTargetTemperature(0)"},
    {"simulator/target-clamped", "SetTargetTemperature other", "failed", "SetTargetTemperature(0, 1000)"},
    {"simulator/init-twice", "Init other 2", "failed", "Init again: expected 0, got -1"},
    {"simulator/after-close", "Close skip", "failed", "after Close, once more"},
    {"simulator/connection-dialog", "ShowConnection other", "failed", "ShowConnection of the simulator"},
    {"simulator/handles", "leak", "failed", "handles after 8 lives"},
}};

/// On this system there is nothing for them to see.
const std::set<std::string> kOfWindows{"life/dialogs", "life/value-panel", "channel/change-notice"};

/// What only a server that stays silent, or is late, can show.
const std::set<std::string> kOfSilence{
    "init/silent",       "init/silent-server",     "read/silent", "read/foreign-echo", "read/late-for-another",
    "set-target/silent", "set-target/foreign-echo"};

nlohmann::json ChecksOf(const CheckRun& run) {
    const nlohmann::json json = nlohmann::json::parse(run.output, nullptr, false);
    return json.is_discarded() ? nlohmann::json::array() : json["checks"];
}

TEST(DefectTests, TheLibrarysOwnLogic_PassesAllButWhatNeedsWindows) {
    const CheckRun run(CheckArguments({"--json"}));
    EXPECT_EQ(run.exitCode, 0);
    const nlohmann::json checks = ChecksOf(run);
    EXPECT_EQ(checks.size(), kRows.size() + kOfWindows.size());
    for (const nlohmann::json& check : checks) {
        const std::string name = check["name"];
        const bool skipped = kOfWindows.contains(name) || kOfSilence.contains(name);
        EXPECT_EQ(check["verdict"], skipped ? "skipped" : "passed") << name << ": " << check["reason"];
    }
}

TEST(DefectTests, TheLibrarysOwnLogic_PassesWhatNeedsASilentServer) {
    std::vector<std::string> arguments{"--only"};
    arguments.insert(arguments.end(), kOfSilence.begin(), kOfSilence.end());
    const CheckRun run(CheckArgumentsWithSilence(arguments));
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("\n7 checks: 7 passed\n"), std::string::npos) << run.output;
}

TEST(DefectTests, EveryCheck_IsInTheTableOfDefects) {
    std::set<std::string> known = kOfWindows;
    for (const Row& row : kRows) {
        known.insert(row.check);
    }
    std::istringstream lines(CheckRun({"check", "--list"}).output);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(known.contains(line.substr(0, line.find(' ')))) << line;
    }
}

TEST(DefectTests, EveryCheck_SeesItsDefectAndNamesTheCall) {
    std::map<std::pair<std::string, bool>, std::vector<Row>> rowsByDefect;
    for (const Row& row : kRows) {
        rowsByDefect[{row.defect, kOfSilence.contains(row.check)}].push_back(row);
    }
    for (const auto& [group, rows] : rowsByDefect) {
        const std::string& defect = group.first;
        std::vector<std::string> arguments{"--json", "--only"};
        for (const Row& row : rows) {
            arguments.emplace_back(row.check);
        }
        if (defect == "patient") {
            arguments.insert(arguments.end(), {"--time-limit", "3s"});
        }
        const CheckRun run(group.second ? CheckArgumentsWithSilence(arguments) : CheckArguments(arguments), defect);
        EXPECT_EQ(run.exitCode, 1) << defect;
        const nlohmann::json checks = ChecksOf(run);
        for (const Row& row : rows) {
            const auto check = std::ranges::find_if(checks, [&](const auto& any) { return any["name"] == row.check; });
            ASSERT_NE(check, checks.end()) << row.check << " with " << defect << ": " << run.output;
            EXPECT_EQ((*check)["verdict"], row.verdict)
                << row.check << " with " << defect << ": " << (*check)["reason"];
            EXPECT_NE((*check)["reason"].get<std::string>().find(row.says), std::string::npos)
                << row.check << " with " << defect << " says " << (*check)["reason"] << ", not " << row.says;
        }
    }
}

}  // namespace
