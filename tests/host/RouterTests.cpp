// What is answered to which request.

#include "page/Router.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "MadeSnapshot.h"
#include "PageRequests.h"
#include "keep/Keeper.h"
#include "model/Event.h"
#include "model/Snapshot.h"
#include "page/Access.h"
#include "page/Assets.h"
#include "page/Request.h"

namespace {

using Json = nlohmann::json;

std::string Text(const Headers& headers, const std::string& name) {
    for (const auto& [key, value] : headers) {
        if (key == name) {
            return value;
        }
    }
    return "none";
}

class Router : public ::testing::Test {
 protected:
    Router() {
        for (std::uint64_t row = 1; row <= 10; ++row) {
            Snapshot snapshot = MadeSnapshot(row);
            snapshot.when.utcMs = static_cast<std::int64_t>(row) * 1000;
            m_keeper.Add(snapshot);
            m_keeper.Add(Event{row, {static_cast<std::int64_t>(row) * 1000, 0.0}, EventKind::Log, "", "line"});
        }
    }

    Outcome Of(const Request& request) const { return Route(request, m_keeper, m_rules); }
    Reply ReplyTo(const Request& request) const { return std::get<Reply>(Of(request)); }
    int StatusOf(const Request& request) const { return ReplyTo(request).status; }
    Json JsonOf(const std::string& target) const { return Json::parse(ReplyTo(Get(target)).body); }

    Request Put(const std::string& key, const std::string& body) const {
        return Ask("PUT", "/api/channels/" + key + "/target", {{"Authorization", "Bearer " + m_rules.token}}, body);
    }

    Keeper m_keeper;
    AccessRules m_rules{true, "0123456789abcdef", true, {}};
};

TEST_F(Router, PageAndItsFilesAreThere) {
    const Reply page = ReplyTo(Get("/"));
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.contentType, FindAsset("page.html")->contentType);
    EXPECT_EQ(page.body, FindAsset("page.html")->bytes);
    EXPECT_EQ(ReplyTo(Get("/dygraph.js")).body, FindAsset("dygraph.js")->bytes);
    EXPECT_EQ(ReplyTo(Ask("HEAD", "/page.css")).body, FindAsset("page.css")->bytes);
}

TEST_F(Router, UnknownIsNotFound) {
    for (const char* target : {"/x", "/api", "/api/", "/api/channels/", "/api/channels/gas:CO2", "/metrics/", "//",
                               "/../page.css", "/API/channels", "/api/channels/a/b/target", "/assets/page.css"}) {
        EXPECT_EQ(StatusOf(Get(target)), 404) << target;
    }
    EXPECT_EQ(StatusOf(Ask("PUT", "/x")), 404);
}

TEST_F(Router, BadlyWrittenAddressIsABadRequest) {
    for (const char* target : {"*", "http://127.0.0.1/", "/%", "/%zz", "/api/history?since=%", ""}) {
        EXPECT_EQ(StatusOf(Get(target)), 400) << target;
    }
}

TEST_F(Router, WrongMethodIsToldTheRightOne) {
    for (const char* target :
         {"/", "/page.css", "/metrics", "/api/channels", "/api/history", "/api/events", "/api/stream"}) {
        for (const char* method : {"POST", "PUT", "DELETE", "OPTIONS", "get", "TRACE"}) {
            const Reply reply = ReplyTo(Ask(method, target));
            EXPECT_EQ(reply.status, 405) << method << target;
            EXPECT_EQ(Text(reply.headers, "Allow"), "GET, HEAD");
        }
        EXPECT_FALSE(std::holds_alternative<TargetWanted>(Of(Ask("HEAD", target))));
    }
    Request request = Put("gas:CO2", "{}");
    request.method = "GET";
    EXPECT_EQ(StatusOf(request), 405);
    EXPECT_EQ(Text(ReplyTo(request).headers, "Allow"), "PUT");
}

TEST_F(Router, NewestSnapshotIsTold) {
    const Json json = JsonOf("/api/channels");
    EXPECT_EQ(json["row"], 10);
    EXPECT_EQ(json["allowSet"], true);
    EXPECT_EQ(Text(ReplyTo(Get("/api/channels")).headers, "Cache-Control"), "no-store");
}

