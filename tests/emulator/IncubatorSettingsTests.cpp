#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "incubator/DeviceSetting.h"
#include "incubator/Incubator.h"
#include "incubator/Scenario.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "scenarios/ScenarioReader.h"

namespace emulator {

namespace {

constexpr std::string_view kTwoProducts = R"({
  "products": [
    {"number": 9, "devices": [{"number": 0, "current": 24, "target": 37, "min": 20, "max": 50, "lagSeconds": 60}],
     "parameters": [{"number": 64, "value": "H301"}, {"number": 107, "follows": 0}]},
    {"number": 11, "devices": [{"number": 0}], "parameters": [{"number": 237, "value": "0"}, {"number": 238, "value": "0"}]}],
  "status": [{"product": 9, "device": 0, "error": 4}]})";

class IncubatorSettingsTests : public testing::Test {
 protected:
    std::string Payload(const std::string& command) { return m_incubator.Execute(ParseCommand(command)).payload; }

    static std::string Complaint(const std::function<void()>& set) {
        try {
            set();
        } catch (const SettingError& error) {
            return error.what();
        }
        return "(none)";
    }

    Incubator m_incubator{ParseScenario(kTwoProducts, "plain"), 1};
};

TEST_F(IncubatorSettingsTests, DeviceIsSet_AsIfByAnotherHand) {
    m_incubator.Set(9, 0, "value", "30.5");
    EXPECT_EQ(Payload("readcurval 9"), "30.500");
    EXPECT_EQ(Payload("bl-param-read 9 107"), "30.500");
    m_incubator.Set(9, 0, "target", "40");
    EXPECT_EQ(Payload("readsetpoint 9 0 -1"), "40.000");
    m_incubator.Advance(1000.0);
    EXPECT_EQ(Payload("readcurval 9"), "40.000");
    m_incubator.Set(9, 0, "noise", "1");
    EXPECT_NE(Payload("readcurval 9"), Payload("readcurval 9"));
    m_incubator.Set(9, 0, "error", " no sensor");
    EXPECT_EQ(Payload("readcurval 9"), "e no sensor");
    EXPECT_EQ(Payload("bl-param-read 9 107"), "e no sensor");
    m_incubator.Set(9, 0, "error", "");
    m_incubator.Set(9, 0, "noise", "0");
    EXPECT_EQ(Payload("readcurval 9"), "40.000");
}

TEST_F(IncubatorSettingsTests, ValueThatIsSet_StandsStill) {
    m_incubator.Advance(10.0);
    m_incubator.Set(9, 0, "value", "37");
    m_incubator.Advance(5.0);
    EXPECT_EQ(Payload("readcurval 9"), "37.000");
}

TEST_F(IncubatorSettingsTests, WhatCannotBeSet_IsSaidAndChangesNothing) {
    struct Case {
        int product;
        int device;
        const char* what;
        const char* value;
        const char* complaint;
    };
    for (const Case& row : std::vector<Case>{
             {8, 0, "value", "1", "the scenario has no product 8"},
             {9, 3, "value", "1", "product 9 has no device 3"},
             {9, 0, "targt", "38", "\"targt\" cannot be set; there are value, target, noise and error"},
             {9, 0, "target", "50.1", "a target of 50.1 is out of range: 20 to 50"},
             {9, 0, "target", "19", "a target of 19 is out of range: 20 to 50"},
             {9, 0, "noise", "-1", "noise must not be negative"},
             {9, 0, "value", "1e10", "value must not be beyond 1000000000"},
             {9, 0, "value", "hot", "value: \"hot\" is not a number: write one such as 38.5"},
             {9, 0, "value", "nan", "value: \"nan\" is not a number: write one such as 38.5"},
         }) {
        EXPECT_EQ(Complaint([&] { m_incubator.Set(row.product, row.device, row.what, row.value); }), row.complaint);
    }
    EXPECT_EQ(Payload("readsetpoint 9 0 -1"), "37.000");
    EXPECT_EQ(Payload("readcurval 9"), "24.000");
}

