// Protocols as people write them: what is read, and what is refused before anything is sent.

#include "judge/ProtocolPlan.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "model/ChannelInfo.h"
#include "show/PlanTable.h"

namespace {

std::vector<ChannelInfo> FourChannels() {
    return {{ChannelKind::Temperature, 0, "H301-T", "H301-T", true, 20.0, 60.0, 0.2, 0.2},
            {ChannelKind::Temperature, 1, "Room", "Room", false, 0.0, 0.0, 0.0, 0.0},
            {ChannelKind::Gas, 0, "CO2", "CO2", true, 0.0, 20.0, 0.5, 0.5},
            {ChannelKind::Gas, 1, "O2", "O2", true, 0.0, 21.0, 0.0, 0.0}};
}

std::string WithSteps(const std::string& steps) { return R"({"name": "Night", "steps": [)" + steps + "]}"; }

std::string Mistakes(const std::string& json) {
    const auto text = ParseProtocol(json);
    return text ? ResolveProtocol(*text, FourChannels()).error : text.error;
}

std::string FingerprintOf(const std::string& json) { return ParseProtocol(json)->fingerprint; }

TEST(ProtocolPlan, EveryMemberIsRead) {
    const auto text = ParseProtocol(R"({"name": "Night", "settle": "2m", "within": "1h", "steps": [
        {"at": "0s", "channel": "H301-T", "value": 37},
        {"at": 0, "channel": "gas:CO2", "value": 5.5, "hold": "30m"},
        {"at": "1h30m", "channel": "CO2", "value": 0}]})");
    ASSERT_TRUE(text) << text.error;
    const auto plan = ResolveProtocol(*text, FourChannels());
    ASSERT_TRUE(plan) << plan.error;
    EXPECT_EQ(plan->name, "Night");
    EXPECT_EQ(plan->settleSeconds, 120.0);
    EXPECT_EQ(plan->withinSeconds, 3600.0);
    ASSERT_EQ(plan->steps.size(), 3U);
    EXPECT_EQ(plan->steps[0].channel, 0U);
    EXPECT_EQ(plan->steps[0].value, 37.0);
    EXPECT_FALSE(plan->steps[0].holdSeconds);
    EXPECT_EQ(plan->steps[1].channel, 2U);
    EXPECT_EQ(plan->steps[1].atSeconds, 0.0);
    EXPECT_EQ(plan->steps[1].holdSeconds, 1800.0);
    EXPECT_EQ(plan->steps[2].atSeconds, 5400.0);
}

TEST(ProtocolPlan, OnlyStepsAreNeeded) {
    const auto text = ParseProtocol(R"({"steps": [{"at": "5s", "channel": "CO2", "value": 5}]})");
    ASSERT_TRUE(text) << text.error;
    EXPECT_EQ(text->name, "protocol");
    EXPECT_EQ(text->settleSeconds, 60.0);
    EXPECT_FALSE(text->withinSeconds);
}

TEST(ProtocolPlan, LimitsThemselvesAreAllowed) {
    EXPECT_EQ(Mistakes(WithSteps(R"({"at": 0, "channel": "H301-T", "value": 20},
                                    {"at": 1, "channel": "H301-T", "value": 60})")),
              "");
}

TEST(ProtocolPlan, EachMistakeSaysWhatToWrite) {
    const std::string noJson = " is not JSON: look for a missing or surplus comma, quote or bracket there";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "line 1" + noJson},
        {"{\"steps\": [\n{\"at\": \"0s\",}\n]}", "line 2" + noJson},
        {WithSteps(R"({"at": 0, "channel": "CO2", "value": 1e999})"), "a number is too large"},
        {"{\"steps\": " + std::string(100'000, '[') + std::string(100'000, ']') + "}",
         "brackets are nested deeper than in any protocol"},
        {"[]", "the file is not an object: write {\"name\": ..., \"steps\": [...]}"},
        {"{}", "\"steps\" is missing: write a list of at least one step"},
        {WithSteps(""), "\"steps\" is missing: write a list of at least one step"},
        {R"({"name": 5, "steps": [{"at": 0, "channel": "CO2", "value": 5}]})", "\"name\": write a text"},
        {R"({"step": 1, "steps": [{"at": 0, "channel": "CO2", "value": 5}]})",
         "unknown member \"step\": write name, settle, within or steps"},
        {R"({"settle": "2m", "within": "1m", "steps": [{"at": 0, "channel": "CO2", "value": 5}]})",
         "\"within\" is shorter than \"settle\": nothing could ever settle in time"},
        {WithSteps("5"), "step 1: is not an object: write {\"at\": \"0s\", \"channel\": \"CO2\", \"value\": 5}"},
        {WithSteps(R"({"at": "0s", "channel": "CO2", "valu": 5, "value": 5})"),
         "step 1: unknown member \"valu\": write at, channel, value or hold"},
        {WithSteps(R"({"at": "0s", "at": "1h", "channel": "CO2", "value": 5})"),
         "the member \"at\" stands twice in one place"},
        {WithSteps(R"({"at": "1,5h", "channel": "CO2", "value": 5})"),
         "step 1: \"at\": \"1,5h\" has a decimal comma: write 1.5h, with a point"},
        {WithSteps(R"({"at": -1, "channel": "CO2", "value": 5})"),
         "step 1: \"at\": \"-1\" is not a duration: write one such as 500ms, 10s, 2min, 1h30m or 3d"},
        {WithSteps(R"({"at": 0, "channel": "CO2", "value": 5, "hold": true})"),
         "step 1: \"hold\": \"true\" is not a duration: write one such as 500ms, 10s, 2min, 1h30m or 3d"},
        {WithSteps(R"({"at": 0, "channel": 7, "value": 5})"), "step 1: \"channel\": write a text"},
        {WithSteps(R"({"at": 0, "channel": "CO2", "value": "38,5"})"),
         "step 1: \"value\": \"38,5\" is not a number: write 38.5, without quotes"},
        {WithSteps(R"({"at": 0, "channel": "CO2", "value": null})"),
         "step 1: \"value\": null is not a number: write one such as 38.5"},
        {WithSteps(R"({"at": 0, "channel": "CO2", "value": 20.1})"),
         "step 1: \"value\": 20.1 is beyond the limits of CO2, 0.00 to 20.00 %"},
        {WithSteps(R"({"at": 0, "channel": "CO2", "value": -0.1})"),
         "step 1: \"value\": -0.1 is beyond the limits of CO2, 0.00 to 20.00 %"},
        {WithSteps(R"({"at": 0, "channel": "Lid", "value": 5})"),
         "step 1: \"channel\": no channel is called \"Lid\": write H301-T, Room, CO2 or O2"},
        {WithSteps(R"({"at": 0, "channel": "Room", "value": 5})"),
         "step 1: \"channel\": \"Room\" is a sensor without a target: write H301-T, CO2 or O2"},
        {WithSteps(R"({"at": 0, "channel": "O2", "value": 5, "hold": "1m"})"),
         "step 1: \"hold\": O2 has no tolerances, so nobody can see whether it settles"},
        {WithSteps(R"({"at": 0, "channel": "CO2", "value": 5}, {"at": 0, "channel": "gas:CO2", "value": 6})"),
         "step 2: CO2 is set twice at 0 s"},
        {WithSteps(R"({"at": "2h", "channel": "CO2", "value": 5}, {"at": "1h", "channel": "CO2", "value": 6})"),
         "step 2: \"at\": 1 h is earlier than 2 h of a step before it"}};
    for (const auto& [json, mistakes] : cases) {
        EXPECT_EQ(Mistakes(json), mistakes) << json.substr(0, 200);
    }
}

