#include "net/Proxy.h"

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Loopback.h"
#include "incubator/Incubator.h"
#include "net/Address.h"
#include "net/Room.h"
#include "net/UdpServer.h"
#include "protocol/Answer.h"
#include "protocol/Command.h"
#include "scenarios/ScenarioReader.h"
#include "transcript/Replay.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

using boost::asio::ip::udp;

struct Heard {
    std::string client;
    Exchange exchange;
};

class ProxyTests : public testing::Test {
 protected:
    /// A proxy in front of `server`, unless the options name another.
    void Start(Proxy::Options options = {}) {
        if (options.server.port() == 0) {
            options.server = server.Address();
        }
        options.onExchange = [this](const std::string& name, const Exchange& exchange) {
            heard.push_back({name, exchange});
        };
        udp::socket listening = TakePort(context, 0);
        address = listening.local_endpoint();
        proxy = std::make_unique<Proxy>(context, std::move(listening), std::move(options));
    }

    bool Until(const std::function<bool()>& condition) { return RunUntil(context, condition); }

    /// Sends a command and waits for so many datagrams more.
    void Ask(Peer& peer, const std::string& command, std::size_t datagrams = 1) {
        const std::size_t before = peer.got.size();
        peer.Send(command, address);
        ASSERT_TRUE(Until([&] { return peer.got.size() >= before + datagrams; })) << command;
    }

    static std::string Name(const Peer& peer) { return "127.0.0.1:" + std::to_string(peer.Address().port()); }

    boost::asio::io_context context;
    Peer server{context};
    Peer client{context};
    udp::endpoint address;
    std::vector<Heard> heard;
    std::unique_ptr<Proxy> proxy;
};

TEST_F(ProxyTests, RecordOfASession_ReplaysToTheSameValues) {
    Incubator incubator(LoadScenario("full-incubator"), 1);
    UdpServer real(context, [&](const std::string& command) -> Transmission {
        incubator.Advance(10.0);
        return {{FormatReply(incubator.Execute(ParseCommand(command)), command), 0}};
    });
    real.Open(0);
    Proxy::Options options;
    options.server = Loopback(real.Port());
    Start(std::move(options));
    std::vector<std::string> commands;
    for (int i = 0; i < 20; ++i) {
        for (const char* const command : {"readcurval 9(0)", "readsetpoint 9 0 -1", "status", "nonsense"}) {
            commands.emplace_back(command);
        }
    }
    for (const std::string& command : commands) {
        Ask(client, command);
    }
    proxy->Stop();
    std::string transcript;
    for (const Heard& one : heard) {
        EXPECT_EQ(one.client, Name(client));
        transcript += FormatTranscriptLine(one.exchange) + "\n";
    }

    Replay replay(ReadTranscript(transcript), {});
    std::set<std::string> values;
    for (std::size_t i = 0; i < commands.size(); ++i) {
        EXPECT_EQ(BytesOf(replay.Answer(commands[i])), std::vector<std::string>{client.got[i].bytes});
        values.insert(client.got[i].bytes);
    }
    EXPECT_GT(values.size(), 10U);  // the incubator moved
}

TEST_F(ProxyTests, EveryByte_PassesUnchangedBothWays) {
    Start();
    server.onGot = [&](const Peer::Got& got) { server.Send(got.bytes + got.bytes, got.from); };
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all.push_back(static_cast<char>(byte));
    }
    for (const std::string& bytes : {all, std::string(), std::string(1, '\0'), std::string("_\r")}) {
        Ask(client, bytes);
        EXPECT_EQ(server.got.back().bytes, bytes);
        EXPECT_EQ(client.got.back().bytes, bytes + bytes);
    }
    proxy->Stop();
    ASSERT_EQ(heard.size(), 4U);
    EXPECT_EQ(heard[0].exchange.command, all);
    EXPECT_EQ(heard[0].exchange.replies.at(0).datagram, all + all);
    EXPECT_EQ(heard[1].exchange.command, "");
}

