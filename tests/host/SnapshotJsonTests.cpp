// The shapes that the page, and whoever asks its server, read.

#include "show/SnapshotJson.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "MadeSnapshot.h"
#include "keep/History.h"
#include "model/Event.h"
#include "model/Reading.h"
#include "model/Snapshot.h"
#include "text/Json.h"

namespace {

using Json = nlohmann::json;

TEST(SnapshotJson, TellsTheWatch) {
    const Json json = Json::parse(SnapshotJson(MadeSnapshot(), true));
    EXPECT_EQ(json["time"], "2025-11-21T21:40:00.123Z");
    EXPECT_EQ(json["timeMs"], 1'763'761'200'123);
    EXPECT_EQ(json["row"], 7);
    EXPECT_EQ(json["device"], "OKO-Lab bold line");
    EXPECT_EQ(json["simulated"], false);
    EXPECT_EQ(json["port"], 3);
    EXPECT_EQ(json["live"], true);
    EXPECT_EQ(json["reason"], "");
    EXPECT_EQ(json["interval"], 1.0);
    EXPECT_EQ(json["allowSet"], true);
    EXPECT_EQ(json["worst"], "no answer");
}

TEST(SnapshotJson, TellsEachChannel) {
    const Json channels = Json::parse(SnapshotJson(MadeSnapshot(), false))["channels"];
    EXPECT_EQ(channels[0], Json::parse(R"({"key": "H301-T", "name": "H301-T", "kind": "temperature", "number": 0,
        "unit": "°C", "current": 37.3, "target": 38.5, "min": 25.0, "max": 60.0, "below": 0.5, "above": 0.3,
        "canSet": true, "state": "heating", "ageSeconds": 0.2, "reads": 100, "failedReads": 1, "airMode": false})"));
    EXPECT_EQ(channels[1], Json::parse(R"({"key": "gas:CO2", "name": "CO2", "kind": "gas", "number": 1,
        "unit": "%", "current": 4.55, "target": 5.0, "min": 0.0, "max": 20.0, "below": 0.25, "above": 0.25,
        "canSet": true, "state": "ok", "ageSeconds": 0.25, "reads": 100, "failedReads": 0, "airMode": true})"));
    EXPECT_EQ(channels[2], Json::parse(R"({"key": "Sensor", "name": "Sensor", "kind": "humidity", "number": 0,
        "unit": "%", "current": null, "target": null, "min": null, "max": null, "below": null, "above": null,
        "canSet": false, "state": "no answer", "ageSeconds": 62.5, "reads": 100, "failedReads": 40,
        "airMode": false})"));
}

TEST(SnapshotJson, TellsEachAlarm) {
    const Json alarms = Json::parse(SnapshotJson(MadeSnapshot(), false))["alarms"];
    EXPECT_EQ(alarms[0], Json::parse(R"({"channel": "gas:CO2", "kind": "out of band", "phase": "watching",
        "low": 4.5, "high": 5.5, "since": null, "reason": ""})"));
    EXPECT_EQ(alarms[1], Json::parse(R"({"channel": "Sensor", "kind": "missing data", "phase": "on", "low": null,
        "high": null, "since": "2025-11-21T21:38:20.000Z", "reason": "Sensor is silent"})"));
}

TEST(SnapshotJson, NumbersAreAsShortAsTheyCanBeReadBack) {
    const std::string json = SnapshotJson(MadeSnapshot(), false);
    EXPECT_NE(json.find("\"current\":37.3,"), std::string::npos);
    EXPECT_NE(json.find("\"current\":4.55,"), std::string::npos);
}

TEST(SnapshotJson, NameThatIsNotUtf8DoesNotSpoilTheReply) {
    Snapshot snapshot = MadeSnapshot();
    snapshot.device.name = "odd \xFF";
    EXPECT_EQ(Json::parse(SnapshotJson(snapshot, false))["device"], "odd \uFFFD");
    EXPECT_EQ(JsonQuoted("a\"b\n\xC3"), "\"a\\\"b\\n\uFFFD\"");
}

TEST(SnapshotJson, WorstStateOfAllIsTold) {
    Snapshot snapshot = MadeSnapshot();
    const auto worst = [&] { return std::string(WorstState(snapshot)); };
    EXPECT_EQ(worst(), "no answer");
    snapshot.statuses[2].reading.state = ChannelState::NoValue;
    EXPECT_EQ(worst(), "no answer");
    snapshot.statuses[2].reading.state = ChannelState::None;
    EXPECT_EQ(worst(), "alarm");
    snapshot.alarms[1].phase = AlarmPhase::Pending;
    EXPECT_EQ(worst(), "out of band");
    snapshot.statuses[0].reading.state = ChannelState::Above;
    EXPECT_EQ(worst(), "out of band");
    snapshot.statuses[0].reading.state = ChannelState::Within;
    EXPECT_EQ(worst(), "ok");
    snapshot.live = false;
    EXPECT_EQ(worst(), "stale");
}

TEST(SnapshotJson, EventsAreAList) {
    const Event one{1, {1'763'761'200'123, 1.0}, EventKind::TargetChanged, "H301-T", "37.0 -> 38.5"};
    const Event two{2, {1'763'761'200'124, 1.0}, EventKind::LinkLost, "", "line\nfeed"};
    const Json expected = Json::parse(R"([
        {"id": 1, "time": "2025-11-21T21:40:00.123Z", "timeMs": 1763761200123, "kind": "target changed",
         "channel": "H301-T", "text": "37.0 -> 38.5"},
        {"id": 2, "time": "2025-11-21T21:40:00.124Z", "timeMs": 1763761200124, "kind": "link lost",
         "channel": "", "text": "line\nfeed"}])");
    EXPECT_EQ(Json::parse(EventJson(one)), expected[0]);
    EXPECT_EQ(EventJson(two).find('\n'), std::string::npos);
    EXPECT_EQ(Json::parse(EventsJson({one, two}))["events"], expected);
    EXPECT_EQ(EventsJson({}), "{\"events\":[]}");
}

TEST(SnapshotJson, HistoryIsColumns) {
    History history(3, 1.0);
    const Snapshot snapshot = MadeSnapshot();
    history.Add(1000, {snapshot.statuses[0].reading, snapshot.statuses[1].reading, snapshot.statuses[2].reading});
    history.Add(2000, {snapshot.statuses[2].reading, snapshot.statuses[2].reading, snapshot.statuses[2].reading});
    EXPECT_EQ(HistoryJson(history.View(0, 5000).Rows(), snapshot, 0, 5000),
              R"({"since":0,"until":5000,"interval":1,"time":[1000,2000],"channels":[)"
              R"({"key":"H301-T","current":[37.3,null],"target":[38.5,null]},)"
              R"({"key":"gas:CO2","current":[4.55,null],"target":[5,null]},)"
              R"({"key":"Sensor","current":[null,null],"target":[null,null]}]})");
}

}  // namespace