TEST_F(IncubatorSettingsTests, ParameterIsSet_WithTheAirMode) {
    m_incubator.SetParameter(9, 64, "H401");
    EXPECT_EQ(Payload("bl-param-read 9 64"), "H401");
    m_incubator.SetParameter(9, 107, "1.5");
    m_incubator.Advance(10.0);
    EXPECT_EQ(Payload("bl-param-read 9 107"), "1.5");
    m_incubator.SetParameter(11, 238, "1");
    EXPECT_EQ(Payload("bl-param-read 11 237"), "1");
    m_incubator.SetParameter(11, 237, "0");
    EXPECT_EQ(Payload("bl-param-read 11 238"), "1");
    EXPECT_EQ(Complaint([&] { m_incubator.SetParameter(8, 64, "x"); }), "the scenario has no product 8");
    EXPECT_EQ(Complaint([&] { m_incubator.SetParameter(9, 65, "x"); }), "product 9 has no parameter 65");
}

TEST_F(IncubatorSettingsTests, StatusIsSet_AndTakenOutAgain) {
    m_incubator.SetStatus(9, 0, 7);
    EXPECT_EQ(Payload("status"), "9 0 7 ");
    m_incubator.SetStatus(12, 1, 4);
    EXPECT_EQ(Payload("status"), "9 0 7 12 1 4 ");
    m_incubator.SetStatus(9, 0, 0);
    EXPECT_EQ(Payload("status"), "12 1 4 ");
    EXPECT_EQ(m_incubator.State().status.size(), 1U);
    EXPECT_EQ(Complaint([&] { m_incubator.SetStatus(18, 0, 1); }), "the server knows no product 18");
    EXPECT_EQ(Complaint([&] { m_incubator.SetStatus(9, 1000, 1); }), "there is no device 1000");
    EXPECT_EQ(Complaint([&] { m_incubator.SetStatus(9, 0, 1000); }), "an error is a number from 1 to 999, not 1000");
    EXPECT_EQ(Complaint([&] { m_incubator.SetStatus(9, 0, -1); }), "an error is a number from 1 to 999, not -1");
}

TEST_F(IncubatorSettingsTests, State_IsOfEveryDevice) {
    m_incubator.Advance(12.5);
    m_incubator.Set(9, 0, "error", "broken");
    const IncubatorState state = m_incubator.State();
    EXPECT_EQ(state.seconds, 12.5);
    EXPECT_EQ(m_incubator.Time(), 12.5);
    EXPECT_TRUE(state.serverUp);
    ASSERT_EQ(state.devices.size(), 2U);
    EXPECT_EQ(state.devices[0].product, 9);
    EXPECT_EQ(state.devices[0].device, 0);
    EXPECT_GT(state.devices[0].value, 24.0);
    EXPECT_EQ(state.devices[0].target, 37.0);
    EXPECT_EQ(state.devices[0].min, 20.0);
    EXPECT_EQ(state.devices[0].max, 50.0);
    EXPECT_EQ(state.devices[0].error, "broken");
    EXPECT_EQ(state.devices[1].product, 11);
}

TEST(IncubatorEventsTests, Events_HappenAtTheirTimesInTheirOrder) {
    constexpr std::string_view kEvents =
        R"({"products": [{"number": 9, "devices": [{"number": 0, "current": 24, "min": 20, "max": 50}]}],
        "events": [{"at": 20, "do": "freeze 9 0"}, {"at": 0, "do": "set 9 0 noise 0.1"},
                   {"at": 10, "do": "set 9 0 target 38"}, {"at": 10, "do": "set 9 0 target 39"},
                   {"at": 30, "do": "set 9 0 error  no  sensor "}]})";
    std::vector<std::string> happened;
    Incubator incubator(ParseScenario(kEvents, "events"), 1,
                        [&](const EventScenario& event) { happened.push_back(event.action); });
    EXPECT_EQ(happened, std::vector<std::string>{"set 9 0 noise 0.1"});
    EXPECT_EQ(incubator.State().devices[0].noise, 0.1);
    incubator.Advance(9.999);
    EXPECT_EQ(happened.size(), 1U);
    EXPECT_EQ(incubator.State().devices[0].target, 24.0);
    incubator.Advance(0.002);
    EXPECT_EQ(incubator.State().devices[0].target, 39.0);
    EXPECT_EQ(happened.back(), "set 9 0 target 39");
    incubator.Advance(1000.0);
    ASSERT_EQ(incubator.Running().size(), 1U);
    EXPECT_EQ(incubator.Running()[0].since, 20.0);
    EXPECT_EQ(incubator.State().devices[0].error, "no  sensor");
    incubator.Advance(1000.0);
    EXPECT_EQ(happened.size(), 5U);  // each once
}

}  // namespace

}  // namespace emulator
