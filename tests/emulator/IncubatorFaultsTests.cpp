#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "incubator/DeviceFault.h"
#include "incubator/Incubator.h"
#include "incubator/RunningFaults.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "scenarios/ScenarioReader.h"

namespace emulator {

namespace {

/// A heater with a sensor that follows it, a mixer, and a sensor alone; without noise.
constexpr std::string_view kCalm = R"({
  "comPort": 5,
  "products": [
    {"number": 9, "findMs": 10000,
     "devices": [{"number": 0, "current": 37, "target": 37, "min": 20, "max": 50, "ambient": 22, "lagSeconds": 100, "overshoot": 0.1}],
     "parameters": [{"number": 107, "follows": 0, "offset": 1}]},
    {"number": 12,
     "devices": [{"number": 0, "current": 5, "max": 20, "ambient": 0.1, "lagSeconds": 100},
                 {"number": 1, "current": 10, "max": 20, "ambient": 20.9, "lagSeconds": 100},
                 {"number": 2, "current": 24, "min": 0, "max": 0, "lagSeconds": 0}]}],
  "status": [{"product": 9, "device": 0, "error": 4}, {"product": 12, "device": 0, "error": 7}]})";

class IncubatorFaultsTests : public testing::Test {
 protected:
    int Begin(const std::string& fault) { return m_incubator.Begin(ParseDeviceFault(fault)); }
    std::string Payload(const std::string& command) { return m_incubator.Execute(ParseCommand(command)).payload; }
    int Code(const std::string& command) { return m_incubator.Execute(ParseCommand(command)).code; }
    double Number(const std::string& command) { return std::stod(Payload(command)); }
    double Heat() { return Number("readcurval 9"); }

    Incubator m_incubator{ParseScenario(kCalm, "calm"), 1};
};

TEST_F(IncubatorFaultsTests, RefusedTarget_IsSaidAndStays) {
    const int number = Begin("refuse-target 9 0");
    EXPECT_EQ(Code("writesetpoint 9 0 40.0"), 3);
    EXPECT_EQ(Payload("writesetpoint 9 0 40.0"), "e target refused");
    EXPECT_EQ(Number("readsetpoint 9 0 -1"), 37.0);
    EXPECT_EQ(Code("writesetpoint 12 0 6.00"), 0);
    EXPECT_TRUE(m_incubator.End(number));
    EXPECT_EQ(Code("writesetpoint 9 0 40.0"), 0);
    EXPECT_EQ(Number("readsetpoint 9 0 -1"), 40.0);
}

TEST_F(IncubatorFaultsTests, IgnoredTarget_IsSaidToBeTakenAndIsNot) {
    Begin("ignore-target 9 0 for 10");
    EXPECT_EQ(Payload("writesetpoint 9 0 40.0"), "1");
    EXPECT_EQ(Number("readsetpoint 9 0 -1"), 37.0);
    EXPECT_EQ(Code("writesetpoint 9 0 90.0"), 3);  // what would be out of range is
    m_incubator.Advance(10.0);
    EXPECT_EQ(Payload("writesetpoint 9 0 40.0"), "1");
    EXPECT_EQ(Number("readsetpoint 9 0 -1"), 40.0);
}

TEST_F(IncubatorFaultsTests, FrozenSensor_ShowsOneValueWhileTheDeviceGoesOn) {
    m_incubator.Set(9, 0, "noise", "0.5");
    Begin("freeze 9 0 for 50");
    Payload("writesetpoint 9 0 40.0");
    for (int i = 0; i < 5; ++i) {
        m_incubator.Advance(9.0);
        EXPECT_EQ(Payload("readcurval 9"), "37.000");
        EXPECT_EQ(Payload("bl-param-read 9 107"), "38.000");
    }
    EXPECT_GT(m_incubator.State().devices[0].value, 38.0);
    m_incubator.Set(9, 0, "noise", "0");
    m_incubator.Advance(5.0);
    EXPECT_GT(Heat(), 38.0);
    EXPECT_EQ(Number("readcurval 12"), 5.0);
}

TEST_F(IncubatorFaultsTests, DriftingSensor_GoesAwayFromTheValueAndComesBack) {
    const int number = Begin("drift 9 0 -6");
    m_incubator.Advance(30.0);
    EXPECT_EQ(Heat(), 34.0);
    EXPECT_EQ(Number("bl-param-read 9 107"), 35.0);
    EXPECT_EQ(m_incubator.State().devices[0].value, 37.0);
    Begin("drift 9 0 6");  // the two cancel from now on
    m_incubator.Advance(60.0);
    EXPECT_EQ(Heat(), 34.0);
    Begin("freeze 9 0");  // where the drift has brought it
    m_incubator.Advance(60.0);
    m_incubator.End(number);
    EXPECT_EQ(Heat(), 34.0);
}

