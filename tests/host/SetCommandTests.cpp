// oko-host set as a person runs it, against a library that the tests made up: its values follow their targets at once.

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ExitCode.h"
#include "HostProcess.h"

namespace {

using Arguments = std::vector<std::string>;

class SetCommandTests : public testing::Test {
 protected:
    int Run(Arguments arguments) {
        arguments.insert(arguments.end(), {"--every", "10ms"});
        HostProcess host(folder, "set", arguments);
        const int code = host.ExitCode();
        output = host.Output();
        return code;
    }

    /// Sets a target of CO2, and is interrupted when the library hears of it. With `saying` the device takes the target
    /// only when that was said.
    int RunInterrupted(Arguments arguments, const std::string& saying = {}) {
        arguments.insert(arguments.begin(), {"CO2", "7", "--every", "10ms", "--answer-within", "1h"});
        const std::size_t before = folder.Journal().size();
        HostProcess host(folder, "set", arguments);
        EXPECT_TRUE(folder.HasHeard("set CO2", before));
        host.Signal(SIGINT);
        if (!saying.empty()) {
            EXPECT_TRUE(host.HasWritten(saying));
            folder.Tell("");
        }
        const int code = host.ExitCode();
        output = host.Output();
        return code;
    }

    bool Says(const std::string& text) const { return output.find(text) != std::string::npos; }

    nlohmann::json Outcome() const {
        const std::size_t begin = output.find("{\"channel\"");
        return begin == std::string::npos
                   ? nlohmann::json()
                   : nlohmann::json::parse(output.substr(begin, output.find('\n', begin) - begin));
    }

    HostFolder folder;
    std::string output;
};

TEST_F(SetCommandTests, Target_IsSetOnce) {
    EXPECT_EQ(Run({"CO2", "7.5"}), kExitDone);
    EXPECT_TRUE(Says("CO2 is to go to 7.5 %\n")) << output;
    EXPECT_NE(folder.Journal().find("CO2"), std::string::npos) << folder.Journal();
}

TEST_F(SetCommandTests, ValueThatSettles_EndsTheWait) {
    EXPECT_EQ(Run({"CO2", "7.5", "--wait", "--settle", "50ms", "--within", "1h"}), kExitDone);
    EXPECT_TRUE(Says("settled after ")) << output;
    EXPECT_TRUE(Says("CO2 is 7.50 %, within "));
}

TEST_F(SetCommandTests, ValueThatStaysAway_IsNotSettled) {
    folder.Tell("value CO2 1\n");
    EXPECT_EQ(Run({"CO2", "7.5", "--wait", "--settle", "50ms", "--within", "100ms"}), kExitNotSettled);
    EXPECT_TRUE(Says("oko-host: not settled within 100 ms: CO2 is 1.00 %, below ")) << output;
}

TEST_F(SetCommandTests, MissingDataOfAnotherChannel_IsNoFailure) {
    folder.Tell("novalue Humidity\n");
    EXPECT_EQ(Run({"CO2", "7.5", "--wait", "--settle", "50ms"}), kExitDone) << output;
}

TEST_F(SetCommandTests, ClampedTarget_IsToldAndAFailureWhenStrict) {
    EXPECT_EQ(Run({"H301-T", "99"}), kExitDone);
    EXPECT_TRUE(Says("asked 99, the device took ")) << output;
    EXPECT_EQ(Run({"H301-T", "99", "--strict"}), kExitClamped);
}

TEST_F(SetCommandTests, MistakesAreRefusedBeforeAnythingIsSent) {
    EXPECT_EQ(Run({"Lid", "5"}), kExitBadTarget);
    EXPECT_TRUE(Says("no channel is called \"Lid\"")) << output;
    EXPECT_EQ(Run({"Base", "5"}), kExitBadTarget);
    EXPECT_TRUE(Says("is a sensor without a target")) << output;
    EXPECT_GE(Run({"CO2", "7,5"}), 100);
    EXPECT_TRUE(Says("\"7,5\" has a decimal comma: write 7.5, with a point")) << output;
    EXPECT_EQ(folder.Journal().find("set "), std::string::npos) << folder.Journal();
}

TEST_F(SetCommandTests, Refusal_IsAFailure) {
    folder.Tell("fail CO2\n");
    EXPECT_EQ(Run({"CO2", "7"}), kExitBadTarget);
    EXPECT_TRUE(Says("could not be set")) << output;
}

TEST_F(SetCommandTests, Interrupt_EndsTheWaitUnsettled) {
    folder.Tell("value CO2 1\n");
    EXPECT_EQ(RunInterrupted({"--wait", "--json"}), kExitNotSettled) << output;
}

TEST_F(SetCommandTests, InterruptBeforeTheAnswer_IsNoSilenceOfTheDevice) {
    const std::string sentence = "oko-host: ended before the device had taken the target of CO2";
    folder.Tell("hold\n");
    EXPECT_EQ(RunInterrupted({"--wait"}, sentence), kExitNotSettled) << output;
    folder.Tell("hold\n");
    EXPECT_EQ(RunInterrupted({}, sentence), kExitNoAnswer) << output;
}

TEST_F(SetCommandTests, Json_HasTheOutcome) {
    EXPECT_EQ(Run({"CO2", "7.5", "--wait", "--settle", "50ms", "--json"}), kExitDone);
    const auto json = Outcome();
    EXPECT_EQ(json["channel"], "CO2") << output;
    EXPECT_EQ(json["asked"], 7.5);
    EXPECT_EQ(json["taken"], 7.5);
    EXPECT_EQ(json["clamped"], false);
    EXPECT_EQ(json["settled"], true);
    EXPECT_EQ(json["current"], 7.5);
    EXPECT_EQ(json["simulated"], true);
    EXPECT_EQ(json["exitCode"], 0);
}

}  // namespace
