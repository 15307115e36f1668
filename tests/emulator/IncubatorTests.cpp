#include "incubator/Incubator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "scenarios/ScenarioReader.h"

namespace emulator {

namespace {

/// A heater without noise, an air-mode gas product, and an error in the status.
constexpr std::string_view kSmall = R"({
  "name": "small", "comPort": 5,
  "products": [
    {"number": 9, "findMs": 1000,
     "devices": [{"number": 0, "current": 20, "target": 30, "min": 20, "max": 50, "lagSeconds": 10, "overshoot": 0.1},
                 {"number": 2, "current": 1, "error": " broken"}],
     "parameters": [{"number": 107, "follows": 0, "offset": 1.5}, {"number": 64, "value": "H301"}, {"number": 108, "follows": 2}]},
    {"number": 11, "devices": [{"number": 0, "current": 5, "lagSeconds": 0}],
     "parameters": [{"number": 237, "value": "0"}, {"number": 238, "value": "0"}]}],
  "status": [{"product": 9, "device": 1, "error": 4}, {"product": 11, "device": 0, "error": 7}]})";

class IncubatorTests : public testing::Test {
 protected:
    std::string Reply(const std::string& command) {
        return FormatReply(m_incubator.Execute(ParseCommand(command)), command);
    }
    double Value(const std::string& command) { return std::stod(m_incubator.Execute(ParseCommand(command)).payload); }

    Incubator m_incubator{ParseScenario(kSmall, "small"), 1};
};

TEST_F(IncubatorTests, EveryCommand_HasItsReply) {
    struct Case {
        const char* command;
        const char* reply;
    };
    for (const Case& row : std::vector<Case>{
             {"listprod", "0_listprod_0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17\r"},
             {"listconprod", "0_listconprod_9 11\r"},
             {"comport 9 0", "0_comport 9 0_5\r"},
             {"comport 9 0 3", "0_comport 9 0 3_1\r"},
             {"comport 12 1 3", "0_comport 12 1 3_1\r"},
             {"listdev 9", "0_listdev 9_0 2\r"},
             {"bl-param-list 9", "0_bl-param-list 9_64 107 108\r"},
             {"mode 9 0", "0_mode 9 0_1\r"},
             {"checkcon 9", "0_checkcon 9_1\r"},
             {"checkcon 8", "0_checkcon 8_0\r"},
             {"start 1", "0_start 1_1\r"},
             {"start 0", "0_start 0_1\r"},
             {"status", "0_status_9 1 4 11 0 7 \r"},
             {"connect 9 0", "0_connect 9 0_1\r"},
             {"readcurval 9", "0_readcurval 9_20.000\r"},
             {"readcurval 9(0)", "0_readcurval 9(0)_20.000\r"},
             {"readcurval 9(1)", "0_readcurval 9(1)_nan\r"},
             {"readcurval 9(2)", "0_readcurval 9(2)_e broken\r"},
             {"readsetpoint 9 0 -1", "0_readsetpoint 9 0 -1_30.000\r"},
             {"readmin 9 0", "0_readmin 9 0_20.000\r"},
             {"readmax 9 0", "0_readmax 9 0_50.000\r"},
             {"bl-param-read 9 64", "0_bl-param-read 9 64_H301\r"},
             {"bl-param-read 9 107", "0_bl-param-read 9 107_21.500\r"},
             {"bl-param-read 9 108", "0_bl-param-read 9 108_e broken\r"},
             {"alarm 9 0.2", "0_alarm 9 0.2_1\r"},
             {"alarm 11 0.50", "0_alarm 11 0.50_1\r"},
         }) {
        SCOPED_TRACE(row.command);
        EXPECT_EQ(Reply(row.command), row.reply);
    }
}

TEST_F(IncubatorTests, WhatIsNotUnderstood_IsRefused) {
    for (const char* const command : {"",
                                      "nonsense",
                                      "listdev 8",
                                      "listdev",
                                      "listdev x",
                                      "bl-param-list 8",
                                      "readcurval 8",
                                      "readcurval",
                                      "readsetpoint 9 5 -1",
                                      "readmin 8 0",
                                      "bl-param-read 9 1",
                                      "bl-param-write 9 238",
                                      "writesetpoint 9 0",
                                      "writesetpoint 9 0 nan",
                                      "writesetpoint 9 0 90.0",
                                      "writesetpoint 9 0 19.9",
                                      "alarm 9 x",
                                      "comport 9 0 x",
                                      "comport 9",
                                      "comport 9 0 3 4",
                                      "comport x 0",
                                      "listprod 1",
                                      "listconprod 9",
                                      "listdev 9 0",
                                      "mode 9",
                                      "start",
                                      "status 9",
                                      "find",
                                      "findstat 9",
                                      "readcurval 9(0)1",
                                      "readsetpoint 9 0",
                                      "readmin 9",
                                      "readmax 9 0 1",
                                      "bl-param-read 9 64 1",
                                      "bl-param-write 11 238 1 1",
                                      "alarm 9 0.2 0.2"}) {
        SCOPED_TRACE(testing::PrintToString(std::string(command)));
        EXPECT_EQ(Reply(command).substr(0, 2), "3_");
        EXPECT_EQ(m_incubator.Execute(ParseCommand(command)).payload.front(), 'e');
    }
}

