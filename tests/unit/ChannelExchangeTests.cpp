// What all reads and writes of all channels share, held against each of them.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "Fixture.h"
#include "ResultTexts.h"
#include "channels/SharedValues.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"

namespace {

/// One operation of one channel.
struct Operation {
    std::wstring method;
    std::string command;
    std::function<std::int32_t(CDevApiInterface_Impl&, double*)> run;  // a write takes the number, a read gives it
    std::function<SharedDouble&(CDevApiInterface_Impl&)> cache;
    std::string errorMarks;
    std::string silentMarks;
    bool answersWhileBusy = true;
    bool needsLogFlag = false;  // lines only when the channel logs
};

SharedDouble& TemperatureTarget(CDevApiInterface_Impl& device) { return device.m_pTemperature[0]->m_dTarget; }
SharedDouble& TemperatureCurrent(CDevApiInterface_Impl& device) { return device.m_pTemperature[0]->m_dCurrent; }
SharedDouble& GasTarget(CDevApiInterface_Impl& device) { return device.m_pGasConcentration[0]->m_dTarget; }
SharedDouble& GasCurrent(CDevApiInterface_Impl& device) { return device.m_pGasConcentration[0]->m_dCurrent; }
SharedDouble& HumidityTarget(CDevApiInterface_Impl& device) { return device.m_pHumidifier[0]->m_dTarget; }
SharedDouble& HumidityCurrent(CDevApiInterface_Impl& device) { return device.m_pHumidifier[0]->m_dCurrent; }

const std::vector<Operation> kReads{
    {L"CDevApiInterface_Temperature_Impl::GetTargetTemperature", "readsetpoint 9 0 -1",
     [](auto& device, double* value) { return device.m_pTemperature[0]->GetTargetTemperature(value); },
     TemperatureTarget, "eNn", ""},
    {L"CDevApiInterface_Temperature_Impl::GetCurrentTemperature", "readcurval 9",
     [](auto& device, double* value) { return device.m_pTemperature[0]->GetCurrentTemperature(value); },
     TemperatureCurrent, "e", "n"},
    {L"CDevApiInterface_GasConcentration_Impl::GetTargetGasConcentration", "readsetpoint 10 0 -1",
     [](auto& device, double* value) { return device.m_pGasConcentration[0]->GetTargetGasConcentration(value); },
     GasTarget, "e", "", true, true},
    {L"CDevApiInterface_GasConcentration_Impl::GetCurrentGasConcentration", "readcurval 10(0)",
     [](auto& device, double* value) { return device.m_pGasConcentration[0]->GetCurrentGasConcentration(value); },
     GasCurrent, "e", "", true, true},
    {L"CDevApiInterface_Humidifier_Impl::GetTargetHumidity", "readsetpoint 15 0 -1",
     [](auto& device, double* value) { return device.m_pHumidifier[0]->GetTargetHumidity(value); }, HumidityTarget, "e",
     "", false},
    {L"CDevApiInterface_Humidifier_Impl::GetCurrentHumidity", "readcurval 15(0)",
     [](auto& device, double* value) { return device.m_pHumidifier[0]->GetCurrentHumidity(value); }, HumidityCurrent,
     "e", "", false},
};

/// Temperature writes go on to the read-back, which has tests of its own.
const std::vector<Operation> kWrites{
    {L"CDevApiInterface_Temperature_Impl::GetCurrentTemperature", "writesetpoint 9 0 30.0",
     [](auto& device, double* value) { return device.m_pTemperature[0]->SetTargetTemperature(*value); },
     TemperatureTarget, "", ""},
    {L"CDevApiInterface_GasConcentration_Impl::SetTargetGasConcentration", "writesetpoint 10 0 30.00",
     [](auto& device, double* value) { return device.m_pGasConcentration[0]->SetTargetGasConcentration(*value); },
     GasTarget, "", "", true, true},
    {L"CDevApiInterface_Humidifier_Impl::SetTargetHumidity", "writesetpoint 15 0 30",
     [](auto& device, double* value) { return device.m_pHumidifier[0]->SetTargetHumidity(*value); }, HumidityTarget, "",
     ""},
};

class ChannelExchangeTests : public DeviceTest {
 protected:
    /// One live channel of each kind, everything at 20 inside and 30 wanted.
    CDevApiInterface_Impl& Device(bool channelsLog) {
        CDevApiInterface_Impl& device = RealDevice();
        const auto prepare = [&](auto& channel, int product) {
            Assign(channel, product, 0, 0.0, 90.0);
            channel.m_bLogCommunication = channelsLog ? 1 : 0;
            Put(channel.m_dTarget, 20.0);
            Put(channel.m_dCurrent, 20.0);
        };
        prepare(*device.m_pTemperature[0], 9);
        prepare(*device.m_pGasConcentration[0], 10);
        prepare(*device.m_pHumidifier[0], 15);
        platform.server.ClearCommands();
        HostLog::Reset();
        return device;
    }
};

TEST_F(ChannelExchangeTests, Reads_EachResultCode_GivesItsResultValueAndLine) {
    for (const Operation& read : kReads) {
        for (const bool channelsLog : {false, true}) {
            for (const char code : std::string("0123456789x ")) {
                SCOPED_TRACE(testing::Message() << read.command << " code " << code << " log " << channelsLog);
                CDevApiInterface_Impl& device = Device(channelsLog);
                platform.server.Answer(read.command, std::string(1, code) + "_" + read.command + "_36.5\r");
                double value = -7.0;
                const int number = code >= '0' && code <= '9' ? code - '0' : 0;
                EXPECT_EQ(read.run(device, &value), number == 3 ? -1 : 0);
                EXPECT_EQ(value, number < 3 ? 36.5 : -7.0);
                EXPECT_EQ(Get(read.cache(device)), number < 3 ? 36.5 : 20.0);
                const bool logged = number >= 1 && number <= 3 && (channelsLog || !read.needsLogFlag);
                EXPECT_EQ(HostLog::Lines(), logged ? std::vector<std::wstring>{ResultLine(read.method, number)}
                                                   : std::vector<std::wstring>{});
                EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{read.command});
            }
        }
    }
}

