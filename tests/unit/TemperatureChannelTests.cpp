#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "Fixture.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"

namespace {

class TemperatureChannelTests : public DeviceTest {
 protected:
    CDevApiInterface_Temperature_Impl& Channel(int product, int number) {
        return Ready(*RealDevice().m_pTemperature[0], product, number);
    }
};

TEST_F(TemperatureChannelTests, CurrentRead_IsAddressedByProductAndChannel) {
    struct Case {
        int product;
        int channel;
        const char* command;
    };
    for (const Case& row : std::vector<Case>{{7, 0, "readcurval 7"},
                                             {7, 1, "readcurval 7(1)"},
                                             {8, 0, "readcurval 8"},
                                             {8, 1, "bl-param-read 8 1"},
                                             {8, 74, "bl-param-read 8 74"},
                                             {9, 0, "readcurval 9"},
                                             {9, 107, "bl-param-read 9 107"},
                                             {10, 206, "bl-param-read 10 206"},
                                             {14, 259, "bl-param-read 14 259"},
                                             {15, 0, "readcurval 15"},
                                             {15, 209, "bl-param-read 15 209"},
                                             {16, 0, "readcurval 16(0)"},
                                             {16, 1, "readcurval 16(1)"},
                                             {16, 2, "readcurval 16(2)"},
                                             {17, 0, "readcurval 17"},
                                             {17, 6, "readcurval 17(6)"},
                                             {8, -1, "readcurval 8"},
                                             {6, 3, "readcurval 6(3)"}}) {
        SCOPED_TRACE(testing::Message() << row.product << "/" << row.channel);
        double value = 0.0;
        EXPECT_EQ(Channel(row.product, row.channel).GetCurrentTemperature(&value), 0);
        EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{row.command});
    }
}

TEST_F(TemperatureChannelTests, SetPoint_OnlyZonesHaveOne) {
    for (const int product : {7, 8, 9, 14, 15, 16, 17}) {
        for (const int number : {-1, 0, 1, 2, 107}) {
            SCOPED_TRACE(testing::Message() << product << "/" << number);
            const bool zone = number == 0 || (product == 16 && number == 1);
            double value = 0.0;
            auto& channel = Channel(product, number);
            EXPECT_EQ(channel.GetTargetTemperature(&value), zone ? 0 : -1);
            EXPECT_EQ(channel.SetTargetTemperature(30.0), zone ? 0 : -1);
            EXPECT_EQ(platform.server.Commands().empty(), !zone);
        }
    }
}

TEST_F(TemperatureChannelTests, TargetRead_OfASensor_FailsEvenWhileBusy) {
    auto& channel = Channel(9, 107);
    m_pDevice->m_bBusy = true;
    double value = 1.0;
    EXPECT_EQ(channel.GetTargetTemperature(&value), -1);
    EXPECT_EQ(channel.GetCurrentTemperature(&value), 0);
    EXPECT_EQ(value, 20.0);
}

TEST_F(TemperatureChannelTests, SetTarget_IsClampedToTheLimits) {
    struct Case {
        double wanted;
        const char* command;
        double target;
    };
    for (const Case& row : {Case{80.0, "writesetpoint 9 0 50.0", 50.0}, Case{5.0, "writesetpoint 9 0 20.0", 20.0},
                            Case{37.04, "writesetpoint 9 0 37.0", 37.04}, Case{37.06, "writesetpoint 9 0 37.1", 37.06},
                            Case{20.0, "writesetpoint 9 0 20.0", 20.0}, Case{50.0, "writesetpoint 9 0 50.0", 50.0}}) {
        SCOPED_TRACE(row.wanted);
        auto& channel = Channel(9, 0);
        EXPECT_EQ(channel.SetTargetTemperature(row.wanted), 0);
        EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{row.command, "readsetpoint 9 0 -1"}));
        EXPECT_EQ(channel.m_dTarget, row.target);
    }
}

TEST_F(TemperatureChannelTests, SetTarget_MinimumAboveTheMaximum_Wins) {
    auto& channel = Channel(9, 0);
    channel.m_dMin = 40.0;
    channel.m_dMax = 30.0;
    channel.SetTargetTemperature(35.0);
    EXPECT_EQ(platform.server.Commands().front(), "writesetpoint 9 0 40.0");
}

