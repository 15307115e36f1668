#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "ProductSets.h"
#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"

namespace {

class AirModeTests : public DeviceTest {
 protected:
    /// A gas channel whose product offers the air-mode parameter.
    CDevApiInterface_GasConcentration_Impl& Channel(int product, int number) {
        CDevApiInterface_Impl& device = RealDevice();
        device.m_products = {ProductWith(product, {237, 238})};
        return Ready(*device.m_pGasConcentration[0], product, number);
    }

    void ReportAirMode(int product, std::string_view payload) {
        platform.server.AnswerPayload("bl-param-read " + std::to_string(product) + " 237", payload);
    }

    static void Read(CDevApiInterface_GasConcentration_Impl& channel, int times = 1) {
        for (int i = 0; i < times; ++i) {
            double value = 0.0;
            EXPECT_EQ(channel.GetTargetGasConcentration(&value), 0) << "read " << i;
        }
    }
};

TEST_F(AirModeTests, Watch_IsForO2ControllersOnly) {
    struct Case {
        int product;
        int channel;
        bool watched;
    };
    for (const Case& row : {Case{10, 0, false}, Case{11, 0, true}, Case{11, 1, true}, Case{12, 0, false},
                            Case{12, 1, true}, Case{13, 0, false}, Case{13, 1, true}, Case{15, 1, false}}) {
        SCOPED_TRACE(testing::Message() << row.product << "/" << row.channel);
        Read(Channel(row.product, row.channel));
        const std::string target =
            "readsetpoint " + std::to_string(row.product) + " " + std::to_string(row.channel) + " -1";
        const std::string airMode = "bl-param-read " + std::to_string(row.product) + " 237";
        EXPECT_EQ(platform.server.Commands(),
                  row.watched ? (std::vector<std::string>{airMode, target}) : std::vector<std::string>{target});
    }
}

TEST_F(AirModeTests, CurrentReads_DoNotWatch) {
    auto& channel = Channel(11, 0);
    double value = 0.0;
    EXPECT_EQ(channel.GetCurrentGasConcentration(&value), 0);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"readcurval 11(0)"});
}

TEST_F(AirModeTests, DeviceThatBecomesBusyDuringTheWatch_StillReadsTheTarget) {
    auto& channel = Channel(11, 0);
    platform.server.SetDefault([this](std::string_view command) -> ServerReply {
        m_pDevice->m_bBusy = true;
        return "0_" + std::string(command) + "_19.5\r";
    });
    double value = 0.0;
    EXPECT_EQ(channel.GetTargetGasConcentration(&value), 0);
    EXPECT_EQ(value, 19.5);
    EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"bl-param-read 11 237", "readsetpoint 11 0 -1"}));
}

TEST_F(AirModeTests, FourDifferingReadsInARow_AreBelievedAndAnnouncedOnce) {
    auto& channel = Channel(11, 0);
    ReportAirMode(11, "1");
    Read(channel, 3);
    EXPECT_EQ(m_pDevice->m_bAirMode, 0);
    EXPECT_EQ(HostLog::AirModeChanges(), 0U);
    Read(channel);
    EXPECT_EQ(m_pDevice->m_bAirMode, 1);
    EXPECT_EQ(HostLog::AirModeChanges(), 1U);
    EXPECT_TRUE(HostLog::AirModeChangesHadNoText());
    Read(channel, 5);
    EXPECT_EQ(HostLog::AirModeChanges(), 1U);
}

TEST_F(AirModeTests, ThreeDifferingReadsThenAgreement_ChangeNothing) {
    auto& channel = Channel(11, 0);
    ReportAirMode(11, "1");
    Read(channel, 3);
    ReportAirMode(11, "0");
    Read(channel);
    EXPECT_EQ(channel.m_uStatusCount, 0U);
    ReportAirMode(11, "1");
    Read(channel, 3);
    EXPECT_EQ(m_pDevice->m_bAirMode, 0);
}

TEST_F(AirModeTests, ChangeRightAfterAnAcceptedOne_IsBelievedAtOnce) {
    auto& channel = Channel(11, 0);
    ReportAirMode(11, "1");
    Read(channel, 4);
    ReportAirMode(11, "0");
    Read(channel);
    EXPECT_EQ(m_pDevice->m_bAirMode, 0);
    EXPECT_EQ(HostLog::AirModeChanges(), 2U);
}