TEST_F(ChannelExchangeTests, Reads_ErrorPayloads_FailAndAreLoggedByTheirMarks) {
    for (const Operation& read : kReads) {
        for (const bool channelsLog : {false, true}) {
            for (const char mark : std::string("eNn")) {
                SCOPED_TRACE(testing::Message() << read.command << " mark " << mark << " log " << channelsLog);
                CDevApiInterface_Impl& device = Device(channelsLog);
                const std::string reply = "0_" + read.command + "_" + mark + "rr 5\r";
                platform.server.Answer(read.command, reply);
                double value = -7.0;
                const bool error = read.errorMarks.find(mark) != std::string::npos;
                const bool silent = read.silentMarks.find(mark) != std::string::npos;
                EXPECT_EQ(read.run(device, &value), error || silent ? -1 : 0);
                EXPECT_EQ(value, error || silent ? -7.0 : 0.0);  // other letters read as the number 0
                const bool logged = error && (channelsLog || !read.needsLogFlag);
                const std::wstring line = read.method + L" error: " + std::wstring(reply.begin(), reply.end());
                EXPECT_EQ(HostLog::Lines(), logged ? std::vector<std::wstring>{line} : std::vector<std::wstring>{});
            }
        }
    }
}

TEST_F(ChannelExchangeTests, Reads_Code3WithAnErrorPayload_OnlyReportTheCode) {
    for (const Operation& read : kReads) {
        SCOPED_TRACE(read.command);
        CDevApiInterface_Impl& device = Device(true);
        platform.server.Answer(read.command, "3_" + read.command + "_error\r");
        double value = -7.0;
        EXPECT_EQ(read.run(device, &value), -1);
        EXPECT_EQ(HostLog::Lines(), std::vector<std::wstring>{ResultLine(read.method, 3)});
    }
}

