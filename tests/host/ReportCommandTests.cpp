// `oko-host report`, from the command line to its file.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "ExitCode.h"
#include "commands/CommandLine.h"
#include "keep/CsvLog.h"
#include "model/ChannelInfo.h"
#include "model/Reading.h"
#include "model/Snapshot.h"

namespace {

namespace fs = std::filesystem;

class ReportCommand : public testing::Test {
 protected:
    void SetUp() override {
        folder = fs::temp_directory_path() / ("oko-report-" + std::to_string(getpid()));
        fs::create_directory(folder);
        log = folder / "night.csv";
        Snapshot snapshot;
        snapshot.when = {1'795'297'200'000, 1.0};
        snapshot.device = {"OKO-Lab bold line Simulator", true, std::nullopt};
        snapshot.channels = {{ChannelKind::Gas, 0, "CO2", "CO2", true, 0.0, 20.0, 0.5, 0.5}};
        snapshot.statuses.resize(1);
        snapshot.statuses[0].reading = {5.1, 5.0, ChannelState::Within, false};
        CsvLog(log, snapshot, CsvLog::IfThere::Refuse).AddSample(snapshot);
    }
    void TearDown() override { fs::remove_all(folder); }

    /// Runs the program and keeps what it printed.
    int Run(const std::vector<std::string>& arguments) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int code = RunCommandLine(arguments);
        output = testing::internal::GetCapturedStdout();
        errors = testing::internal::GetCapturedStderr();
        return code;
    }

    static std::string Content(const fs::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    fs::path folder;
    fs::path log;
    std::string output;
    std::string errors;
};

TEST_F(ReportCommand, ReportStandsBesideItsLogAndTheDeviceIsNamed) {
    EXPECT_EQ(Run({"report", log.string()}), kExitDone);
    const fs::path report = folder / "night.html";
    EXPECT_EQ(output, report.string() + ": OKO-Lab bold line Simulator (simulated), 1 row of 1 channel, 0 events\n");
    EXPECT_TRUE(Content(report).starts_with("<!doctype html>"));
}

TEST_F(ReportCommand, OutputSaysWhereAndOldReportIsReplaced) {
    const fs::path report = folder / "other.html";
    std::ofstream(report) << "an old one";
    EXPECT_EQ(Run({"report", log.string(), "--output", report.string()}), kExitDone);
    EXPECT_TRUE(Content(report).starts_with("<!doctype html>"));
    EXPECT_FALSE(fs::exists(folder / "night.html"));
}

TEST_F(ReportCommand, UnfinishedRowIsTold) {
    std::ofstream(log, std::ios::app) << "2026-11-21T21:40";
    EXPECT_EQ(Run({"report", log.string()}), kExitDone);
    EXPECT_NE(output.find("; 1 unfinished row was left out\n"), std::string::npos) << output;
}

TEST_F(ReportCommand, FileThatIsNoLogIsRefused) {
    const fs::path other = folder / "other.csv";
    std::ofstream(other) << "time,value\n";
    EXPECT_EQ(Run({"report", other.string()}), kExitBadFile);
    EXPECT_EQ(errors, "oko-host: other.csv, line 1: this is no log of oko-host\n");
    EXPECT_FALSE(fs::exists(folder / "other.html"));
}

TEST_F(ReportCommand, FileThatIsNotThereIsRefused) {
    EXPECT_EQ(Run({"report", (folder / "morning.csv").string()}), kExitBadFile);
    EXPECT_NE(errors.find("cannot read"), std::string::npos) << errors;
}

TEST_F(ReportCommand, FullDiskIsAnError) {
    EXPECT_EQ(Run({"report", log.string(), "--output", "/dev/full"}), kExitNotWritten);
    EXPECT_EQ(errors, "oko-host: cannot write /dev/full\n");
}

TEST_F(ReportCommand, HalfAReportIsNotLeft) {
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{50'000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    const int code = Run({"report", log.string()});
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(code, kExitNotWritten);
    EXPECT_FALSE(fs::exists(folder / "night.html"));
}

TEST_F(ReportCommand, LogIsNeverReplaced) {
    const std::string before = Content(log);
    EXPECT_EQ(Run({"report", log.string(), "--output", (folder / "." / "night.csv").string()}), kExitNotWritten);
    EXPECT_EQ(Content(log), before);
}

}  // namespace