TEST_F(TemperatureChannelTests, SetTarget_ReadBackFails_RestoresThePreviousTarget) {
    struct Case {
        double previous;
        const char* command;
    };
    for (const ServerReply& readBack : {ServerReply(kReceiveFails), ServerReply("0_readsetpoint 9 0 -1_error\r"),
                                        ServerReply("3_readsetpoint 9 0 -1_1\r")}) {
        for (const Case& row : {Case{37.0, "writesetpoint 9 0 37.0"}, Case{31.46, "writesetpoint 9 0 31.5"},
                                Case{50.0, "writesetpoint 9 0 50.0"}}) {
            SCOPED_TRACE(testing::Message() << testing::PrintToString(readBack) << " after " << row.previous);
            auto& channel = Channel(9, 0);
            platform.server.AnswerInTurn("readsetpoint 9 0 -1", {"0_readsetpoint 9 0 -1_20.5\r", readBack});
            platform.server.AnswerInTurn(row.command, {"0_", kReceiveFails});  // the second one is not looked at
            ASSERT_EQ(channel.SetTargetTemperature(row.previous), 0);
            platform.server.ClearCommands();
            EXPECT_EQ(channel.SetTargetTemperature(25.0), 0);
            EXPECT_EQ(platform.server.Commands(),
                      (std::vector<std::string>{"writesetpoint 9 0 25.0", "readsetpoint 9 0 -1", row.command}));
            EXPECT_EQ(channel.m_dTarget, row.previous);
        }
    }
}

TEST_F(TemperatureChannelTests, SetTarget_ReadBackFails_RestoresATargetThatTheServerTold) {
    auto& channel = Channel(9, 0);
    platform.server.AnswerInTurn("readsetpoint 9 0 -1", {"0_readsetpoint 9 0 -1_33.3\r", kReceiveFails});
    double value = 0.0;
    ASSERT_EQ(channel.GetTargetTemperature(&value), 0);
    EXPECT_EQ(channel.SetTargetTemperature(25.0), 0);
    EXPECT_EQ(platform.server.Commands().back(), "writesetpoint 9 0 33.3");
    EXPECT_EQ(channel.m_dTarget, 33.3);
}

TEST_F(TemperatureChannelTests, SetTarget_SlowReadBack_IsRepeatedTwiceBeforeTheTargetIsRestored) {
    struct Case {
        int silences;
        double target;
        const char* last;
    };
    for (const Case& row : {Case{1, 25.0, "readsetpoint 9 0 -1"}, Case{2, 25.0, "readsetpoint 9 0 -1"},
                            Case{3, 37.0, "writesetpoint 9 0 37.0"}}) {
        SCOPED_TRACE(row.silences);
        auto& channel = Channel(9, 0);
        channel.m_pDevice->SetReplyTimeout(200);
        platform.server.StaySilent("readsetpoint 9 0 -1");
        platform.server.onCall = [&, left = row.silences](const std::string& call) mutable {
            if (call == "wait 200" && platform.server.Commands().back() == "readsetpoint 9 0 -1" && --left == 0) {
                platform.clock.onSleep = {};
                platform.server.Speak("readsetpoint 9 0 -1");
            }
        };
        EXPECT_EQ(channel.SetTargetTemperature(25.0), 0);
        EXPECT_EQ(channel.m_dTarget, row.target);
        EXPECT_EQ(platform.server.Commands().back(), row.last);
        const auto commands = platform.server.Commands();
        EXPECT_EQ(std::ranges::count(commands, "readsetpoint 9 0 -1"), std::min(row.silences + 1, 3));
        platform.server.onCall = {};
        platform.server.Speak("readsetpoint 9 0 -1");
        m_pDevice.reset();
    }
}

TEST_F(TemperatureChannelTests, SetTarget_ReadBackThatFailsAtOnce_IsNotRepeated) {
    for (const ServerReply& readBack : {ServerReply(kReceiveFails), ServerReply("0_readsetpoint 9 0 -1_error\r"),
                                        ServerReply("3_readsetpoint 9 0 -1_1\r"), ServerReply("")}) {
        auto& channel = Channel(9, 0);
        channel.m_pDevice->SetReplyTimeout(200);
        platform.server.Answer("readsetpoint 9 0 -1", readBack);
        EXPECT_EQ(channel.SetTargetTemperature(25.0), 0);
        EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"writesetpoint 9 0 25.0", "readsetpoint 9 0 -1",
                                                                        "writesetpoint 9 0 37.0"}));
        m_pDevice.reset();
    }
}

TEST_F(TemperatureChannelTests, SetTarget_ThatIsRestored_IsALineOfTheHostsLog) {
    constexpr const wchar_t* kRestored =
        L"CDevApiInterface_Temperature_Impl::SetTargetTemperature The new target could not be read back; the previous "
        L"one is set again.";
    auto& channel = Channel(9, 0);
    channel.SetTargetTemperature(25.0);
    EXPECT_TRUE(HostLog::Lines().empty());
    platform.server.Answer("readsetpoint 9 0 -1", kReceiveFails);
    channel.SetTargetTemperature(30.0);
    EXPECT_EQ(HostLog::Lines(), std::vector<std::wstring>{kRestored});
}

TEST_F(TemperatureChannelTests, SetTarget_ReadBackOfAnotherValue_KeepsWhatWasSet) {
    auto& channel = Channel(9, 0);
    platform.server.Answer("readsetpoint 9 0 -1", "0_readsetpoint 9 0 -1_33.3\r");
    EXPECT_EQ(channel.SetTargetTemperature(25.0), 0);
    EXPECT_EQ(channel.m_dTarget, 25.0);
}