TEST_F(ProxyTests, LargestDatagram_PassesWholeBothWays) {
    Start();
    server.onGot = [&](const Peer::Got& got) { server.Send(got.bytes, got.from); };
    const std::string largest(kLongestDatagram, 'x');
    Ask(client, largest);
    EXPECT_TRUE(server.got.back().bytes == largest);
    EXPECT_TRUE(client.got.back().bytes == largest);
}

TEST_F(ProxyTests, TwoClientsAtOnce_KeepTheirRepliesApart) {
    Start();
    Peer other(context);
    client.Send("status", address);
    other.Send("status", address);
    ASSERT_TRUE(Until([&] { return server.got.size() == 2; }));
    ASSERT_NE(server.got[0].from, server.got[1].from);
    // The later one is answered first.
    server.Send("0_status_to the second\r", server.got[1].from);
    server.Send("0_status_to the first\r", server.got[0].from);
    ASSERT_TRUE(Until([&] { return client.got.size() + other.got.size() == 2; }));
    EXPECT_EQ(client.Bytes(), std::vector<std::string>{"0_status_to the first\r"});
    EXPECT_EQ(other.Bytes(), std::vector<std::string>{"0_status_to the second\r"});
    EXPECT_EQ(client.got[0].from, address);
    proxy->Stop();
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[0].client, Name(client));
    EXPECT_EQ(heard[0].exchange.replies.at(0).datagram, "0_status_to the first\r");
    EXPECT_EQ(heard[1].client, Name(other));
    EXPECT_EQ(heard[1].exchange.replies.at(0).datagram, "0_status_to the second\r");
}

TEST_F(ProxyTests, SilentClient_DelaysNobody) {
    Start();
    Peer other(context);
    client.Send("find 9", address);
    ASSERT_TRUE(Until([&] { return server.got.size() == 1; }));
    server.onGot = [&](const Peer::Got& got) { server.Send("0_" + got.bytes + "_1\r", got.from); };
    Ask(other, "status");
    EXPECT_TRUE(client.got.empty());
}

TEST_F(ProxyTests, LateReply_BelongsToTheCommandThatItEchoes) {
    Start();
    client.Send("find 9", address);
    client.Send("status", address);
    ASSERT_TRUE(Until([&] { return server.got.size() == 2; }));
    server.Send("0_find 9_1\r", server.got[0].from);
    server.Send("0_status_ \r", server.got[0].from);
    ASSERT_TRUE(Until([&] { return client.got.size() == 2; }));
    proxy->Stop();
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[0].exchange.command, "find 9");
    EXPECT_EQ(heard[0].exchange.replies.at(0).datagram, "0_find 9_1\r");
    EXPECT_EQ(heard[1].exchange.command, "status");
    EXPECT_EQ(heard[1].exchange.replies.at(0).datagram, "0_status_ \r");
}

TEST_F(ProxyTests, Delays_AreThoseOfTheServer) {
    // The proxy's own clock: what happens between two events takes as long as the test says.
    double now = 100.0;
    Proxy::Options options;
    options.seconds = [&] { return now; };
    Start(std::move(options));
    client.Send("a", address);
    ASSERT_TRUE(Until([&] { return server.got.size() == 1; }));
    now = 100.25;
    server.Send("0_a_1\r", server.got[0].from);
    ASSERT_TRUE(Until([&] { return client.got.size() == 1; }));
    now = 100.5;
    server.Send("0_a_2\r", server.got[0].from);
    ASSERT_TRUE(Until([&] { return client.got.size() == 2; }));
    proxy->Stop();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].exchange.seconds, 100.0);
    ASSERT_EQ(heard[0].exchange.replies.size(), 2U);
    EXPECT_EQ(heard[0].exchange.replies[0].delaySeconds, 0.25);
    EXPECT_EQ(heard[0].exchange.replies[1].delaySeconds, 0.5);
}

