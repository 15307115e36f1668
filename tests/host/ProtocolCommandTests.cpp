// oko-host protocol as a person runs it, against a library that the tests made up.

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "../Patience.h"
#include "ExitCode.h"
#include "HostProcess.h"
#include "commands/ProtocolFile.h"

namespace {

using Arguments = std::vector<std::string>;

constexpr const char* kPlan = R"({"name": "Short", "settle": "50ms", "steps": [
    {"at": "0s", "channel": "H301-T", "value": 38},
    {"at": "0s", "channel": "CO2", "value": 7, "hold": "50ms"},
    {"at": "50ms", "channel": "CO2", "value": 6}]})";

class ProtocolCommandTests : public testing::Test {
 protected:
    int Run(Arguments arguments) {
        arguments.insert(arguments.begin(), "plan.json");
        arguments.insert(arguments.end(), {"--every", "10ms"});
        HostProcess host(folder, "protocol", arguments);
        const int code = host.ExitCode();
        output = host.Output();
        return code;
    }

    bool Says(const std::string& text) const { return output.find(text) != std::string::npos; }
    bool WasSet() const { return folder.Journal().find("set ") != std::string::npos; }

    HostFolder folder;
    std::string output;
};

TEST_F(ProtocolCommandTests, RunsToItsEndInOrder) {
    folder.Write("plan.json", kPlan);
    EXPECT_EQ(Run({}), kExitDone);
    const std::size_t first = output.find("step 2: CO2 is to go to 7.00 %");
    const std::size_t settled = output.find("step 2: CO2 has settled, and is held for 50 ms");
    const std::size_t last = output.find("step 3: CO2 is to go to 6.00 %");
    EXPECT_TRUE(first < settled && settled < last && last != std::string::npos) << output;
    EXPECT_TRUE(Says("the protocol is over"));
    EXPECT_EQ(nlohmann::json::parse(folder.Read("plan.json.progress"))["done"], true);
    EXPECT_EQ(Run({"--resume"}), kExitBadFile);
    EXPECT_TRUE(Says("the protocol is over; leave out --resume to begin anew")) << output;
    EXPECT_EQ(Run({}), kExitDone) << "one that is over may begin anew: " << output;
}

TEST_F(ProtocolCommandTests, DryRunShowsThePlanAndSetsNothing) {
    folder.Write("plan.json", kPlan);
    EXPECT_EQ(Run({"--dry-run"}), kExitDone);
    EXPECT_TRUE(Says("protocol \"Short\": 3 steps, at least 150 ms\n")) << output;
    EXPECT_TRUE(Says("   3  50 ms  CO2 "));
    EXPECT_FALSE(WasSet()) << folder.Journal();
    EXPECT_FALSE(std::filesystem::exists(folder.Path("plan.json.progress")));
}

TEST_F(ProtocolCommandTests, WhatTheLimitsForbidIsRefusedBeforeAnythingIsSet) {
    folder.Write("plan.json", R"({"steps": [{"at": 0, "channel": "CO2", "value": 5},
                                            {"at": 1, "channel": "H301-T", "value": 99},
                                            {"at": 2, "channel": "Lid", "value": 5}]})");
    EXPECT_EQ(Run({}), kExitBadFile);
    EXPECT_TRUE(Says("plan.json: step 2: \"value\": 99 is beyond the limits of H301-T")) << output;
    EXPECT_TRUE(Says("plan.json: step 3: \"channel\": no channel is called \"Lid\""));
    EXPECT_FALSE(WasSet()) << folder.Journal();
}

TEST_F(ProtocolCommandTests, FileThatIsNoProtocolDoesNotTouchTheDevice) {
    folder.Write("plan.json", "{");
    EXPECT_EQ(Run({}), kExitBadFile);
    EXPECT_TRUE(Says("plan.json: line 1 is not JSON")) << output;
    std::filesystem::remove(folder.Path("plan.json"));
    EXPECT_EQ(Run({}), kExitBadFile);
    EXPECT_TRUE(Says("plan.json: cannot be read")) << output;
    EXPECT_EQ(folder.Journal(), "");
}

