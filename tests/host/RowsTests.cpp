// --rows: a watch that ends after so many rows.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "ExitCode.h"
#include "RunHost.h"

namespace {

std::size_t Count(std::string_view text, std::string_view what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1)) {
        ++count;
    }
    return count;
}

TEST(Rows, SoManyAreShownAndKept) {
    const HostRun run("monitor --rows 3 --every 1ms --csv made");
    EXPECT_EQ(run.exitCode, kExitDone) << run.errors;
    EXPECT_NE(run.output.find(", 3 rows, "), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("  row 3\n"), std::string::npos) << run.output;
    EXPECT_EQ(run.output.find("  row 4\n"), std::string::npos) << run.output;
    EXPECT_EQ(Count(run.made, ",sample,"), 3U) << run.made;
    EXPECT_TRUE(run.journal.ends_with("Init\nClose\n")) << run.journal;
}

TEST(Rows, SummaryIsTheLastLineForPrograms) {
    const HostRun run("monitor --rows 3 --every 1ms --json");
    EXPECT_EQ(Count(run.output, "{\"row\":{"), 3U) << run.output;
    EXPECT_GT(run.output.find("{\"summary\":"), run.output.rfind("{\"row\":{")) << run.output;
}

TEST(Rows, RowsOrTimeWhicheverComesFirst) {
    EXPECT_EQ(HostRun("monitor --rows 1 --for 1h").exitCode, kExitDone);
    const HostRun run("monitor --for 100ms --every 1h --rows 1000000 --answer-within 1h");
    EXPECT_NE(run.output.find("done: simulator, "), std::string::npos) << run.output << run.errors;
}

TEST(Rows, RowsWithoutValuesCountToo) {
    const HostRun run("monitor --rows 3 --every 20ms --answer-within 50ms", "noread\n");
    EXPECT_EQ(run.exitCode, kExitDataMissing);
    EXPECT_NE(run.output.find(", 3 rows, "), std::string::npos) << run.output;
}

TEST(Rows, TargetsAreSetBeforeTheFirstOfThem) {
    const HostRun run("monitor --rows 1 --every 1ms --set CO2=7");
    EXPECT_EQ(run.exitCode, kExitDone) << run.errors;
    EXPECT_NE(run.output.find(" 7.00    7.00  %     ok\n"), std::string::npos) << run.output;
}

TEST(Rows, EveryWatchingCommandTakesThem) {
    const HostRun served("serve --http-port 0 --every 1ms --rows 2 --csv made");
    EXPECT_EQ(served.exitCode, kExitDone) << served.errors;
    EXPECT_EQ(Count(served.made, ",sample,"), 2U) << served.made;
    const HostRun traced("trace --every 1ms --rows 2", "exchanges\n");
    EXPECT_EQ(traced.exitCode, kExitDone) << traced.errors;
    EXPECT_GE(Count(traced.output, "\treadcurval CO2\t"), 2U) << traced.output;
}

void ExpectRefused(const std::string& command, const std::string& rows) {
    const HostRun run(command + " --rows " + rows);
    EXPECT_GE(run.exitCode, 100) << command << rows;
    EXPECT_NE(run.errors.find("\"" + rows + "\" is no number of rows: write 1 or more"), std::string::npos)
        << run.errors;
    EXPECT_EQ(run.journal, "");
}

TEST(Rows, WhatIsNoNumberOfRowsIsRefused) {
    for (const char* const rows : {"0", "-1", "1.5", "1e3", "+2", "many", "3rows", "18446744073709551616"}) {
        ExpectRefused("monitor", rows);
    }
    for (const char* const command : {"serve", "trace", "protocol plan.json"}) {
        ExpectRefused(command, "0");
    }
}

}  // namespace