TEST_F(ProxyTests, WhatNobodyAskedFor_PassesAndIsToldSo) {
    double now = 0.0;
    Proxy::Options options;
    options.seconds = [&] { return now; };
    Start(std::move(options));
    server.onGot = [&](const Peer::Got& got) { server.Send("0_a_1\r", got.from); };
    Ask(client, "a");
    now = 10.0;
    ASSERT_TRUE(Until([&] { return heard.size() == 1; }));  // its exchange is over
    server.Send("surprise", server.got[0].from);
    ASSERT_TRUE(Until([&] { return heard.size() == 2 && client.got.size() == 2; }));
    EXPECT_EQ(client.got.back().bytes, "surprise");
    EXPECT_EQ(heard[1].exchange.command, std::nullopt);
    EXPECT_EQ(heard[1].exchange.seconds, 10.0);
    EXPECT_EQ(heard[1].exchange.replies.at(0).datagram, "surprise");
}

#ifndef _WIN32  // Wine does not tell that nobody listens
TEST_F(ProxyTests, ServerThatIsNotThere_IsAnEmptyDatagramAndMayComeLater) {
    Proxy::Options options;
    server.Close();
    options.server = NobodyThere(context);
    const udp::endpoint place = options.server;
    Start(std::move(options));
    for (int i = 0; i < 3; ++i) {
        Ask(client, "listprod");
        EXPECT_EQ(client.got.back().bytes, "");
    }
    UdpServer late(context, [](const std::string& command) { return Transmission{{"0_" + command + "_1\r", 0}}; });
    late.Open(place.port());
    Ask(client, "listprod");
    EXPECT_EQ(client.got.back().bytes, "0_listprod_1\r");
    EXPECT_EQ(client.got.size(), 4U);
    proxy->Stop();
    ASSERT_EQ(heard.size(), 4U);
    EXPECT_EQ(heard[0].exchange.replies.at(0).datagram, "");
}
#endif

TEST_F(ProxyTests, ServerThatIsBeingStarted_KeepsNobodyWaitingUntilItAnswered) {
    double now = 0.0;
    int looks = 0;  // at the clock: with every tick, too
    Proxy::Options options;
    options.startingPatience = std::chrono::seconds(1);
    options.seconds = [&] {
        ++looks;
        return now;
    };
    Start(std::move(options));
    client.Send("listprod", address);  // the server only listens
    ASSERT_TRUE(Until([&] { return server.got.size() == 1; }));
    now = 1.0;
    ASSERT_TRUE(Until([&] { return client.got.size() == 1; }));
    EXPECT_EQ(client.got.back().bytes, "");
    server.onGot = [&](const Peer::Got& got) { server.Send("0_listprod_7\r", got.from); };
    Ask(client, "listprod");
    EXPECT_EQ(client.got.back().bytes, "0_listprod_7\r");
    // From now on silence is the server's own.
    server.onGot = [](const Peer::Got&) {};
    client.Send("find 9", address);
    EXPECT_TRUE(Until([&] { return server.got.size() == 3; }));
    now = 2.0;
    EXPECT_TRUE(Until([&, before = looks] { return looks >= before + 2; }));
    EXPECT_EQ(client.got.size(), 2U);
}

TEST_F(ProxyTests, FaultsOnTheWay_AreWhatTheClientGets) {
    Proxy::Options options;
    options.onReply = [](const std::string& command, const std::string& reply) -> Transmission {
        if (command == "silent") {
            return {};
        }
        if (command == "late") {
            return {{reply, 20}};
        }
        if (command == "very late") {
            return {{reply, 3'600'000}};
        }
        const auto parts = SplitReply(reply);
        return {{FormatReply({2, parts ? parts->answer.payload : "?"}, command), 0}, {"again", 0}};
    };
    Start(std::move(options));
    server.onGot = [&](const Peer::Got& got) { server.Send("0_" + got.bytes + "_1\r", got.from); };
    client.Send("very late", address);
    Ask(client, "readcurval 9", 2);  // not held up by the late one
    Ask(client, "late");
    client.Send("silent", address);
    Ask(client, "status", 2);  // what "silent" got would come before it
    proxy->Stop();
    EXPECT_EQ(client.Bytes(),
              (std::vector<std::string>{"2_readcurval 9_1\r", "again", "0_late_1\r", "2_status_1\r", "again"}));
    ASSERT_EQ(heard.size(), 5U);
    EXPECT_EQ(heard[0].exchange.command, "very late");
    EXPECT_EQ(heard[1].exchange.replies.size(), 2U);
    EXPECT_EQ(heard[2].exchange.command, "late");
    EXPECT_GE(heard[2].exchange.replies.at(0).delaySeconds, 0.02);
    EXPECT_EQ(heard[3].exchange.command, "silent");
    EXPECT_TRUE(heard[3].exchange.replies.empty());
}