TEST_F(ProtocolCommandTests, KilledRunIsTakenUpAgain) {
    folder.Write("plan.json", R"({"settle": "50ms", "steps": [{"at": 0, "channel": "CO2", "value": 7},
                                            {"at": 0, "channel": "H301-T", "value": 38, "hold": "50ms"},
                                            {"at": 0.1, "channel": "CO2", "value": 6}]})");
    folder.Tell("value H301-T 20\n");  // it never settles while this stands
    {
        HostProcess host(folder, "protocol", {"plan.json", "--every", "10ms"});
        ASSERT_TRUE(host.HasWritten("step 2: H301-T is to go to"));
        EXPECT_TRUE(Await([&] { return std::filesystem::exists(folder.Path("plan.json.progress")); }));
        host.Signal(SIGKILL);
        EXPECT_EQ(host.ExitCode(), -SIGKILL);
    }
    folder.Tell("");
    EXPECT_EQ(Run({}), kExitBadFile);
    EXPECT_TRUE(Says("go on with --resume, or delete it to begin anew")) << output;
    EXPECT_EQ(Run({"--resume"}), kExitDone);
    EXPECT_TRUE(Says("goes on after step 2 of 3")) << output;
    EXPECT_TRUE(Says("step 2: H301-T has settled"));
    EXPECT_TRUE(Says("step 3: CO2 is to go to 6.00 %"));
    EXPECT_FALSE(Says("step 1: CO2 is to go to"));
}

TEST_F(ProtocolCommandTests, ChangedFileIsNotTakenUp) {
    folder.Write("plan.json",
                 R"({"steps": [{"at": 0, "channel": "CO2", "value": 7}, {"at": "1h", "channel": "CO2", "value": 6}]})");
    EXPECT_EQ(Run({"--rows", "2"}), kExitInterrupted) << output;
    EXPECT_TRUE(Says("ended before it was over: go on with --resume")) << output;
    folder.Write("plan.json",
                 R"({"steps": [{"at": 0, "channel": "CO2", "value": 7}, {"at": "2h", "channel": "CO2", "value": 6}]})");
    EXPECT_EQ(Run({"--resume"}), kExitBadFile);
    EXPECT_TRUE(Says("the protocol was changed since it was begun")) << output;
}

TEST_F(ProtocolCommandTests, NothingToTakeUpIsSaid) {
    folder.Write("plan.json", kPlan);
    EXPECT_EQ(Run({"--resume"}), kExitBadFile);
    EXPECT_TRUE(Says("there is nothing to go on from")) << output;
}

TEST_F(ProtocolCommandTests, WhatDoesNotSettleInTimeEndsIt) {
    folder.Write("plan.json", R"({"settle": "50ms", "within": "100ms",
                                  "steps": [{"at": 0, "channel": "CO2", "value": 7, "hold": 0}]})");
    folder.Tell("value CO2 1\n");
    EXPECT_EQ(Run({}), kExitNotSettled);
    EXPECT_TRUE(Says("step 1: CO2 has not settled within 100 ms: CO2 is 1.00 %, below ")) << output;
}

TEST_F(ProtocolCommandTests, EventsAreInTheLog) {
    folder.Write("plan.json", kPlan);
    EXPECT_EQ(Run({"--csv", "log.csv"}), kExitDone) << output;
    EXPECT_NE(folder.Read("log.csv").find(",protocol,,\"step 2: CO2 has settled, and is held for 50 ms\""),
              std::string::npos)
        << folder.Read("log.csv");
}

TEST_F(ProtocolCommandTests, JsonIsALineForEachEvent) {
    folder.Write("plan.json", kPlan);
    EXPECT_EQ(Run({"--json"}), kExitDone);
    const std::size_t begin = output.find("{\"event\":");
    ASSERT_NE(begin, std::string::npos) << output;
    EXPECT_TRUE(
        nlohmann::json::parse(output.substr(begin, output.find('\n', begin) - begin))["event"].contains("kind"));
    EXPECT_EQ(Run({"--dry-run", "--json"}), kExitDone);
    EXPECT_TRUE(Says("{\"name\":\"Short\",\"fingerprint\":")) << output;
}

TEST_F(ProtocolCommandTests, FileIsReplacedAsAWhole) {
    const auto file = folder.Path("small");
    EXPECT_TRUE(ReplaceFile(file, "one"));
    EXPECT_TRUE(ReplaceFile(file, "two"));
    EXPECT_EQ(ReadSmallFile(file), "two");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("small.unfinished")));
    EXPECT_FALSE(ReplaceFile(folder.Path("absent") / "small", "x"));
    EXPECT_FALSE(ReadSmallFile(folder.Path("absent")));
    EXPECT_FALSE(ReadSmallFile(folder.Path("")));
    folder.Write("large", std::string((1U << 20U) + 1, 'x'));
    EXPECT_FALSE(ReadSmallFile(folder.Path("large")));
}

}  // namespace
