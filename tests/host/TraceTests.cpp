// Exchanges from the lines that the library logs, and `oko-host trace`.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "RunHost.h"
#include "judge/Exchanges.h"
#include "model/DeviceMessage.h"
#include "transcript/Transcript.h"

namespace {

TEST(Exchanges, Line_IsCommandAndReply) {
    const auto exchange =
        ReadExchangeLine("OKO-Lab bold line CommandSend: readcurval 9(0) -> 0_readcurval 9(0)_37.1\r");
    ASSERT_TRUE(exchange);
    EXPECT_EQ(exchange->command, "readcurval 9(0)");
    EXPECT_EQ(exchange->reply, "0_readcurval 9(0)_37.1\r");
}

TEST(Exchanges, LineOfTheSimulator_IsOneToo) {
    const auto exchange = ReadExchangeLine("OKO-Lab bold line CommandSendSim: listprod -> 0_listprod_9");
    ASSERT_TRUE(exchange);
    EXPECT_EQ(exchange->command, "listprod");
}

TEST(Exchanges, LineWithoutReply_IsNoAnswer) {
    const auto exchange = ReadExchangeLine("OKO-Lab bold line CommandSend: status -> ");
    ASSERT_TRUE(exchange);
    EXPECT_EQ(exchange->reply, std::nullopt);
}

TEST(Exchanges, ReplyMayHoldAnArrow) {
    EXPECT_EQ(ReadExchangeLine("OKO-Lab bold line CommandSend: status -> a -> b")->reply, "a -> b");
}

TEST(Exchanges, BytesOfTheWire_ComeBackFromUtf8) {
    const auto exchange =
        ReadExchangeLine("OKO-Lab bold line CommandSend: status -> \x7F\xC2\x80\xC2\xB0\xC3\xBF\xE2\x82\xAC\xC3");
    ASSERT_TRUE(exchange);
    EXPECT_EQ(exchange->reply, "\x7F\x80\xB0\xFF??");
}

TEST(Exchanges, OtherLines_AreNone) {
    for (const char* const line : {"", "OKO-Lab bold line Init()", "OKO-Lab bold line CommandSend:",
                                   "OKO-Lab bold line CommandSend: status", "OKO-Lab bold line CommandSend:  -> 0_x_",
                                   "x OKO-Lab bold line CommandSend: a -> b", "CDevApiInterface_Impl::Init a -> b"}) {
        EXPECT_FALSE(ReadExchangeLine(line)) << line;
    }
}

DeviceMessage At(double seconds, decltype(DeviceMessage::what) what) { return {{0, seconds}, std::move(what)}; }

DeviceMessage Logged(double seconds, const std::string& command) {
    return At(seconds, device_message::LogLine{"OKO-Lab bold line CommandSend: " + command + " -> 0_x_\r"});
}

TEST(Exchanges, Time_CountsFromTheCallOrTheExchangeBefore) {
    ExchangeTimes times;
    EXPECT_FALSE(times.Take(At(2.0, device_message::CallBegun{})));
    const auto first = times.Take(Logged(2.25, "a"));
    const auto second = times.Take(Logged(2.5, "b"));
    EXPECT_FALSE(times.Take(At(3.0, device_message::LogLine{"Starting server first."})));
    const auto third = times.Take(Logged(3.125, "c"));
    EXPECT_FALSE(times.Take(At(9.0, device_message::RoundDone{})));
    EXPECT_FALSE(times.Take(At(10.0, device_message::CallBegun{})));
    const auto fourth = times.Take(Logged(10.5, "d"));
    ASSERT_TRUE(first && second && third && fourth);
    EXPECT_EQ(
        std::vector<double>({first->beginSeconds, second->beginSeconds, third->beginSeconds, fourth->beginSeconds}),
        std::vector<double>({2.0, 2.25, 3.0, 10.0}));
    EXPECT_EQ(std::vector<double>(
                  {first->durationSeconds, second->durationSeconds, third->durationSeconds, fourth->durationSeconds}),
              std::vector<double>({0.25, 0.25, 0.125, 0.5}));
}

/// What the emulator reads as the first replies to a command.
std::vector<std::string> FirstReplies(const std::string& transcript, const std::string& command) {
    std::vector<std::string> replies;
    for (const emulator::Exchange& exchange : emulator::ReadTranscript(transcript)) {
        if (exchange.command == command) {
            for (const emulator::Reply& reply : exchange.replies) {
                replies.push_back(reply.datagram);
            }
            return replies;
        }
    }
    return {"no such command"};
}

TEST(Exchanges, TranscriptLine_IsReadByTheEmulatorWithoutAReplyTooMany) {
    const Exchange answered{1.5, 0.000213, "status", "0_status_\x7F\r"};
    EXPECT_EQ(TranscriptLine(answered), "1.500 0.000213\tstatus\t0_status_\\x7F\\r");
    const Exchange silent{1.5, 2.0, "listprod", std::nullopt};
    EXPECT_EQ(TranscriptLine(silent), "1.500 2.000000\tlistprod\t-");
    const auto read = emulator::ReadTranscript(TranscriptLine(answered) + "\n" + TranscriptLine(silent) + "\n");
    ASSERT_EQ(read.size(), 2U);
    EXPECT_EQ(read[0].command, "status");
    ASSERT_EQ(read[0].replies.size(), 1U);
    EXPECT_EQ(read[0].replies[0].datagram, "0_status_\x7F\r");
    EXPECT_DOUBLE_EQ(read[0].replies[0].delaySeconds.value_or(0.0), 0.000213);
    EXPECT_EQ(read[1].command, "listprod");
    EXPECT_TRUE(read[1].replies.empty());
}

TEST(TraceCommand, Exchanges_AreAllThatIsOnTheOutput) {
    const HostRun run("trace --every 10ms --rows 2", "exchanges\n");
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(FirstReplies(run.output, "readcurval CO2"), std::vector<std::string>{"0_readcurval CO2_5.000000\r"});
    EXPECT_EQ(FirstReplies(run.output, "readcurval Base"), std::vector<std::string>{"0_readcurval Base_30.000000\r"});
    EXPECT_EQ(run.errors.find("simulator: a simulated incubator"), 0U) << run.errors;
    EXPECT_NE(run.errors.find(" exchanges"), std::string::npos) << run.errors;
}

TEST(TraceCommand, OutputFile_TakesThemAndIsNeverOverwritten) {
    const HostRun run("trace --every 10ms --rows 2 --output made", "exchanges silent\n");
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(FirstReplies(run.made, "readcurval CO2"), std::vector<std::string>{});
    EXPECT_NE(run.made.find("\treadcurval CO2\t-\n"), std::string::npos) << run.made;
    EXPECT_NE(run.errors.find(" exchanges in made"), std::string::npos) << run.errors;
    const HostRun again("trace --rows 2 --output control", "exchanges\n");
    EXPECT_EQ(again.exitCode, 10) << again.errors;
    EXPECT_EQ(again.journal, "");
}

TEST(TraceCommand, LibraryThatLogsNothing_IsSaidWithWhatToDo) {
    const HostRun run("trace --every 10ms --rows 2");
    EXPECT_EQ(run.exitCode, 16);
    EXPECT_NE(run.errors.find("set the REG_DWORD LogCommunication to 1"), std::string::npos) << run.errors;
    EXPECT_NE(run.errors.find("--switch-on"), std::string::npos) << run.errors;
}

TEST(TraceCommand, SwitchThatCannotBeSet_IsSaidBeforeTheDeviceIsTouched) {
    const HostRun run("trace --switch-on --rows 2", "exchanges\n");
    EXPECT_EQ(run.exitCode, 16);
    EXPECT_NE(run.errors.find("LogCommunication"), std::string::npos) << run.errors;
    EXPECT_EQ(run.journal, "");
}

}  // namespace