TEST(ProtocolPlan, AllMistakesAreNamedAtOnce) {
    EXPECT_EQ(Mistakes(WithSteps("{}, {}")),
              "step 1: \"at\" is missing\nstep 1: \"channel\" is missing\nstep 1: \"value\" is missing\n"
              "step 2: \"at\" is missing\nstep 2: \"channel\" is missing\nstep 2: \"value\" is missing");
    EXPECT_EQ(
        Mistakes(WithSteps(R"({"at": 0, "channel": "CO2", "value": 99}, {"at": 1, "channel": "H301-T", "value": 0})")),
        "step 1: \"value\": 99 is beyond the limits of CO2, 0.00 to 20.00 %\n"
        "step 2: \"value\": 0 is beyond the limits of H301-T, 20.00 to 60.00 \u00B0C");
}

TEST(ProtocolPlan, FingerprintIsOfWhatTheFileSays) {
    const std::string plain = R"({"steps":[{"at":"0s","channel":"CO2","value":5}]})";
    EXPECT_EQ(FingerprintOf(plain), FingerprintOf(R"({ "steps": [ {"channel": "CO2", "value": 5, "at": "0s"} ] })"));
    EXPECT_NE(FingerprintOf(plain), FingerprintOf(R"({"steps":[{"at":"0s","channel":"CO2","value":6}]})"));
    EXPECT_EQ(FingerprintOf(plain).size(), 16U);
}

TEST(PlanTable, ShowsEachStepAndTheRules) {
    const auto plan = ResolveProtocol(*ParseProtocol(R"({"name": "Night", "steps": [
        {"at": "0s", "channel": "H301-T", "value": 37, "hold": "5m"},
        {"at": "0s", "channel": "CO2", "value": 5, "hold": "30m"},
        {"at": "1h30m", "channel": "CO2", "value": 7.5}]})"),
                                      FourChannels());
    EXPECT_EQ(FormatPlan(*plan, FourChannels()),
              (std::vector<std::string>{
                  "protocol \"Night\": 3 steps, at least 2 h 1 min",
                  "step  at          channel  kind         target  unit  hold",
                  "   1  0 s         H301-T   temperature   37.00  \u00B0C    5 min",
                  "   2  0 s         CO2      gas            5.00  %     30 min",
                  "   3  1 h 30 min  CO2      gas            7.50  %     -",
                  "the clock of \"at\" stands still while a step with a hold settles (in band for 1 min) and is held",
                  "what does not settle is waited for without end",
              }));
}

TEST(PlanTable, JsonHasTheSame) {
    const auto plan = ResolveProtocol(*ParseProtocol(R"({"name": "Night", "within": "2h", "steps": [
        {"at": "0s", "channel": "CO2", "value": 5, "hold": "30m"}, {"at": "1m", "channel": "CO2", "value": 7.5}]})"),
                                      FourChannels());
    const auto json = nlohmann::json::parse(PlanJson(*plan, FourChannels()));
    EXPECT_EQ(json["name"], "Night");
    EXPECT_EQ(json["fingerprint"], plan->fingerprint);
    EXPECT_EQ(json["withinSeconds"], 7200.0);
    EXPECT_EQ(json["shortestSeconds"], 1920.0);
    EXPECT_EQ(json["steps"].size(), 2U);
    EXPECT_EQ(json["steps"][0]["holdSeconds"], 1800.0);
    EXPECT_EQ(json["steps"][1]["channel"], "CO2");
    EXPECT_EQ(json["steps"][1]["atSeconds"], 60.0);
    EXPECT_TRUE(json["steps"][1]["holdSeconds"].is_null());
}

}  // namespace
