// What is done when alarms come and go.

#include "commands/AlarmActions.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "judge/Alarm.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "model/Snapshot.h"

namespace {

Snapshot Device() {
    Snapshot snapshot;
    snapshot.device = {"Incubator", false, 3};
    snapshot.channels = {{ChannelKind::Gas, 0, "CO2", "gas:CO2", true, 0.0, 20.0, 0.5, 0.5}};
    snapshot.statuses = {{{6.2, 5.0, ChannelState::Above, false}, 0.0, 1, 0}};
    return snapshot;
}

AlarmChange On() {
    return {{0, {1'700'000'120'000, 120.0}, EventKind::AlarmOn, "gas:CO2", "CO2 is 6.20 %, above 5.50 %, for 2 min"},
            {AlarmKind::OutOfBand, 0, AlarmPhase::On, 4.5, 5.5, Moment{1'700'000'000'000, 0.0}, "CO2 is 6.20 %"}};
}

AlarmChange Off() {
    return {{0, {1'700'000'240'000, 240.0}, EventKind::AlarmOff, "gas:CO2", "gas:CO2 gives values again"},
            {AlarmKind::MissingData, 0, AlarmPhase::Watching, 0.0, 0.0, {}, {}}};
}

class AlarmActionsTest : public testing::Test {
 protected:
    AlarmActions Make(bool beep, const char* program) {
        return AlarmActions(
            {beep, program},
            [this](const std::filesystem::path& file, const std::vector<std::string>& arguments,
                   std::string_view input) {
                files.push_back(file.string());
                commands.push_back(arguments);
                inputs.emplace_back(input);
                return problem;
            },
            [this] { ++sounds; });
    }

    std::vector<std::string> files;
    std::vector<std::vector<std::string>> commands;
    std::vector<std::string> inputs;
    std::string problem;
    int sounds = 0;
};

TEST_F(AlarmActionsTest, ProgramIsStartedForEachThatComesOrGoes) {
    AlarmActions actions = Make(false, "alarm.exe");
    EXPECT_FALSE(actions.Act({On(), Off()}, Device()));
    EXPECT_EQ(files, (std::vector<std::string>{"alarm.exe", "alarm.exe"}));
    EXPECT_EQ(commands, (std::vector<std::vector<std::string>>{
                            {"on", "gas:CO2", "out of band", "CO2 is 6.20 %, above 5.50 %, for 2 min"},
                            {"off", "gas:CO2", "missing data", "gas:CO2 gives values again"}}));
    EXPECT_EQ(sounds, 0);
}

TEST_F(AlarmActionsTest, ProgramReadsTheDetails) {
    Make(false, "alarm.exe").Act({On(), Off()}, Device());
    const auto on = nlohmann::json::parse(inputs.at(0));
    EXPECT_EQ(on, nlohmann::json::parse(R"({"alarm": "on", "channel": "gas:CO2", "kind": "out of band",
        "reason": "CO2 is 6.20 %, above 5.50 %, for 2 min", "time": "2023-11-14T22:15:20.000Z",
        "timeMs": 1700000120000, "since": "2023-11-14T22:13:20.000Z", "current": 6.2, "target": 5.0, "unit": "%",
        "low": 4.5, "high": 5.5, "device": "Incubator", "simulated": false, "port": 3})"));
    const auto off = nlohmann::json::parse(inputs.at(1));
    EXPECT_EQ(off["alarm"], "off");
    EXPECT_EQ(off["kind"], "missing data");
    EXPECT_TRUE(off["low"].is_null());
    EXPECT_TRUE(off["high"].is_null());
    EXPECT_TRUE(off["since"].is_null());
}

TEST_F(AlarmActionsTest, MissingValuesAreNull) {
    Snapshot snapshot = Device();
    snapshot.device = {"Simulator", true, {}};
    snapshot.statuses[0].reading = {};
    const auto json = nlohmann::json::parse(AlarmChangeJson(On(), snapshot));
    for (const char* const member : {"current", "target", "port"}) {
        EXPECT_TRUE(json[member].is_null()) << member;
    }
}

TEST_F(AlarmActionsTest, SoundIsMadeOnceARoundAndOnlyForWhatComes) {
    AlarmActions actions = Make(true, "");
    actions.Act({On(), On()}, Device());
    EXPECT_EQ(sounds, 1);
    actions.Act({Off()}, Device());
    actions.Act({}, Device());
    EXPECT_EQ(sounds, 1);
    EXPECT_TRUE(commands.empty());
}

TEST_F(AlarmActionsTest, WithoutOptionsNothingIsDone) {
    AlarmActions actions = Make(false, "");
    EXPECT_FALSE(actions.Act({On()}, Device()));
    EXPECT_EQ(sounds, 0);
    EXPECT_TRUE(commands.empty());
}

TEST_F(AlarmActionsTest, ProgramThatDoesNotStartIsToldOnceUntilItDid) {
    AlarmActions actions = Make(false, "alarm.exe");
    problem = "cannot start alarm.exe: not there";
    EXPECT_EQ(actions.Act({On(), Off()}, Device()), problem);
    EXPECT_FALSE(actions.Act({On()}, Device()));
    problem.clear();
    EXPECT_FALSE(actions.Act({Off()}, Device()));
    problem = "cannot start alarm.exe: gone";
    EXPECT_EQ(actions.Act({On()}, Device()), problem);
}

}  // namespace