TEST_F(IncubatorFaultsTests, SpikingSensor_IsOffInOneOfSoManyReadings) {
    Begin("spike 9 0 5 3");
    std::vector<double> readings;
    for (int i = 0; i < 7; ++i) {
        readings.push_back(Heat());
    }
    EXPECT_EQ(readings, (std::vector<double>{37, 37, 42, 37, 37, 42, 37}));
    EXPECT_EQ(Number("bl-param-read 9 107"), 38.0);
    EXPECT_EQ(Number("bl-param-read 9 107"), 43.0);
    EXPECT_EQ(Number("readcurval 12"), 5.0);
}

TEST_F(IncubatorFaultsTests, StuckHeater_GoesToItsEndWhateverTheTarget) {
    const int on = Begin("stuck-on 9 0");
    m_incubator.Advance(1000.0);
    EXPECT_EQ(Heat(), 50.0);
    EXPECT_EQ(Number("readsetpoint 9 0 -1"), 37.0);
    m_incubator.End(on);
    const int off = Begin("stuck-off 9 0");
    m_incubator.Advance(1000.0);
    EXPECT_EQ(Heat(), 22.0);
    m_incubator.End(off);
    m_incubator.Advance(1000.0);
    EXPECT_EQ(Heat(), 37.0);
}

TEST_F(IncubatorFaultsTests, EmptyBottle_LetsTheGasGoToTheAmbients) {
    Begin("bottle-empty 12 1 for 1000");
    m_incubator.Advance(1000.0);
    EXPECT_EQ(Number("readcurval 12(1)"), 20.9);
    EXPECT_EQ(Number("readcurval 12(0)"), 5.0);
    m_incubator.Advance(1000.0);
    EXPECT_EQ(Number("readcurval 12(1)"), 10.0);
}

TEST_F(IncubatorFaultsTests, OpenDoor_TakesEveryValueToTheAmbientsFastAndLetsItComeBack) {
    Begin("door-open for 10");  // a tenth of the lag
    m_incubator.Advance(9.999);
    EXPECT_NEAR(Heat(), 22.0, 1.0);
    EXPECT_NEAR(Number("readcurval 12(0)"), 0.1, 0.2);
    EXPECT_NEAR(Number("readcurval 12(1)"), 20.9, 0.3);
    const double coldest = Heat();
    m_incubator.Advance(5.0);
    EXPECT_GT(Heat(), coldest - 0.1);  // nothing carries it on
    m_incubator.Advance(1000.0);
    EXPECT_EQ(Heat(), 37.0);
    EXPECT_EQ(Number("readcurval 12(1)"), 10.0);
}

TEST_F(IncubatorFaultsTests, DoorOfOneProduct_LeavesTheOthers) {
    Begin("door-open 12");
    m_incubator.Advance(100.0);
    EXPECT_EQ(Heat(), 37.0);
    EXPECT_EQ(Number("readcurval 12(0)"), 0.1);
}

TEST_F(IncubatorFaultsTests, UnpluggedProduct_IsNotThereAndComesBackAsItWent) {
    Payload("writesetpoint 9 0 40.0");
    Begin("unplug 9 for 1000");
    EXPECT_EQ(Payload("listconprod"), "12");
    EXPECT_EQ(Payload("listprod").substr(0, 5), "0 1 2");
    EXPECT_EQ(Payload("checkcon 9"), "0");
    EXPECT_EQ(Payload("status"), "12 0 7 ");
    for (const char* const command :
         {"listdev 9", "bl-param-list 9", "readcurval 9", "readcurval 9(0)", "readsetpoint 9 0 -1",
          "writesetpoint 9 0 38.0", "readmin 9 0", "readmax 9 0", "bl-param-read 9 107", "bl-param-write 9 107 1"}) {
        EXPECT_EQ(Code(command), 3) << command;
    }
    m_incubator.Execute(ParseCommand("find 9"));
    m_incubator.Advance(1.0);
    EXPECT_EQ(Payload("findstat"), "-1");  // not found, which takes no ten seconds
    EXPECT_FALSE(m_incubator.State().devices[0].plugged);
    m_incubator.Advance(999.0);
    EXPECT_TRUE(m_incubator.State().devices[0].plugged);
    EXPECT_EQ(Payload("listconprod"), "9 12");
    EXPECT_EQ(Number("readsetpoint 9 0 -1"), 40.0);
    EXPECT_EQ(Heat(), 40.0);  // it went on
}

