// oko-host check as people and programs run it.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "RunCheck.h"

namespace {

constexpr const char* kOne = "channel/limits";

bool Says(const CheckRun& run, const std::string& text) { return run.output.find(text) != std::string::npos; }

/// Has the server's port while it lives.
class PortHolder {
 public:
    PortHolder() : m_socket(socket(AF_INET, SOCK_DGRAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(60000);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    ~PortHolder() { close(m_socket); }
    PortHolder(const PortHolder&) = delete;
    PortHolder& operator=(const PortHolder&) = delete;

 private:
    int m_socket;
};

TEST(CheckCommandTests, ChecksThatPass_AreALineEachAndTheirNumber) {
    const CheckRun run(CheckArguments({"--only", kOne, "export/texts*"}));
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(Says(run, "passed   export/texts-null\n")) << run.output;
    EXPECT_TRUE(Says(run, "passed   channel/limits\n")) << run.output;
    EXPECT_TRUE(Says(run, "\n6 checks: 6 passed\n")) << run.output;
}

TEST(CheckCommandTests, CheckThatFails_SaysWhatWasExpectedAndWhatCame) {
    const CheckRun run(CheckArguments({"--only", kOne}), "GetTemperatureLimits off");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(Says(run, "failed   channel/limits ")) << run.output;
    EXPECT_TRUE(Says(run, " GetTemperatureLimits(0): expected 21 and 51, got 21 and 52\n")) << run.output;
    EXPECT_TRUE(Says(run, "\n1 check: 1 failed\n")) << run.output;
}

TEST(CheckCommandTests, Crash_IsAVerdictThatNamesTheCallAndKeepsNobodyFromTheRest) {
    const CheckRun run(CheckArguments({"--only", kOne, "export/same-object"}), "GetTemperatureLimits crash");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(Says(run, "crashed in GetTemperatureLimits(0): SIGSEGV")) << run.output;
    EXPECT_TRUE(Says(run, "\n2 checks: 1 passed, 1 crashed\n")) << run.output;
}

TEST(CheckCommandTests, Hang_IsAVerdictThatNamesTheCallAndEndsWithItsTime) {
    const CheckRun run(CheckArguments({"--time-limit", "3s", "--only", kOne, "export/same-object"}),
                       "GetTemperatureLimits hang");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(Says(run, "hung in GetTemperatureLimits(0) for 3 s")) << run.output;
    EXPECT_TRUE(Says(run, "\n2 checks: 1 passed, 1 hung\n")) << run.output;
}

TEST(CheckCommandTests, LibraryThatDiesWhenItIsLoaded_IsToldOnce) {
    const CheckRun crash(CheckArguments({}), "load crash");
    EXPECT_EQ(crash.exitCode, 1);
    EXPECT_TRUE(Says(crash, "crashed in LoadLibrary(): SIGSEGV")) << crash.output;
    EXPECT_TRUE(Says(crash, "\n1 check: 1 crashed\n")) << crash.output;
    const CheckRun hang(CheckArguments({"--time-limit", "3s"}), "load hang");
    EXPECT_EQ(hang.exitCode, 1);
    EXPECT_TRUE(Says(hang, "hung in LoadLibrary() for 3 s")) << hang.output;
}

TEST(CheckCommandTests, LibraryThatDiesWhenItIsFreed_HasCrashed) {
    const CheckRun run(CheckArguments({"--only", kOne}), "unload crash");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(Says(run, "crashed in FreeLibrary(): SIGSEGV")) << run.output;
}

TEST(CheckCommandTests, FailureIsTheVerdict_AlsoWhereFreeingTheLibraryWouldCrash) {
    const CheckRun run(CheckArguments({"--only", "simulator/target"}), "GetTargetTemperature other");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(Says(run, "failed   simulator/target")) << run.output;
}

TEST(CheckCommandTests, WithoutReplyTimeout_SilentServersAreSkippedAndAloneAreNothing) {
    const CheckRun run(CheckArguments({"--only", "read/silent", kOne}));
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(Says(run, "skipped  read/silent ")) << run.output;
    EXPECT_TRUE(Says(run, "\n2 checks: 1 passed, 1 skipped\n")) << run.output;
    EXPECT_EQ(CheckRun(CheckArguments({"--only", "read/silent"})).exitCode, 2);
}

TEST(CheckCommandTests, NothingToCheck_IsItsOwnExitCode) {
    EXPECT_EQ(CheckRun({"check", "no-such-file.so"}).exitCode, 2);
    EXPECT_EQ(CheckRun(CheckArguments({"--only", "no/such/check"})).exitCode, 2);
    EXPECT_EQ(CheckRun({"check", std::string(OKO_PROGRAMS) + "/oko-check-no-plugin.so"}).exitCode, 2);
    EXPECT_EQ(CheckRun({"check", std::string(OKO_PROGRAMS) + "/oko-host"}).exitCode, 2);
    EXPECT_EQ(CheckRun({"check", "--list", "--only", "no/such/check"}).exitCode, 2);
    EXPECT_GE(CheckRun({"check"}).exitCode, 100);
}

TEST(CheckCommandTests, PortOfSomebodyElse_IsNothingChecked) {
    const PortHolder holder;
    EXPECT_EQ(CheckRun(CheckArguments({"--only", kOne})).exitCode, 2);
}

TEST(CheckCommandTests, Json_HasEachCheckAndTheCounts) {
    const CheckRun run(CheckArguments({"--json", "--only", kOne, "channel/step-rate"}), "NotSupported crash");
    EXPECT_EQ(run.exitCode, 1);
    const nlohmann::json json = nlohmann::json::parse(run.output);
    EXPECT_EQ(json["passed"], 1);
    EXPECT_EQ(json["crashed"], 1);
    ASSERT_EQ(json["checks"].size(), 2U);
    const nlohmann::json& crashed = json["checks"][1];
    EXPECT_EQ(crashed["name"], "channel/step-rate");
    EXPECT_EQ(crashed["device"], "incubator");
    EXPECT_EQ(crashed["verdict"], "crashed");
    EXPECT_EQ(crashed["call"], "NotSupported(0)");
    EXPECT_FALSE(crashed["holds"].get<std::string>().empty());
}

TEST(CheckCommandTests, Junit_IsWrittenBesideTheTable) {
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("oko check junit " + std::to_string(getpid()) + ".xml");
    const CheckRun run(CheckArgumentsWithSilence({"--junit", file.string(), "--only", kOne, "read/silent"}),
                       "GetTemperatureLimits off");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(Says(run, "2 checks: ")) << run.output;
    std::ifstream stream(file);
    const std::string xml{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_NE(xml.find(" tests=\"2\" failures=\"1\" errors=\"0\" skipped=\"0\" "), std::string::npos) << xml;
    std::filesystem::remove(file);
    EXPECT_EQ(CheckRun(CheckArguments({"--junit", "/no/such/folder/x.xml", "--only", kOne})).exitCode, 10);
    EXPECT_EQ(CheckRun(CheckArguments({"--junit", "/no/such/folder/x.xml", "--only", kOne}), "GetTemperatureLimits off")
                  .exitCode,
              1);
}

TEST(CheckCommandTests, Help_TellsTheExitCodesAndHidesWhatOnlyItselfStarts) {
    EXPECT_TRUE(Says(CheckRun({"check", "--help"}), "2 when\nnothing was checked"));
    const CheckRun help({"--help"});
    EXPECT_TRUE(Says(help, "  check "));
    EXPECT_FALSE(Says(help, "check-one"));
}

}  // namespace
