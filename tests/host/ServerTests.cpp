// The page's server over real sockets: what it serves, and what it does not let clients do to it.

#include "page/Server.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "../Patience.h"
#include "HttpClient.h"
#include "MadeSnapshot.h"
#include "keep/Keeper.h"
#include "model/Event.h"
#include "model/Snapshot.h"
#include "page/Access.h"
#include "page/Assets.h"
#include "page/Router.h"
#include "page/ServerLimits.h"

namespace {

using Json = nlohmann::json;
using std::chrono::milliseconds;

const std::string kBearer = "Authorization: Bearer 0123456789abcdef\r\n";

class PageServer : public ::testing::Test {
 protected:
    PageServer() {
        m_options.access.token = "0123456789abcdef";
        m_options.access.allowSet = true;
        // No client is too slow, however busy the machine is; the tests of slow ones say how slow.
        for (milliseconds ServerLimits::* limit :
             {&ServerLimits::requestTime, &ServerLimits::sendTime, &ServerLimits::lingerTime, &ServerLimits::setTime,
              &ServerLimits::heartbeat, &ServerLimits::stopTime}) {
            m_options.limits.*limit = kPatience;
        }
    }

    void Start() {
        m_server.emplace(m_options, m_keeper, [this](std::uint64_t request, const TargetWanted& wanted) {
            ++m_asked;
            if (m_answer) {
                m_server->TargetDone(request, m_answer(wanted));
            }
        });
        ASSERT_EQ(m_server->Start(), std::nullopt);
    }

    HttpClient Connect() const { return HttpClient(m_server->Port()); }

    HttpClient::Reply Ask(const std::string& wire) const {
        HttpClient client = Connect();
        client.Send(wire);
        return client.Read();
    }

    void PublishRow(std::uint64_t row) {
        Snapshot snapshot = MadeSnapshot(row);
        snapshot.when.utcMs = static_cast<std::int64_t>(row) * 1000;
        snapshot.statuses[0].reading.current = static_cast<double>(row);
        m_keeper.Add(snapshot);
        m_server->Wake();
    }

    void PublishEvent(std::uint64_t id) {
        m_keeper.Add(Event{id, {}, EventKind::Log, "", "line " + std::to_string(id)});
        m_server->Wake();
    }

    std::vector<double> RowsOfHistory() const {
        const Json json = Json::parse(Ask(Wire("GET", "/api/history", "Connection: close\r\n")).body);
        return json["channels"][0]["current"].get<std::vector<double>>();
    }