TEST_F(TemperatureChannelTests, SetTarget_AfterATargetThatIsNotFinite_RestoresANumber) {
    auto& channel = Channel(9, 0);
    double value = 0.0;
    platform.server.Answer("readsetpoint 9 0 -1", "0_readsetpoint 9 0 -1_-nan\r");
    channel.GetTargetTemperature(&value);
    platform.server.Answer("readsetpoint 9 0 -1", kReceiveFails);
    platform.server.ClearCommands();
    channel.SetTargetTemperature(25.0);
    EXPECT_EQ(platform.server.Commands().back(), "writesetpoint 9 0 37.0");
}

TEST_F(TemperatureChannelTests, SetTarget_Product16SecondZone_IsSent) {
    EXPECT_EQ(Channel(16, 1).SetTargetTemperature(30.0), 0);
    EXPECT_EQ(platform.server.Commands().front(), "writesetpoint 16 1 30.0");
}

TEST_F(TemperatureChannelTests, SetTarget_PostsNoNotice) {
    Channel(9, 0).SetTargetTemperature(30.0);
    EXPECT_EQ(platform.windows.NoticeCount(), 0U);
}

TEST_F(TemperatureChannelTests, SetTarget_NumberTooLongForACommand_FailsAndSendsNothing) {
    auto& channel = Channel(9, 0);
    channel.m_dMax = 1e300;
    EXPECT_EQ(channel.SetTargetTemperature(1e299), -1);
    EXPECT_TRUE(platform.server.Commands().empty());
    EXPECT_EQ(channel.m_dTarget, 37.0);
}

TEST_F(TemperatureChannelTests, State_IsTheBandAroundTheTarget) {
    struct Case {
        double current;
        std::uint32_t state;
    };
    auto& channel = Channel(9, 0);
    channel.SetTolerance(0.5, 0.25);
    for (const Case& row :
         {Case{36.0, 1}, Case{36.4, 1}, Case{36.5, 4}, Case{37.0, 4}, Case{37.25, 4}, Case{37.3, 2}}) {
        SCOPED_TRACE(row.current);
        channel.m_dCurrent = row.current;
        std::uint32_t state = 99;
        EXPECT_EQ(channel.GetTemperatureState(&state), 0);
        EXPECT_EQ(state, row.state);
        EXPECT_EQ(channel.m_iState, static_cast<std::int32_t>(row.state));
    }
    EXPECT_TRUE(platform.server.Commands().empty());
}

TEST_F(TemperatureChannelTests, PlainSlots_GiveWhatTheyKeep) {
    auto& channel = Channel(9, 0);
    EXPECT_EQ(channel.SetEnabled(0), 0);
    EXPECT_EQ(channel.NoOperation(), 0);
    EXPECT_EQ(channel.NotSupported(), -1);
    EXPECT_EQ(channel.SetTemperatureRate(1.5), 0);
    EXPECT_EQ(channel.m_dRate, 1.5);
    double first = 0.0;
    double second = 0.0;
    EXPECT_EQ(channel.GetTemperatureStep(&first), 0);
    EXPECT_EQ(first, 0.2);
    EXPECT_EQ(channel.SetTolerance(0.3, 0.4), 0);
    EXPECT_EQ(channel.GetTolerance(&first, &second), 0);
    EXPECT_EQ(first, 0.3);
    EXPECT_EQ(second, 0.4);
    EXPECT_EQ(channel.GetTemperatureLimits(&first, &second), 0);
    EXPECT_EQ(first, 20.0);
    EXPECT_EQ(second, 50.0);
}

TEST_F(TemperatureChannelTests, NullPointers_Fail) {
    auto& channel = Channel(9, 0);
    double value = 0.0;
    EXPECT_EQ(channel.GetTemperatureState(nullptr), -1);
    EXPECT_EQ(channel.GetTemperatureStep(nullptr), -1);
    EXPECT_EQ(channel.GetTolerance(nullptr, &value), -1);
    EXPECT_EQ(channel.GetTolerance(&value, nullptr), -1);
    EXPECT_EQ(channel.GetTemperatureLimits(nullptr, &value), -1);
    EXPECT_EQ(channel.GetTemperatureLimits(&value, nullptr), -1);
}

TEST_F(TemperatureChannelTests, Feature4_MarksSensors) {
    struct Case {
        int product;
        int channel;
        bool sensor;
    };
    for (const Case& row : {Case{9, 107, true}, Case{9, 0, false}, Case{16, 0, false}, Case{16, 1, false},
                            Case{16, 2, true}, Case{16, 3, false}, Case{17, 1, true}, Case{7, 4, true}}) {
        SCOPED_TRACE(testing::Message() << row.product << "/" << row.channel);
        auto& channel = Channel(row.product, row.channel);
        for (int feature = -1; feature <= 8; ++feature) {
            EXPECT_EQ(channel.HasFeature(feature), row.sensor && feature == 4) << feature;
        }
    }
}

}  // namespace