TEST_F(IncubatorTests, ComPort_IsKeptForEachLink) {
    Reply("comport 12 1 7");
    EXPECT_EQ(Reply("comport 12 1"), "0_comport 12 1_7\r");
    EXPECT_EQ(Reply("comport 12 0"), "0_comport 12 0_5\r");
    Reply("comport 12 1 8");
    EXPECT_EQ(Reply("comport 12 1"), "0_comport 12 1_8\r");
}

TEST_F(IncubatorTests, SetPoint_IsStoredAndApproachedWithOvershoot) {
    EXPECT_EQ(Reply("writesetpoint 9 0 40.0"), "0_writesetpoint 9 0 40.0_1\r");
    EXPECT_EQ(Value("readsetpoint 9 0 -1"), 40.0);
    double highest = 0.0;
    double last = 20.0;
    for (int i = 0; i < 400; ++i) {
        m_incubator.Advance(0.1);
        last = Value("readcurval 9");
        highest = std::max(highest, last);
    }
    EXPECT_NEAR(last, 40.0, 0.5);
    EXPECT_NEAR(highest, 42.0, 0.5);  // a tenth of the step of twenty
}

TEST_F(IncubatorTests, HugeStepsOfTime_StayStable) {
    for (const double seconds : {0.0, 1e-9, 5.0, 1e6}) {
        SCOPED_TRACE(seconds);
        m_incubator.Advance(seconds);
        EXPECT_TRUE(std::isfinite(Value("readcurval 9")));
        EXPECT_LT(Value("readcurval 9"), 60.0);
    }
}

TEST_F(IncubatorTests, WithoutLag_ValuesJump) {
    Reply("writesetpoint 11 0 7.00");
    m_incubator.Advance(0.001);
    EXPECT_EQ(Value("readcurval 11(0)"), 7.0);
}

TEST_F(IncubatorTests, AirMode_FollowsItsSwitch) {
    EXPECT_EQ(Reply("bl-param-read 11 237"), "0_bl-param-read 11 237_0\r");
    EXPECT_EQ(Reply("bl-param-write 11 238 1"), "0_bl-param-write 11 238 1_1\r");
    EXPECT_EQ(Reply("bl-param-read 11 237"), "0_bl-param-read 11 237_1\r");
    Reply("bl-param-write 11 238 0");
    EXPECT_EQ(Reply("bl-param-read 11 237"), "0_bl-param-read 11 237_0\r");
}

TEST_F(IncubatorTests, Search_TakesItsTime) {
    EXPECT_EQ(Reply("findstat"), "0_findstat_-1\r");
    EXPECT_EQ(Reply("find 9"), "0_find 9_1\r");
    EXPECT_EQ(Reply("findstat"), "0_findstat_0\r");
    m_incubator.Advance(0.5);
    EXPECT_EQ(Reply("findstat"), "0_findstat_50\r");
    m_incubator.Advance(0.5);
    EXPECT_EQ(Reply("findstat"), "0_findstat_-1\r");
    Reply("find 8");  // not connected: found out sooner
    m_incubator.Advance(0.2);
    EXPECT_EQ(Reply("findstat"), "0_findstat_-1\r");
}

TEST(IncubatorNoiseTests, SameSeed_RepeatsARun) {
    const auto run = [](unsigned seed) {
        Incubator incubator(LoadScenario("product-9"), seed);
        std::string values;
        for (int i = 0; i < 20; ++i) {
            incubator.Advance(0.5);
            values += incubator.Execute(ParseCommand("readcurval 9")).payload + " ";
        }
        return values;
    };
    EXPECT_EQ(run(7), run(7));
    EXPECT_NE(run(7), run(8));
}

TEST(IncubatorScenarioTests, NoFailingDevice_StatusHasNoTriples) {
    Incubator incubator(LoadScenario("full-incubator"), 1);
    EXPECT_EQ(incubator.Execute(ParseCommand("status")).payload, " ");
}

}  // namespace

}  // namespace emulator
