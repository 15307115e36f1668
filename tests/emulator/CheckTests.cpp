#include "net/Check.h"

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Loopback.h"
#include "protocol/Answer.h"
#include "transcript/Compare.h"
#include "transcript/Replay.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

using Lines = std::vector<std::string>;

constexpr std::string_view kRecord =
    "0\tstatus\t0_status_ \\r\n"
    "1\treadcurval 9\t0_readcurval 9_37.000\\r\n"
    "2\t-\tunasked\n"
    "3\treadcurval 9\t0_readcurval 9_37.100\\r\n";

class CheckTests : public testing::Test {
 protected:
    CheckTests() {
        options.server = server.Address();
        options.timeout = std::chrono::hours(1);  // a test of silence shortens it
    }

    /// Answers as the record has it, except as a test wants it.
    void AnswerFrom(std::string_view transcript) {
        ReplayOptions replaying;
        replaying.missing = MissingReply::Silent;
        replay.emplace(ReadTranscript(transcript), replaying);
        server.onGot = [this](const Peer::Got& got) {
            for (const Datagram& datagram : replay->Answer(got.bytes)) {
                server.Send(datagram.bytes, got.from);
            }
        };
    }

    CheckReport Run(std::string_view transcript) {
        std::optional<CheckReport> done;
        const Check check(context, ReadTranscript(transcript), options,
                          [&](const CheckReport& report) { done = report; });
        EXPECT_TRUE(RunUntil(context, [&] { return done.has_value(); }));
        return done.value_or(CheckReport{});
    }

    static Lines Texts(const CheckReport& report) {
        Lines lines;
        for (const Difference& difference : report.differences) {
            lines.push_back(FormatDifference(difference));
        }
        return lines;
    }

    boost::asio::io_context context;
    Peer server{context};
    Check::Options options;
    std::optional<Replay> replay;
};

TEST_F(CheckTests, ServerThatAnswersAsRecorded_HasNoDifferences) {
    AnswerFrom(kRecord);
    const CheckReport report = Run(kRecord);
    EXPECT_EQ(Texts(report), Lines{});
    EXPECT_EQ(report.exchanges, 3U);
    EXPECT_EQ(report.all, 3U);
    EXPECT_EQ(report.unasked, 1U);
    EXPECT_EQ(server.Bytes(), (Lines{"status", "readcurval 9", "readcurval 9"}));
    EXPECT_EQ(FormatCheckReport(report),
              "no differences in 3 exchanges\n1 recorded datagram that nobody asked for left out\n");
}

TEST_F(CheckTests, Differences_AreToldWithTheirLines) {
    AnswerFrom(
        "0\tstatus\t1_status_ \\r\n1\treadcurval 9\t0_readcurval 9_37.000\\r\n1\treadcurval 9\t0_readcurval 9_36\\r\n");
    std::size_t told = 0;
    options.onDifferences = [&](const std::vector<Difference>& differences) { told += differences.size(); };
    const CheckReport report = Run(kRecord);
    EXPECT_EQ(told, 2U);
    EXPECT_EQ(FormatCheckReport(report),
              "line 1, status: code: recorded 0, got 1\n"
              "line 4, readcurval 9: payload: recorded \"37.100\", got \"36\"\n"
              "2 differences in 3 exchanges\n"
              "1 recorded datagram that nobody asked for left out\n");
    options.tolerance = 1.2;
    AnswerFrom("0\tstatus\t0_status_ \\r\n1\treadcurval 9\t0_readcurval 9_36\\r\n");
    EXPECT_EQ(Texts(Run(kRecord)), Lines{});
}

TEST_F(CheckTests, SilentServer_IsADifferenceAndHoldsNothingUp) {
    AnswerFrom("1\treadcurval 9\t0_readcurval 9_37.000\\r\n3\treadcurval 9\t0_readcurval 9_37.100\\r\n");
    options.timeout = std::chrono::milliseconds(30);
    // The others took long when they were recorded: theirs is waited for, on a busy machine too.
    constexpr std::string_view kSlow =
        "0\tstatus\t0_status_ \\r\n"
        "1 1000\treadcurval 9\t0_readcurval 9_37.000\\r\n"
        "3 1000\treadcurval 9\t0_readcurval 9_37.100\\r\n";
    EXPECT_EQ(Texts(Run(kSlow)), Lines{"line 1, status: number: recorded 1 datagram, got no answer"});
}

TEST_F(CheckTests, AnswerThatTookLongWhenItWasRecorded_IsWaitedForAsMuchLonger) {
    boost::asio::steady_timer late(context);
    server.onGot = [&](const Peer::Got& got) {
        late.expires_after(std::chrono::milliseconds(50));
        late.async_wait([&, from = got.from](const boost::system::error_code&) { server.Send("0_x_1\r", from); });
    };
    options.timeout = std::chrono::milliseconds(1);
    EXPECT_EQ(Texts(Run("0 1000\tx\t0_x_1\\r\n")), Lines{});
}