TEST_F(ChannelExchangeTests, Reads_RepliesWithoutAValue_SucceedAndChangeNothing) {
    for (const Operation& read : kReads) {
        for (const std::string& reply :
             {"0_" + read.command + "_37.0", "0_" + read.command + "_\r", "0_" + read.command + "_", std::string("0"),
              std::string("\r"), std::string("0_\r_37.0\r"), std::string("no separators"), std::string(64, 'x'),
              std::string(64, '_')}) {
            SCOPED_TRACE(testing::Message() << read.command << " reply " << testing::PrintToString(reply));
            CDevApiInterface_Impl& device = Device(true);
            platform.server.Answer(read.command, reply);
            double value = -7.0;
            EXPECT_EQ(read.run(device, &value), 0);
            EXPECT_EQ(value, -7.0);
            EXPECT_EQ(Get(read.cache(device)), 20.0);
        }
    }
}

TEST_F(ChannelExchangeTests, Reads_NumbersThatAreNotFinite_AreNoValue) {
    for (const Operation& read : kReads) {
        for (const char* const payload : {"-nan", "+NaN", "inf", "-Infinity", "1e999", "-1e999", "0x1p5000"}) {
            for (const char code : std::string("012")) {
                SCOPED_TRACE(testing::Message() << read.command << " " << payload << " code " << code);
                CDevApiInterface_Impl& device = Device(true);
                platform.server.Answer(read.command,
                                       std::string(1, code) + "_" + read.command + "_" + payload + " 5\r");
                double value = -7.0;
                EXPECT_EQ(read.run(device, &value), 0);
                EXPECT_EQ(value, -7.0);
                EXPECT_EQ(Get(read.cache(device)), 20.0);
                EXPECT_EQ(HostLog::Lines(), code == '0'
                                                ? std::vector<std::wstring>{}
                                                : std::vector<std::wstring>{ResultLine(read.method, code - '0')});
            }
        }
    }
}

TEST_F(ChannelExchangeTests, Reads_ReplyOfExactly64Bytes_IsReadWhole) {
    for (const Operation& read : kReads) {
        SCOPED_TRACE(read.command);
        const std::string start = "0_" + read.command + "_36.25 ";
        CDevApiInterface_Impl& device = Device(true);
        device.m_bLogCommunication = true;
        platform.server.Answer(read.command, start + std::string(64 - start.size(), 'y'));
        double value = -7.0;
        EXPECT_EQ(read.run(device, &value), 0);
        EXPECT_EQ(value, 36.25);
    }
}

TEST_F(ChannelExchangeTests, Reads_NoAnswer_FailSilently) {
    for (const Operation& read : kReads) {
        for (const ServerReply& reply :
             {ServerReply(kReceiveFails), ServerReply(""), ServerReply(std::string(65, '1'))}) {
            SCOPED_TRACE(testing::Message() << read.command << " reply " << testing::PrintToString(reply));
            CDevApiInterface_Impl& device = Device(true);
            platform.server.Answer(read.command, reply);
            double value = -7.0;
            EXPECT_EQ(read.run(device, &value), -1);
            EXPECT_EQ(value, -7.0);
            EXPECT_TRUE(HostLog::Lines().empty());
        }
    }
}

TEST_F(ChannelExchangeTests, Reads_WhileBusy_AnswerFromMemoryButHumidityAsks) {
    for (const Operation& read : kReads) {
        SCOPED_TRACE(read.command);
        CDevApiInterface_Impl& device = Device(true);
        device.m_bBusy = true;
        Put(read.cache(device), 21.25);
        platform.server.Answer(read.command, "0_" + read.command + "_36.5\r");
        double value = -7.0;
        EXPECT_EQ(read.run(device, &value), 0);
        EXPECT_EQ(value, read.answersWhileBusy ? 21.25 : 36.5);
        EXPECT_EQ(platform.server.Commands().size(), read.answersWhileBusy ? 0U : 1U);
    }
}

TEST_F(ChannelExchangeTests, Reads_NullPointer_FailWithoutAsking) {
    for (const Operation& read : kReads) {
        SCOPED_TRACE(read.command);
        CDevApiInterface_Impl& device = Device(true);
        EXPECT_EQ(read.run(device, nullptr), -1);
        EXPECT_TRUE(platform.server.Commands().empty());
    }
}