TEST_F(IncubatorFaultsTests, RestartedServer_IsAwayAndHasForgotten) {
    Payload("comport 9 0 7");
    Payload("find 9");
    Payload("writesetpoint 9 0 40.0");
    Begin("restart");
    EXPECT_FALSE(m_incubator.IsServerUp());
    m_incubator.Advance(4.99);
    EXPECT_FALSE(m_incubator.IsServerUp());
    EXPECT_FALSE(m_incubator.State().serverUp);
    m_incubator.Advance(0.02);
    EXPECT_TRUE(m_incubator.IsServerUp());
    EXPECT_EQ(Payload("comport 9 0"), "5");
    EXPECT_EQ(Payload("findstat"), "-1");
    EXPECT_EQ(Number("readsetpoint 9 0 -1"), 40.0);  // the products remember
}

TEST_F(IncubatorFaultsTests, FaultWithATime_EndsExactlyThen) {
    Begin("refuse-target 9 0 for 30");
    m_incubator.Advance(29.999);
    EXPECT_EQ(m_incubator.Running().size(), 1U);
    m_incubator.Advance(0.001);
    EXPECT_TRUE(m_incubator.Running().empty());
    Begin("stuck-on 9 0 for 20");
    m_incubator.Advance(100'000.0);  // one step over its end
    EXPECT_EQ(Heat(), 37.0);
}

TEST_F(IncubatorFaultsTests, TimeInOnePieceAndInMany_GivesTheSame) {
    constexpr std::string_view kBusy = R"({"products": [{"number": 9, "devices": [
        {"number": 0, "current": 24, "target": 37, "min": 20, "max": 50, "lagSeconds": 60, "overshoot": 0.2}]}],
        "events": [{"at": 33.3, "do": "door-open for 7.7"}, {"at": 50, "do": "stuck-on 9 0 for 11"},
                   {"at": 70, "do": "set 9 0 target 30"}, {"at": 90, "do": "drift 9 0 2"}]})";
    for (const double end : {30.0, 35.0, 45.0, 55.0, 68.0, 75.0, 120.0}) {
        SCOPED_TRACE(end);
        Incubator whole(ParseScenario(kBusy, "busy"), 1);
        Incubator pieces(ParseScenario(kBusy, "busy"), 1);
        whole.Advance(end);
        for (int i = 0; i < 1000; ++i) {
            pieces.Advance(end / 1000.0);
        }
        pieces.Advance(end - pieces.Time());
        EXPECT_NEAR(std::stod(pieces.Execute(ParseCommand("readcurval 9")).payload),
                    std::stod(whole.Execute(ParseCommand("readcurval 9")).payload), 0.002);
        EXPECT_EQ(pieces.Running().size(), whole.Running().size());
    }
}

TEST_F(IncubatorFaultsTests, SameFaultAgain_GoesOnForLongerUnderItsNumber) {
    EXPECT_EQ(Begin("stuck-on 9 0 for 10"), 1);
    EXPECT_EQ(Begin("stuck-off 12 0 for 5"), 2);
    m_incubator.Advance(8.0);
    EXPECT_EQ(Begin("stuck-on 9 0 for 10"), 1);
    EXPECT_EQ(Begin("stuck-on 9 0 for 1"), 1);  // not for less
    const std::vector<RunningFault> running = m_incubator.Running();
    ASSERT_EQ(running.size(), 1U);
    EXPECT_EQ(running[0].since, 0.0);
    EXPECT_EQ(running[0].until, 18.0);
    EXPECT_EQ(FormatDeviceFault(running[0].fault), "stuck-on 9 0 for 10");
    EXPECT_EQ(Begin("stuck-on 9 0"), 1);
    m_incubator.Advance(100.0);
    EXPECT_EQ(m_incubator.Running().size(), 1U);
    EXPECT_TRUE(m_incubator.End(1));
    EXPECT_FALSE(m_incubator.End(1));
    EXPECT_FALSE(m_incubator.End(2));
    EXPECT_EQ(Begin("stuck-on 9 0"), 3);
}

TEST_F(IncubatorFaultsTests, WhatTheScenarioDoesNotHave_CannotFail) {
    for (const auto& [fault, complaint] : std::vector<std::pair<std::string, std::string>>{
             {"freeze 8 0", "the scenario has no product 8"},
             {"freeze 9 1", "product 9 has no device 1"},
             {"unplug 15", "the scenario has no product 15"},
             {"door-open 15", "the scenario has no product 15"},
             {"stuck-on 12 2", "device 2 of product 12 is a sensor alone, with nothing that could be stuck"}}) {
        try {
            Begin(fault);
            FAIL() << fault;
        } catch (const DeviceFaultError& error) {
            EXPECT_EQ(error.what(), complaint);
        }
    }
    EXPECT_TRUE(m_incubator.Running().empty());
}

}  // namespace

}  // namespace emulator
