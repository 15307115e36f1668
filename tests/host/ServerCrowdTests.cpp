// Very many clients, and clients that mean harm, while a watch goes on.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "../Patience.h"
#include "HttpClient.h"
#include "MadeSnapshot.h"
#include "keep/Keeper.h"
#include "model/Snapshot.h"
#include "page/Router.h"
#include "page/Server.h"

namespace {

using Json = nlohmann::json;
using std::chrono::milliseconds;

constexpr std::size_t kClients = 1000;

/// Both ends of each connection are in this process. Root may go beyond what the system set.
bool CanOpen(rlim_t files) {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_max = std::max(limit.rlim_max, files);
    limit.rlim_cur = limit.rlim_max;
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

/// A watch with twenty rows a second, as the main thread of the program has one: it publishes, and goes on.
class Crowd : public ::testing::Test {
 protected:
    void SetUp() override {
        ASSERT_TRUE(CanOpen(2 * kClients + 500)) << "this process may not have that many files: raise ulimit -n";
        ASSERT_EQ(m_server.Start(), std::nullopt);
        m_watch = std::jthread([this](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                Snapshot snapshot = MadeSnapshot(++m_row);
                snapshot.when.utcMs = static_cast<std::int64_t>(m_row) * 1000;
                snapshot.statuses[0].reading.current = static_cast<double>(m_row);
                m_keeper.Add(snapshot);
                m_server.Wake();
                std::this_thread::sleep_for(milliseconds(50));
            }
        });
    }

    HttpClient Connect() const { return HttpClient(m_server.Port()); }

    void WaitForRows(std::uint64_t more) const {
        for (const std::uint64_t row = m_row + more; m_row < row;) {
            std::this_thread::sleep_for(milliseconds(1));
        }
    }

    /// Ends the watch and returns its rows as a client gets them.
    std::vector<double> Rows() {
        m_watch.request_stop();
        m_watch.join();
        HttpClient client = Connect();
        client.Send(Wire("GET", "/api/history"));
        return Json::parse(client.Read().body)["channels"][0]["current"].get<std::vector<double>>();
    }

    std::vector<double> AllRows() const {
        std::vector<double> rows;
        for (std::uint64_t row = 1; row <= m_row; ++row) {
            rows.push_back(static_cast<double>(row));
        }
        return rows;
    }

    /// Nobody is dropped for the time that so many need on a busy machine.
    static Server::Options Options() {
        Server::Options options;
        options.limits.streamBytes = std::size_t{64} * 1024U * 1024U;
        options.limits.requestTime = options.limits.sendTime = kPatience;
        return options;
    }

    Keeper m_keeper;
    Server m_server{Options(), m_keeper, [](std::uint64_t, const TargetWanted&) {}};
    std::atomic<std::uint64_t> m_row = 0;
    std::jthread m_watch;
};

TEST_F(Crowd, ThousandReadersFollowTheWatchAndItLosesNoRow) {
    std::vector<HttpClient> readers;
    for (std::size_t i = 0; i < kClients; ++i) {
        readers.push_back(Connect());
        ASSERT_TRUE(readers.back().Send(Wire("GET", "/api/stream"))) << i;
    }
    for (HttpClient& reader : readers) {
        ASSERT_EQ(reader.Read().status, 200);
    }
    WaitForRows(10);
    HttpClient another = Connect();
    another.Send(Wire("GET", "/api/channels"));
    EXPECT_EQ(another.Read().status, 200);
    const std::vector<double> rows = Rows();
    EXPECT_EQ(rows, AllRows());
    // Each of them is told the last row.
    const std::string last = "\"row\":" + std::to_string(m_row) + ",";
    for (HttpClient& reader : readers) {
        ASSERT_NE(reader.ReadUntil(last).find(last), std::string::npos);
    }
}

TEST_F(Crowd, ThousandSlowClientsKeepNobodyOutAndTheWatchLosesNoRow) {
    HttpClient reader = Connect();
    reader.Send(Wire("GET", "/api/stream"));
    ASSERT_EQ(reader.Read().status, 200);
    std::vector<HttpClient> slow;
    const std::string request = "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nA: ";
    for (std::size_t i = 0; i < 2 * kClients; ++i) {
        slow.push_back(Connect());
        slow.back().Send(request.substr(0, i % request.size()));
        if (i % 50 == 0) {
            HttpClient honest = Connect();
            honest.Send(Wire("GET", "/api/events"));
            ASSERT_EQ(honest.Read().status, 200) << i;
        }
        if (i >= kClients) {
            slow[i - kClients].Send("x");
        }
    }
    WaitForRows(20);
    EXPECT_EQ(Rows(), AllRows());
    const std::string last = "\"row\":" + std::to_string(m_row) + ",";
    EXPECT_NE(reader.ReadUntil(last).find(last), std::string::npos);
}

TEST_F(Crowd, ClientsThatComeAndGoInAHurryLeaveNothingBehind) {
    for (std::size_t i = 0; i < kClients; ++i) {
        HttpClient client = Connect();
        switch (i % 4) {
            case 0:
                client.Send(Wire("GET", "/dygraph.js"));
                break;
            case 1:
                client.Send(Wire("GET", "/api/stream"));
                break;
            case 2:
                client.Send("PUT / HTTP/1.1\r\nContent-Length: 100\r\n\r\nx");
                break;
            default:
                break;
        }
    }
    HttpClient client = Connect();
    client.Send(Wire("GET", "/api/events"));
    EXPECT_EQ(client.Read().status, 200);
    EXPECT_EQ(Rows(), AllRows());
}

}  // namespace