TEST_F(ProxyTests, ManyClients_AreForgottenLongestSilentFirst) {
    Proxy::Options options;
    options.mostClients = 2;
    Start(std::move(options));
    server.onGot = [&](const Peer::Got& got) { server.Send("0_" + got.bytes + "_1\r", got.from); };
    Peer second(context);
    Peer third(context);
    Ask(client, "a");
    Ask(second, "a");
    Ask(client, "a");
    Ask(third, "a");
    EXPECT_EQ(proxy->Clients(), 2U);
    const auto ways = [&] {
        std::set<udp::endpoint> used;
        for (const Peer::Got& got : server.got) {
            used.insert(got.from);
        }
        return used.size();
    };
    EXPECT_EQ(ways(), 3U);
    Ask(client, "a");  // still has its way
    EXPECT_EQ(ways(), 3U);
    Ask(second, "a");  // gets a new one
    EXPECT_EQ(server.got.size(), 6U);
}

TEST_F(ProxyTests, IdleClient_IsForgottenAndMayComeBack) {
    Proxy::Options options;
    options.idle = std::chrono::milliseconds(50);
    Start(std::move(options));
    server.onGot = [&](const Peer::Got& got) { server.Send("0_" + got.bytes + "_1\r", got.from); };
    // On a busy machine a client may be forgotten before its reply comes; then it asks again.
    const auto ask = [&] {
        for (const std::size_t answers = client.got.size(); client.got.size() == answers;) {
            const std::size_t commands = server.got.size();
            client.Send("a", address);
            ASSERT_TRUE(Until([&] { return server.got.size() > commands; }));
            EXPECT_TRUE(Until([&] { return client.got.size() > answers || proxy->Clients() == 0; }));
        }
    };
    ask();
    EXPECT_TRUE(Until([&] { return proxy->Clients() == 0; }));
    ask();
    EXPECT_EQ(client.got.size(), 2U);
}

TEST_F(ProxyTests, Placeholder_IsAnsweredByTheProxy) {
    Start();
    Ask(client, std::string(kWhoIsThere));
    Ask(client, std::string(kMakeRoom));
    EXPECT_EQ(client.Bytes(), (std::vector<std::string>{"", ""}));
    EXPECT_TRUE(server.got.empty());
}

TEST_F(ProxyTests, OwnPortAsTheServers_IsRefused) {
    udp::socket listening = TakePort(context, 0);
    Proxy::Options options;
    options.server = listening.local_endpoint();
    EXPECT_THROW(Proxy(context, std::move(listening), options), AddressError);
}

TEST_F(ProxyTests, Stop_LeavesTheContextNothingToDo) {
    Proxy::Options options;
    bool delayed = false;
    options.onReply = [&](const std::string&, const std::string& reply) -> Transmission {
        delayed = true;
        return {{reply, 3'600'000}};
    };
    Start(std::move(options));
    server.onGot = [&](const Peer::Got& got) { server.Send("0_" + got.bytes + "_1\r", got.from); };
    client.Send("a", address);
    ASSERT_TRUE(Until([&] { return delayed; }));
    proxy->Stop();
    ASSERT_EQ(heard.size(), 1U);  // told, though its reply was still to come
    EXPECT_EQ(heard[0].exchange.command, "a");
    client.Close();
    server.Close();
    context.restart();
    context.run();  // comes back
    EXPECT_TRUE(context.stopped());
}

}  // namespace

}  // namespace emulator