TEST_F(ChannelExchangeTests, Reads_WithoutACallback_GiveTheSameResults) {
    for (const Operation& read : kReads) {
        SCOPED_TRACE(read.command);
        CDevApiInterface_Impl& device = Device(true);
        device.HostCallback = nullptr;
        double value = -7.0;
        platform.server.Answer(read.command, "3_" + read.command + "_1\r");
        EXPECT_EQ(read.run(device, &value), -1);
        platform.server.Answer(read.command, "0_" + read.command + "_error\r");
        EXPECT_EQ(read.run(device, &value), -1);
    }
}

TEST_F(ChannelExchangeTests, Writes_EachResultCode_GivesItsResultTargetAndLine) {
    for (const Operation& write : kWrites) {
        for (const bool channelsLog : {false, true}) {
            for (const char code : std::string("0123456789x")) {
                SCOPED_TRACE(testing::Message() << write.command << " code " << code << " log " << channelsLog);
                CDevApiInterface_Impl& device = Device(channelsLog);
                platform.server.Answer(write.command, std::string(1, code) + "_" + write.command + "_1\r");
                platform.server.Answer("readsetpoint 9 0 -1", "0_readsetpoint 9 0 -1_30.0\r");
                double wanted = 30.0;
                const int number = code >= '0' && code <= '9' ? code - '0' : 0;
                EXPECT_EQ(write.run(device, &wanted), number == 3 ? -1 : 0);
                EXPECT_EQ(Get(write.cache(device)), number == 3 ? 20.0 : 30.0);
                // Only the gas channel keeps a server's own problem to itself while it does not log.
                const bool logged = number >= 1 && number <= 3 && !(write.needsLogFlag && !channelsLog && number == 1);
                EXPECT_EQ(HostLog::Lines(), logged ? std::vector<std::wstring>{ResultLine(write.method, number)}
                                                   : std::vector<std::wstring>{});
                EXPECT_EQ(platform.server.Commands().front(), write.command);
            }
        }
    }
}

TEST_F(ChannelExchangeTests, Writes_NoAnswer_FailSilentlyAndKeepTheTarget) {
    for (const Operation& write : kWrites) {
        for (const ServerReply& reply : {ServerReply(kReceiveFails), ServerReply("")}) {
            SCOPED_TRACE(testing::Message() << write.command << " reply " << testing::PrintToString(reply));
            CDevApiInterface_Impl& device = Device(true);
            platform.server.Answer(write.command, reply);
            double wanted = 30.0;
            EXPECT_EQ(write.run(device, &wanted), -1);
            EXPECT_EQ(Get(write.cache(device)), 20.0);
            EXPECT_TRUE(HostLog::Lines().empty());
            EXPECT_EQ(platform.server.Commands().size(), 1U);
            EXPECT_EQ(platform.windows.NoticeCount(), 0U);
        }
    }
}

TEST_F(ChannelExchangeTests, Writes_WhileBusy_AreSent) {
    for (const Operation& write : kWrites) {
        SCOPED_TRACE(write.command);
        CDevApiInterface_Impl& device = Device(false);
        device.m_bBusy = true;
        double wanted = 30.0;
        EXPECT_EQ(write.run(device, &wanted), 0);
        EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{write.command});
    }
}

TEST_F(ChannelExchangeTests, Writes_NumbersThatAreNone_GoToTheLowestTarget) {
    for (const Operation& write : kWrites) {
        CDevApiInterface_Impl& device = Device(false);
        device.m_pTemperature[0]->m_dMin = 21.0;
        device.m_pGasConcentration[0]->m_dMin = 21.0;
        device.m_pHumidifier[0]->m_dMin = 21.0;
        platform.server.Answer("readsetpoint 9 0 -1", "0_readsetpoint 9 0 -1_30.0\r");
        struct Case {
            double wanted;
            double target;
        };
        for (const Case& row : {Case{std::nan(""), 21.0}, Case{std::numeric_limits<double>::infinity(), 90.0},
                                Case{-std::numeric_limits<double>::infinity(), 21.0}}) {
            SCOPED_TRACE(testing::Message() << write.command << " " << row.wanted);
            double wanted = row.wanted;
            EXPECT_EQ(write.run(device, &wanted), 0);
            EXPECT_EQ(Get(write.cache(device)), row.target);
        }
    }
}

}  // namespace