TEST_F(Router, BeforeTheFirstSnapshotItSaysSo) {
    const Keeper empty;
    for (const char* target : {"/api/channels", "/api/history"}) {
        const Reply reply = std::get<Reply>(Route(Get(target), empty, m_rules));
        EXPECT_EQ(reply.status, 503) << target;
        EXPECT_EQ(Text(reply.headers, "Retry-After"), "1");
    }
    EXPECT_EQ(std::get<Reply>(Route(Put("gas:CO2", "{\"value\":5}"), empty, m_rules)).status, 503);
    EXPECT_EQ(std::get<Reply>(Route(Get("/metrics"), empty, m_rules)).status, 200);
    EXPECT_EQ(std::get<Reply>(Route(Get("/api/events"), empty, m_rules)).body, "{\"events\":[]}");
}

TEST_F(Router, HistoryHasTheRowsThatWereAskedFor) {
    EXPECT_EQ(JsonOf("/api/history")["time"].size(), 10U);
    EXPECT_EQ(JsonOf("/api/history")["until"], 10'001);
    EXPECT_EQ(JsonOf("/api/history?since=3000&until=5000")["time"], Json({3000, 4000}));
    EXPECT_EQ(JsonOf("/api/history?since=3000&until=5000")["since"], 3000);
    EXPECT_EQ(JsonOf("/api/history?points=3")["time"].size(), 3U);
    EXPECT_EQ(JsonOf("/api/history?since=99999")["time"].size(), 0U);
    for (const char* query :
         {"since=x", "until=1.5", "points=0", "points=-3", "points=", "since=99999999999999999999"}) {
        EXPECT_EQ(StatusOf(Get(std::string("/api/history?") + query)), 400) << query;
    }
}

TEST_F(Router, HistoryIsThinnedToItsBoundWhateverIsAsked) {
    for (std::uint64_t row = 11; row <= 21'000; ++row) {
        Snapshot snapshot = MadeSnapshot(row);
        snapshot.when.utcMs = static_cast<std::int64_t>(row) * 1000;
        m_keeper.Add(snapshot);
    }
    for (const char* query : {"", "?points=1000000000000"}) {
        const std::size_t rows = JsonOf(std::string("/api/history") + query)["time"].size();
        EXPECT_LE(rows, static_cast<std::size_t>(kMaxHistoryRows));
        EXPECT_GT(rows, 19'990U);
    }
}

TEST_F(Router, EventsComeAfterAnId) {
    EXPECT_EQ(JsonOf("/api/events")["events"].size(), 10U);
    EXPECT_EQ(JsonOf("/api/events?since=8")["events"].size(), 2U);
    EXPECT_EQ(JsonOf("/api/events?since=8")["events"][0]["id"], 9);
    EXPECT_EQ(StatusOf(Get("/api/events?since=-1")), 400);
    EXPECT_EQ(StatusOf(Get("/api/events?since=x")), 400);
}

TEST_F(Router, StreamGoesOnWhereItsReaderLeftOff) {
    EXPECT_EQ(std::get<StreamWanted>(Of(Get("/api/stream", {{"Last-Event-ID", "7"}}))).after, 7U);
    EXPECT_EQ(std::get<StreamWanted>(Of(Get("/api/stream?since=5"))).after, 5U);
    EXPECT_EQ(std::get<StreamWanted>(Of(Get("/api/stream?since=5", {{"Last-Event-ID", "7"}}))).after, 7U);
    EXPECT_EQ(std::get<StreamWanted>(Of(Get("/api/stream"))).after, std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(StatusOf(Get("/api/stream", {{"Last-Event-ID", "x"}})), 400);
}

TEST_F(Router, MetricsComeInTheFormatThatIsKnown) {
    const auto typeFor = [&](Headers headers) { return ReplyTo(Get("/metrics", std::move(headers))).contentType; };
    const std::string open = "application/openmetrics-text; version=1.0.0; charset=utf-8";
    EXPECT_EQ(typeFor({}), open);
    EXPECT_EQ(typeFor({{"Accept", "*/*"}}), open);
    EXPECT_EQ(typeFor({{"Accept", "application/openmetrics-text;version=1.0.0,text/plain;version=0.0.4;q=0.5"}}), open);
    EXPECT_EQ(typeFor({{"Accept", "text/plain"}}), "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_TRUE(ReplyTo(Get("/metrics")).body.ends_with("# EOF\n"));
}

TEST_F(Router, TargetIsPassedOn) {
    const Outcome outcome = Of(Put("gas%3ACO2", "{\"value\": 7.5}"));
    EXPECT_EQ(std::get<TargetWanted>(outcome).key, "gas:CO2");
    EXPECT_EQ(std::get<TargetWanted>(outcome).value, 7.5);
    EXPECT_EQ(std::get<TargetWanted>(Of(Put("H301-T", "{\"value\": 38}"))).value, 38.0);
}

TEST_F(Router, TargetThatIsNoNumberIsRefused) {
    for (const char* body :
         {"", "38.5", "{", "[]", "{}", "{\"value\":\"38.5\"}", "{\"value\":null}", "{\"value\":true}",
          "{\"value\":38,5}", "{\"value\":NaN}", "{\"value\":1e999}", "{\"Value\":1}", "{\"value\":[1]}", "\xFF"}) {
        EXPECT_EQ(StatusOf(Put("H301-T", body)), 422) << body;
    }
}

TEST_F(Router, TargetOfASensorOrOfNothingIsRefused) {
    EXPECT_EQ(StatusOf(Put("Sensor", "{\"value\":5}")), 422);
    EXPECT_EQ(StatusOf(Put("nothing", "{\"value\":5}")), 404);
    EXPECT_EQ(StatusOf(Put("", "{\"value\":5}")), 404);
}

TEST_F(Router, WhoMustNotSetLearnsNothingOfTheChannels) {
    Request request = Put("nothing", "x");
    request.headers.erase(request.headers.begin());
    EXPECT_EQ(StatusOf(request), 401);
    EXPECT_EQ(Text(ReplyTo(request).headers, "WWW-Authenticate"), "Bearer realm=\"oko-host\"");
    m_rules.allowSet = false;
    EXPECT_EQ(StatusOf(Put("nothing", "x")), 403);
    EXPECT_EQ(JsonOf("/api/channels")["allowSet"], false);
}

TEST_F(Router, ElsewhereNothingIsToldWithoutTheToken) {
    m_rules.isLocal = false;
    for (const char* target : {"/", "/page.css", "/metrics", "/api/channels", "/api/history", "/api/events",
                               "/api/stream", "/nothing", "/page.css?token=0123456789abcdef", "/?token=wrong"}) {
        EXPECT_EQ(StatusOf(Get(target)), 401) << target;
        EXPECT_NE(std::holds_alternative<Reply>(Of(Get(target, {{"Authorization", "Bearer 0123456789abcdef"}}))) &&
                      StatusOf(Get(target, {{"Authorization", "Bearer 0123456789abcdef"}})) == 401,
                  std::string(target) != "/?token=wrong")
            << target;
    }
}

TEST_F(Router, VisitWithTheTokenLeavesItInACookie) {
    m_rules.isLocal = false;
    const Reply reply = ReplyTo(Get("/?token=0123456789abcdef"));
    EXPECT_EQ(reply.status, 303);
    EXPECT_EQ(Text(reply.headers, "Location"), "/");
    EXPECT_EQ(Text(reply.headers, "Set-Cookie"), TokenCookie("0123456789abcdef"));
    EXPECT_EQ(StatusOf(Get("/", {{"Cookie", "oko_token=0123456789abcdef"}})), 200);

    m_rules.isLocal = true;
    EXPECT_EQ(ReplyTo(Get("/?token=0123456789abcdef")).status, 303);
    EXPECT_EQ(ReplyTo(Get("/?token=wrong")).status, 401);
}

TEST_F(Router, VisitFromAForeignNameGetsNoCookie) {
    m_rules.isLocal = false;
    EXPECT_EQ(StatusOf({"GET", "/?token=0123456789abcdef", {{"Host", "evil.example"}}, ""}), 403);
    EXPECT_EQ(StatusOf(Get("/?token=0123456789abcdef", {{"Origin", "http://evil.example"}})), 403);
}

TEST_F(Router, OutcomeOfATargetIsTold) {
    const TargetWanted wanted{"gas:CO2", 25.0};
    EXPECT_EQ(Json::parse(TargetReply(wanted, {true, 20.0}).body),
              Json::parse(R"({"channel": "gas:CO2", "asked": 25.0, "taken": 20.0, "clamped": true})"));
    EXPECT_EQ(Json::parse(TargetReply(wanted, {true, 25.0}).body)["clamped"], false);
    EXPECT_EQ(Json::parse(TargetReply({"gas:CO2", 0.3}, {true, 0.1 + 0.2}).body)["clamped"], false);
    EXPECT_EQ(TargetReply(wanted, {true, 25.0}).status, 200);
    EXPECT_EQ(TargetReply(wanted, {false, 0.0}).status, 504);
}

TEST_F(Router, ErrorIsJsonWhateverIsInIt) {
    EXPECT_EQ(Json::parse(ErrorReply(404, "a\"b\xFF").body)["error"], "a\"b\uFFFD");
}

}  // namespace