TEST_F(CheckTests, AnswerWhereNoneWasRecorded_IsADifference) {
    AnswerFrom("0\tfind 9\t0_find 9_1\\r\n");
    EXPECT_EQ(Texts(Run("0\tfind 9\t-\n")), Lines{"line 1, find 9: number: recorded no answer, got 1 datagram"});
    options.timeout = std::chrono::milliseconds(30);
    EXPECT_EQ(Texts(Run("0\tsilent\t-\n")), Lines{});
}

TEST_F(CheckTests, ReplyTwice_IsADifferenceOfItsOwnLineAlone) {
    AnswerFrom("0\tx\t0_x_1\\r\t0_x_1\\r\n0\ty\t0_y_1\\r\n");
    options.extra = std::chrono::milliseconds(0);  // the second one comes when the next command is under way, or not
    constexpr std::string_view kOnce = "0\tx\t0_x_1\\r\n0\ty\t0_y_1\\r\n";
    for (int i = 0; i < 50; ++i) {
        const CheckReport report = Run(kOnce);
        EXPECT_EQ(report.exchanges, 2U);
        const Lines lines = Texts(report);
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines[0].substr(0, 18), "line 1, x: number:") << lines[0];
    }
}

TEST_F(CheckTests, SeveralRecordedDatagrams_AreWaitedFor) {
    AnswerFrom("0\tx\t0_x_1\\r\t0_x_2\\r\n");
    EXPECT_EQ(Texts(Run("0\tx\t0_x_1\\r\t0_x_3\\r\n")), Lines{"line 1, x: payload: recorded \"3\", got \"2\""});
}

TEST_F(CheckTests, RecordedPauses_AreKeptWhenAskedFor) {
    AnswerFrom(kRecord);
    constexpr std::string_view kPaused =
        "5\tstatus\t0_status_ \\r\n5.2\treadcurval 9\t0_readcurval 9_37.000\\r\n0\tstatus\t0_status_ \\r\n";
    // A timer that began before the pause and is shorter ends before it, however busy the machine is.
    boost::asio::steady_timer shorter(context, std::chrono::milliseconds(190));
    std::optional<std::size_t> cameMeanwhile;
    shorter.async_wait([&](const boost::system::error_code&) { cameMeanwhile = server.got.size(); });
    options.withPauses = true;
    EXPECT_EQ(Texts(Run(kPaused)), Lines{});
    EXPECT_EQ(server.got.size(), 3U);  // and the last one, whose time is before the others, comes at all
    ASSERT_TRUE(cameMeanwhile);
    EXPECT_LE(*cameMeanwhile, 1U);
}

TEST_F(CheckTests, Stop_EndsAtOnceAndSaysHowFarItCame) {
    AnswerFrom("0\tstatus\t0_status_ \\r\n");
    options.timeout = std::chrono::hours(1);
    std::optional<CheckReport> done;
    Check check(context, ReadTranscript(kRecord), options, [&](const CheckReport& report) { done = report; });
    ASSERT_TRUE(RunUntil(context, [&] { return server.got.size() == 2; }));  // the second one is not answered
    check.Stop();
    ASSERT_TRUE(done.has_value());
    EXPECT_EQ(FormatCheckReport(*done),
              "no differences in 1 exchange\nstopped: 2 of 3 exchanges were not compared\n"
              "1 recorded datagram that nobody asked for left out\n");
    server.Close();
    context.restart();
    context.run();  // has nothing more to do
    EXPECT_TRUE(context.stopped());
}

#ifndef _WIN32  // Wine does not tell that nobody listens
TEST_F(CheckTests, ServerThatIsNotThere_IsNoAnswerAndIsNotWaitedFor) {
    options.server = NobodyThere(context);
    options.timeout = std::chrono::hours(1);
    std::string transcript;
    for (int i = 0; i < 2000; ++i) {
        transcript += "0\tx\t0_x_1\\r\n";
    }
    const CheckReport report = Run(transcript);
    EXPECT_EQ(report.exchanges, 2000U);
    EXPECT_EQ(report.differences.size(), 2000U);
    EXPECT_EQ(report.refused, 2000U);
    EXPECT_NE(FormatCheckReport(report).find("\nnobody listened for 2000 commands\n"), std::string::npos);
}
#endif

TEST_F(CheckTests, EmptyTranscript_IsDoneAtOnce) {
    EXPECT_EQ(FormatCheckReport(Run("")), "no differences in 0 exchanges\n");
}

}  // namespace

}  // namespace emulator
