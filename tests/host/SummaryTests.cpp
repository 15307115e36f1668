// How the summary is written, for people and for programs.

#include "show/Summary.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "MadeChannels.h"
#include "judge/Statistics.h"
#include "model/ChannelInfo.h"

namespace {

/// CO2 comes in each second, the room's temperature never.
Summary SummaryOf(const std::vector<double>& co2) {
    const std::vector<ChannelInfo> channels{Co2(), Room()};
    Statistics statistics(channels);
    double seconds = 0.0;
    for (const double value : co2) {
        statistics.Update({{value, 5.0, {}, false}, {}}, {0, seconds});
        seconds += 1.0;
    }
    return {{"Simulator", true, {}}, 7200.4, channels, std::move(statistics)};
}

std::string LineOfCo2(const std::vector<double>& values) { return FormatSummary(SummaryOf(values))[2]; }

TEST(Summary, TellsTheDeviceTheTimeAndEachChannel) {
    EXPECT_EQ(FormatSummary(SummaryOf({5.0, 6.0, 4.0})),
              (std::vector<std::string>{
                  "summary of Simulator (simulated): 2 h, 3 rounds, 1 of 2 values moved",
                  "channel  kind          min  mean   max  unit  in band  reads  failed",
                  "CO2      gas          4.00  5.00  6.00  %      50.0 %      3       0",
                  "Room     temperature     -     -     -  \u00B0C          -      3       3",
              }));
}

TEST(Summary, ShareThatIsNotAllIsNotShownAsAll) {
    std::vector<double> values(10'002, 5.0);
    EXPECT_NE(LineOfCo2(values).find(" 100.0 % "), std::string::npos) << LineOfCo2(values);
    values[5'000] = 9.0;
    EXPECT_NE(LineOfCo2(values).find(" 99.9 % "), std::string::npos) << LineOfCo2(values);
}

TEST(Summary, ShareThatIsNotNothingIsNotShownAsNothing) {
    std::vector<double> values(10'002, 9.0);
    EXPECT_NE(LineOfCo2(values).find(" 0.0 % "), std::string::npos) << LineOfCo2(values);
    values[5'000] = 5.0;
    EXPECT_NE(LineOfCo2(values).find(" <0.1 % "), std::string::npos) << LineOfCo2(values);
}

TEST(Summary, JsonHasTheSameUnrounded) {
    const auto json = nlohmann::json::parse(SummaryJson(SummaryOf({5.0, 5.5})));
    EXPECT_EQ(json["device"], "Simulator");
    EXPECT_EQ(json["simulated"], true);
    EXPECT_TRUE(json["port"].is_null());
    EXPECT_EQ(json["seconds"], 7200.4);
    EXPECT_EQ(json["rounds"], 2);
    EXPECT_EQ(json["moved"], 1);
    const auto& co2 = json["channels"][0];
    EXPECT_EQ(co2["key"], "CO2");
    EXPECT_EQ(co2["kind"], "gas");
    EXPECT_EQ(co2["unit"], "%");
    EXPECT_EQ(co2["mean"], 5.25);
    EXPECT_EQ(co2["shareInBand"], 1.0);
    EXPECT_EQ(co2["judgedSeconds"], 1.0);
    EXPECT_EQ(co2["reads"], 2);
    EXPECT_EQ(co2["failedReads"], 0);
    EXPECT_EQ(co2["moved"], true);
    const auto& room = json["channels"][1];
    EXPECT_EQ(room["failedReads"], 2);
    for (const char* const member : {"min", "mean", "max", "shareInBand"}) {
        EXPECT_TRUE(room[member].is_null()) << member;
    }
}

TEST(Summary, JsonNamesThePort) {
    Summary summary = SummaryOf({});
    summary.device = {"Incubator", false, 3};
    const auto json = nlohmann::json::parse(SummaryJson(summary));
    EXPECT_EQ(json["port"], 3);
    EXPECT_EQ(json["simulated"], false);
}

}  // namespace