TEST_F(AirModeTests, LinkThatBecameBusyMeanwhile_StartsTheCountAgain) {
    auto& channel = Channel(11, 0);
    ReportAirMode(11, "1");
    Read(channel, 3);
    platform.server.AnswerInTurn("bl-param-read 11 237", {});  // back to the handler
    platform.server.SetDefault([this](std::string_view command) -> ServerReply {
        m_pDevice->m_bBusy = true;
        return ScriptedServer::BuiltInReply(command);
    });
    Read(channel);
    m_pDevice->m_bBusy = false;
    ReportAirMode(11, "1");
    platform.server.SetDefault({});
    Read(channel, 3);
    EXPECT_EQ(m_pDevice->m_bAirMode, 0);
    Read(channel);
    EXPECT_EQ(m_pDevice->m_bAirMode, 1);
}

TEST_F(AirModeTests, FailedReads_CountNeitherWay) {
    auto& channel = Channel(11, 0);
    ReportAirMode(11, "1");
    Read(channel, 3);
    platform.server.Answer("bl-param-read 11 237", kReceiveFails);
    Read(channel, 2);
    EXPECT_EQ(channel.m_uStatusCount, 3U);
    ReportAirMode(11, "1");
    Read(channel);
    EXPECT_EQ(m_pDevice->m_bAirMode, 1);
}

TEST_F(AirModeTests, Payloads_OnlyExactly1IsOn) {
    for (const char* const payload : {"1", "0", "1.0", "2", "1 ", "01", "on"}) {
        SCOPED_TRACE(payload);
        auto& channel = Channel(11, 0);
        ReportAirMode(11, payload);
        std::uint8_t status = 9;
        EXPECT_EQ(channel.ReadAirMode(&status), 0);
        EXPECT_EQ(status, std::string(payload) == "1" ? 1 : 0);
    }
}

TEST_F(AirModeTests, PayloadThatIsNoNumber_Fails) {
    auto& channel = Channel(11, 0);
    for (const char* const payload : {"nan", "n", "not known", "error"}) {
        SCOPED_TRACE(payload);
        ReportAirMode(11, payload);
        std::uint8_t status = 9;
        EXPECT_EQ(channel.ReadAirMode(&status), -1);
        EXPECT_EQ(status, 9);
    }
}

TEST_F(AirModeTests, ReplyWithoutAValue_IsOff) {
    auto& channel = Channel(11, 0);
    for (const char* const reply : {"5_bl-param-read 11 237_1\r", "0_bl-param-read 11 237_\r"}) {
        SCOPED_TRACE(reply);
        platform.server.Answer("bl-param-read 11 237", reply);
        std::uint8_t status = 9;
        EXPECT_EQ(channel.ReadAirMode(&status), 0);
        EXPECT_EQ(status, 0);
    }
}

TEST_F(AirModeTests, ReadAirMode_WhileBusy_GivesTheStoredState) {
    auto& channel = Channel(10, 0);
    m_pDevice->m_bBusy = true;
    m_pDevice->m_bAirMode = 1;
    std::uint8_t status = 0;
    EXPECT_EQ(channel.ReadAirMode(&status), 0);
    EXPECT_EQ(status, 1);
    Read(channel);
    EXPECT_TRUE(platform.server.Commands().empty());
}

TEST_F(AirModeTests, ReadAirMode_OfOtherProducts_Fails) {
    std::uint8_t status = 9;
    EXPECT_EQ(Channel(10, 0).ReadAirMode(&status), -1);
    EXPECT_EQ(Channel(15, 0).ReadAirMode(&status), -1);
    EXPECT_EQ(status, 9);
    EXPECT_EQ(Channel(12, 0).ReadAirMode(&status), 0);  // asked by product, not by channel
}

TEST_F(AirModeTests, ReadAirMode_ParameterNotListed_FailsWithoutAsking) {
    auto& channel = Channel(11, 0);
    m_pDevice->m_products[0].m_params.clear();
    std::uint8_t status = 9;
    EXPECT_EQ(channel.ReadAirMode(&status), -1);
    EXPECT_TRUE(platform.server.Commands().empty());
}

TEST_F(AirModeTests, HostMayAskAgainFromItsCallback) {
    auto& channel = Channel(11, 0);
    ReportAirMode(11, "1");
    bool feature = false;
    HostLog::SetHook([&](std::int32_t code, const wchar_t*) { feature = code == 1001 && channel.HasFeature(2); });
    Read(channel, 4);
    EXPECT_TRUE(feature);
}

TEST_F(AirModeTests, WithoutACallback_TheStateIsStillTaken) {
    auto& channel = Channel(11, 0);
    m_pDevice->HostCallback = nullptr;
    ReportAirMode(11, "1");
    Read(channel, 4);
    EXPECT_EQ(m_pDevice->m_bAirMode, 1);
}

}  // namespace
