// What `oko-host list channels` shows, and the program itself with the made-up library.

#include "show/ChannelList.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "MadeSnapshot.h"
#include "RunHost.h"
#include "model/Snapshot.h"

namespace {

using Json = nlohmann::json;

TEST(ChannelList, Rows_SayWhatAChannelTakesAndADashWhatASensorHasNot) {
    const Snapshot snapshot = MadeSnapshot();
    EXPECT_EQ(ChannelList(snapshot.device, snapshot.channels),
              (std::vector<std::string>{
                  "OKO-Lab bold line on COM3: 3 channels",
                  "#  key      name    kind         unit  min  max  below  above  can be set",
                  "0  H301-T   H301-T  temperature  \u00B0C     25   60    0.5    0.3  yes",
                  "1  gas:CO2  CO2     gas          %       0   20   0.25   0.25  yes",
                  "0  Sensor   Sensor  humidity     %       -    -      -      -  no, a sensor",
              }));
}

TEST(ChannelList, Json_HasAllOfItAndNullWhatASensorHasNot) {
    const Snapshot snapshot = MadeSnapshot();
    const Json json = Json::parse(ChannelListJson(snapshot.device, snapshot.channels));
    EXPECT_EQ(json["device"], "OKO-Lab bold line");
    EXPECT_EQ(json["simulated"], false);
    EXPECT_EQ(json["port"], 3);
    ASSERT_EQ(json["channels"].size(), 3U);
    EXPECT_EQ(json["channels"][1], Json::parse(R"({"number":1,"key":"gas:CO2","name":"CO2","kind":"gas","unit":"%",
        "min":0.0,"max":20.0,"below":0.25,"above":0.25,"canSet":true})"));
    EXPECT_EQ(json["channels"][2]["canSet"], false);
    for (const char* const member : {"min", "max", "below", "above"}) {
        EXPECT_TRUE(json["channels"][2][member].is_null()) << member;
    }
}

TEST(ListCommand, Channels_OfTheSimulator_ComeAfterWhatIsTouchedAndNothingIsRead) {
    const HostRun run("list channels", "fail *\n");  // a read would end in 11
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output.find("simulator: a simulated incubator"), 0U) << run.output;
    EXPECT_NE(run.output.find("Made-up simulator (simulated): 5 channels\n"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("\n1  Base      Base      temperature  \u00B0C      -      -  "), std::string::npos)
        << run.output;
    EXPECT_EQ(run.journal, "connection \nInit\nClose\n");
}

TEST(ListCommand, Channels_OfTheIncubator_NeedAPort) {
    const HostRun run("list channels --device incubator");
    EXPECT_EQ(run.exitCode, 9);
    EXPECT_NE(run.errors.find("no COM port is known"), std::string::npos) << run.errors;
    EXPECT_EQ(run.journal, "");
}

TEST(ListCommand, Channels_AsJson_AreAloneOnTheOutput) {
    const HostRun run("list channels --json --device incubator --port 7");
    EXPECT_EQ(run.exitCode, 0);
    const Json json = Json::parse(run.output);
    EXPECT_EQ(json["device"], "Made-up incubator");
    EXPECT_EQ(json["port"], 7);
    EXPECT_EQ(json["channels"].size(), 5U);
    EXPECT_EQ(run.errors.find("incubator on COM7"), 0U) << run.errors;
}

TEST(ListCommand, Channels_OfADeviceThatDoesNotStart_SayWhy) {
    const HostRun run("list channels", "noinit\n");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_NE(run.errors.find("the simulator could not be initialised"), std::string::npos) << run.errors;
}

TEST(ListCommand, Devices_AreWhatListShows) {
    const HostRun list("list");
    const HostRun devices("list devices");
    EXPECT_EQ(list.exitCode, 0);
    EXPECT_EQ(list.output, "0  Incubator  Made-up incubator\n1  Incubator  Made-up simulator\n");
    EXPECT_EQ(devices.output, list.output);
    EXPECT_EQ(devices.journal, "");
}

TEST(ListCommand, Devices_AsJson_TellHowEachIsNamedToTheOtherCommands) {
    const HostRun run("list devices --json");
    EXPECT_EQ(Json::parse(run.output), Json::parse(R"({"devices":[
        {"index":0,"type":"Incubator","name":"Made-up incubator","device":"incubator"},
        {"index":1,"type":"Incubator","name":"Made-up simulator","device":"simulator"}]})"));
}

/// Every run here names it before.
TEST(ListCommand, Library_MayBeNamedBehindWhatIsListed) {
    EXPECT_EQ(HostRun("list devices --library nowhere.so").exitCode, 4);
    EXPECT_EQ(HostRun("list channels --library nowhere.so").exitCode, 4);
}

}  // namespace