    Server::Options m_options;
    Keeper m_keeper;
    std::atomic<int> m_asked = 0;
    std::function<TargetResult(const TargetWanted&)> m_answer;
    std::optional<Server> m_server;
};

TEST_F(PageServer, ConnectionServesOneRequestAfterTheOther) {
    Start();
    PublishRow(1);
    HttpClient client = Connect();
    for (int i = 0; i < 3; ++i) {
        client.Send(Wire("GET", "/api/channels"));
        const HttpClient::Reply reply = client.Read();
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(Json::parse(reply.body)["row"], 1);
    }
    client.Send(Wire("GET", "/api/events") + Wire("GET", "/nothing") +
                Wire("GET", "/page.css", "Connection: close\r\n"));
    EXPECT_EQ(client.Read().status, 200);
    EXPECT_EQ(client.Read().status, 404);
    EXPECT_EQ(client.Read().body, FindAsset("page.css")->bytes);
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(PageServer, EveryReplyCarriesTheSecurityHeaders) {
    Start();
    for (const char* target : {"/", "/api/events", "/nothing", "/%", "/api/stream"}) {
        const std::string head = Ask(Wire("GET", target)).head;
        for (const auto& [name, value] : kSecurityHeaders) {
            EXPECT_NE(head.find("\r\n" + std::string(name) + ": " + std::string(value) + "\r\n"), std::string::npos)
                << target << head;
        }
        EXPECT_EQ(head.find("unsafe"), std::string::npos);
    }
    EXPECT_NE(Ask("nonsense\r\n\r\n").head.find("\r\nContent-Security-Policy: "), std::string::npos);
}

TEST_F(PageServer, HeadIsTheReplyWithoutItsBody) {
    Start();
    HttpClient client = Connect();
    client.Send(Wire("HEAD", "/page.css"));
    const HttpClient::Reply head = client.Read(true);
    EXPECT_EQ(head.status, 200);
    EXPECT_NE(head.head.find("\r\nContent-Length: " + std::to_string(FindAsset("page.css")->bytes.size()) + "\r\n"),
              std::string::npos);
    client.Send(Wire("HEAD", "/api/stream"));
    EXPECT_EQ(client.Read(true).status, 200);
    client.Send(Wire("GET", "/api/events"));
    EXPECT_EQ(client.Read().body, "{\"events\":[]}");
}

TEST_F(PageServer, StreamTellsEachRowAndEvent) {
    Start();
    PublishRow(1);
    PublishEvent(1);
    HttpClient client = Connect();
    client.Send(Wire("GET", "/api/stream"));
    const HttpClient::Reply reply = client.Read();
    EXPECT_EQ(reply.status, 200);
    EXPECT_NE(reply.head.find("Content-Type: text/event-stream"), std::string::npos);
    EXPECT_NE(client.ReadUntil("\n\n").find("retry: 2000"), std::string::npos);
    const std::string first = client.ReadUntil("\n\n");
    ASSERT_TRUE(first.starts_with("event: snapshot\ndata: {")) << first;
    EXPECT_EQ(Json::parse(first.substr(22))["row"], 1);
    PublishEvent(2);
    const std::string event = client.ReadUntil("\n\n");
    ASSERT_TRUE(event.starts_with("event: event\nid: 2\ndata: {")) << event;
    EXPECT_EQ(Json::parse(event.substr(25))["text"], "line 2");
    PublishRow(2);
    EXPECT_NE(client.ReadUntil("\n\n").find("\"row\":2,"), std::string::npos);
}

TEST_F(PageServer, StreamGoesOnForAClientThatMakesNoOtherRequest) {
    Start();
    HttpClient client = Connect();
    client.Send(Wire("GET", "/api/stream", "Connection: close\r\n"));
    EXPECT_EQ(client.Read().status, 200);
    client.ReadUntil("retry: 2000\n\n");
    PublishEvent(1);
    EXPECT_TRUE(client.ReadUntil("\n\n").starts_with("event: event\nid: 1\n"));
}

TEST_F(PageServer, StreamGoesOnWhereItBroke) {
    Start();
    for (std::uint64_t id = 1; id <= 5; ++id) {
        PublishEvent(id);
    }
    HttpClient client = Connect();
    client.Send(Wire("GET", "/api/stream", "Last-Event-ID: 3\r\n"));
    const std::string missed = client.ReadUntil("\"line 5\"}\n\n");
    EXPECT_EQ(missed.find("id: 3\n"), std::string::npos);
    EXPECT_LT(missed.find("id: 4\n"), missed.find("id: 5\n"));
    PublishEvent(6);
    EXPECT_TRUE(client.ReadUntil("\n\n").starts_with("event: event\nid: 6\n"));
}

TEST_F(PageServer, SilentStreamSaysThatItIsThere) {
    m_options.limits.heartbeat = milliseconds(20);
    Start();
    HttpClient client = Connect();
    client.Send(Wire("GET", "/api/stream"));
    EXPECT_TRUE(client.ReadUntil(": still here\n\n").ends_with(": still here\n\n"));
    EXPECT_TRUE(client.ReadUntil(": still here\n\n").ends_with(": still here\n\n"));
}

TEST_F(PageServer, TargetIsSetAndItsOutcomeTold) {
    m_answer = [](const TargetWanted& wanted) { return TargetResult{true, std::min(wanted.value, 20.0)}; };
    Start();
    PublishRow(1);
    const auto reply = Ask(Wire("PUT", "/api/channels/gas%3ACO2/target", kBearer, "{\"value\":25}"));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, R"({"channel":"gas:CO2","asked":25,"taken":20,"clamped":true})");
    EXPECT_EQ(Ask(Wire("PUT", "/api/channels/gas%3ACO2/target", "", "{\"value\":25}")).status, 401);
    EXPECT_EQ(
        Ask(Wire("PUT", "/api/channels/gas%3ACO2/target", kBearer + "Origin: http://evil.example\r\n", "{}")).status,
        403);
    EXPECT_EQ(m_asked, 1);
}

TEST_F(PageServer, DeviceThatDoesNotTakeATargetInTimeIsTold) {
    m_options.limits.setTime = milliseconds(30);
    Start();
    PublishRow(1);
    HttpClient client = Connect();
    client.Send(Wire("PUT", "/api/channels/gas%3ACO2/target", kBearer, "{\"value\":5}"));
    EXPECT_EQ(client.Read().status, 504);
    m_server->TargetDone(1, {true, 5.0});
    client.Send(Wire("GET", "/api/events"));
    EXPECT_EQ(client.Read().body, "{\"events\":[]}");
}

TEST_F(PageServer, OnlySomeTargetsWaitForTheDevice) {
    m_options.limits.pendingTargets = 2;
    Start();
    PublishRow(1);
    const std::string wire = Wire("PUT", "/api/channels/gas%3ACO2/target", kBearer, "{\"value\":5}");
    HttpClient first = Connect();
    HttpClient second = Connect();
    first.Send(wire);
    second.Send(wire);
    while (m_asked < 2) {
        std::this_thread::yield();
    }
    EXPECT_EQ(Ask(wire).status, 503);
    m_server->TargetDone(1, {true, 5.0});
    m_server->TargetDone(2, {true, 5.0});
    EXPECT_EQ(first.Read().status, 200);
    EXPECT_EQ(second.Read().status, 200);
}

TEST_F(PageServer, WhatIsNoRequestIsRefusedAndTheNextClientServed) {
    Start();
    const std::string tooLong(20'000, 'x');
    const std::vector<std::pair<std::string, int>> kCases{
        {"\r\n\r\n\r\n", 400},
        {"GET\r\n\r\n", 400},
        {"GET / HTTP/9.9\r\n\r\n", 400},
        {std::string("\x16\x03\x01\x00\xA5\x01\x00\x00\xA1\x03\x03", 11) + "\r\n\r\n", 400},  // begins to encrypt
        {"GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nA: " + tooLong + "\r\n\r\n", 431},
        {"GET /" + tooLong + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n", 431},
        {"PUT /x HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 5000\r\n\r\n" + tooLong.substr(0, 5000), 413},
        {"PUT /x HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 99999999999999999999\r\n\r\n", 400},
        {"PUT /x HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: -1\r\n\r\n", 400},
        {"GET / HTTP/1.1\r\n\r\n", 403},
        {"GET / HTTP/1.1\r\nHost: evil.example\r\n\r\n", 403},
    };
    for (const auto& [wire, status] : kCases) {
        HttpClient client = Connect();
        client.Send(wire);
        EXPECT_EQ(client.Read().status, status) << wire.substr(0, 60);
        EXPECT_EQ(Ask(Wire("GET", "/api/events")).status, 200);
    }
}

TEST_F(PageServer, ClientThatSendsSlowlyIsDropped) {
    m_options.limits.requestTime = milliseconds(200);
    Start();
    HttpClient client = Connect();
    // Each byte comes in time, but a request is not to take longer for it.
    client.Send("GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n");
    EXPECT_TRUE(Await([&] { return !client.Send("A"); }));
    EXPECT_EQ(Ask(Wire("GET", "/api/events")).status, 200);
}

TEST_F(PageServer, ReaderOfAStreamThatDoesNotReadIsDropped) {
    m_options.limits.streamBytes = 64 * 1024;
    Start();
    PublishRow(1);
    HttpClient reader = Connect();
    HttpClient idler = Connect();
    for (HttpClient* client : {&reader, &idler}) {
        client->Send(Wire("GET", "/api/stream"));
        EXPECT_EQ(client->Read().status, 200);
    }
    const std::string text(20'000, 'x');
    std::uint64_t id = 1;
    // The system takes some megabytes for a reader before the server is left with the rest.
    for (bool isThere = true; isThere && id < 10'000; ++id) {
        m_keeper.Add(Event{id, {}, EventKind::Log, "", text});
        m_server->Wake();
        ASSERT_NE(reader.ReadUntil("id: " + std::to_string(id) + "\n").find("event: event"), std::string::npos);
        reader.ReadUntil("\n\n");
        isThere = idler.Send("x");
    }
    EXPECT_LT(id, 10'000U);
    PublishRow(2);
    EXPECT_NE(reader.ReadUntil("\"row\":2,").find("\"row\":2,"), std::string::npos);
}

TEST_F(PageServer, MoreClientsThanThereIsRoomForAreTurnedAway) {
    m_options.limits.connections = 5;
    Start();
    std::vector<HttpClient> streams;
    for (int i = 0; i < 5; ++i) {
        streams.push_back(Connect());
        streams.back().Send(Wire("GET", "/api/stream"));
        EXPECT_EQ(streams.back().Read().status, 200);
    }
    for (int i = 0; i < 3; ++i) {
        const HttpClient::Reply reply = Ask(Wire("GET", "/api/events"));
        EXPECT_EQ(reply.status, 503);
        EXPECT_NE(reply.head.find("Retry-After"), std::string::npos);
    }
    PublishEvent(1);
    for (HttpClient& stream : streams) {
        EXPECT_NE(stream.ReadUntil("id: 1\n").find("id: 1\n"), std::string::npos);
    }
    streams.pop_back();
    while (Ask(Wire("GET", "/api/events")).status != 200) {
        std::this_thread::yield();
    }
}

TEST_F(PageServer, SilentConnectionsMakeRoomForWhoAsks) {
    m_options.limits.connections = 5;
    Start();
    HttpClient stream = Connect();
    stream.Send(Wire("GET", "/api/stream"));
    EXPECT_EQ(stream.Read().status, 200);
    std::vector<HttpClient> silent;
    for (int i = 0; i < 50; ++i) {
        silent.push_back(Connect());
        EXPECT_EQ(Ask(Wire("GET", "/api/events")).status, 200);
    }
    PublishEvent(1);
    EXPECT_NE(stream.ReadUntil("id: 1\n").find("id: 1\n"), std::string::npos);
}

TEST_F(PageServer, RepliesThatNobodyReadsAreBounded) {
    m_options.limits.unsentBytes = 4096;
    Start();
    PublishRow(1);
    EXPECT_EQ(Ask(Wire("GET", "/dygraph.js")).status, 503);
    EXPECT_EQ(Ask(Wire("GET", "/api/channels")).status, 200);
}

TEST_F(PageServer, PortIsOneProgramsAlone) {
    Start();
    Server::Options same = m_options;
    same.port = m_server->Port();
    Server second(same, m_keeper, [](std::uint64_t, const TargetWanted&) {});
    EXPECT_EQ(second.Start(),
              "127.0.0.1 port " + std::to_string(same.port) + " is taken by another program: choose another port");
    same.address = "localhost";
    Server third(same, m_keeper, [](std::uint64_t, const TargetWanted&) {});
    EXPECT_EQ(third.Start(), "\"localhost\" is no address: write numbers, as 127.0.0.1 or 0.0.0.0");
}

TEST_F(PageServer, EndTellsWhatWasPublishedAndFreesThePort) {
    Start();
    PublishRow(1);
    HttpClient stream = Connect();
    stream.Send(Wire("GET", "/api/stream"));
    stream.Read();
    HttpClient idle = Connect();
    PublishEvent(1);
    m_server->Stop();
    EXPECT_NE(stream.ReadUntil("id: 1\n").find("id: 1\n"), std::string::npos);
    EXPECT_TRUE(stream.IsClosed());
    EXPECT_TRUE(idle.IsClosed());
    m_options.port = m_server->Port();
    m_server.reset();
    Start();
    EXPECT_EQ(Ask(Wire("GET", "/api/events")).status, 200);
}

TEST_F(PageServer, EndDoesNotWaitForAClientThatDoesNotRead) {
    m_options.limits.stopTime = milliseconds(50);
    m_options.limits.sendTime = std::chrono::hours(1);
    Start();
    HttpClient idler = Connect();
    for (int i = 0; i < 300; ++i) {
        idler.Send(Wire("GET", "/dygraph.js"));
    }
    HttpClient::Reply reply = Ask(Wire("GET", "/api/events"));
    EXPECT_EQ(reply.status, 200);
    m_server->Stop();
}

}  // namespace
