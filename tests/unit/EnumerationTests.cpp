#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Fixture.h"
#include "ProductSets.h"
#include "catalogue/ProductRecord.h"
#include "channels/ParameterRead.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/LinkOperation.h"

namespace {

class EnumerationTests : public DeviceTest {
 protected:
    std::vector<int> Numbers(const std::vector<ParamRecord>& params) {
        std::vector<int> numbers;
        for (const ParamRecord& param : params) {
            numbers.push_back(param.m_iParam);
            EXPECT_EQ(param.m_szValue.front(), '\0') << param.m_iParam;
        }
        return numbers;
    }
};

TEST_F(EnumerationTests, ConnectedProducts_AreListedWithDevicesAndParameters) {
    platform.server.AnswerPayload("listconprod", "9 7 18");
    platform.server.AnswerPayload("comport 9 0", "3");
    platform.server.AnswerPayload("listdev 9", "0 2");
    platform.server.AnswerPayload("bl-param-list 9", "64 107 383");
    platform.server.AnswerPayload("listdev 7", "1");
    platform.server.AnswerPayload("listdev 18", "");
    CDevApiInterface_Impl& device = RealDevice();
    device.EnumerateProducts(device);
    EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"listconprod", "comport 9 0", "listdev 9",
                                                                    "bl-param-list 9", "listdev 7", "listdev 18"}));
    ASSERT_EQ(device.m_products.size(), 3U);
    EXPECT_EQ(device.m_products[0].m_iProduct, 9);
    EXPECT_EQ(device.m_products[0].m_devices, (std::vector<std::int32_t>{0, 2}));
    EXPECT_EQ(Numbers(device.m_products[0].m_params), (std::vector<int>{64, 107, 383}));
    EXPECT_EQ(device.m_products[1].m_iProduct, 7);
    EXPECT_TRUE(device.m_products[1].m_params.empty());
    EXPECT_TRUE(device.m_products[2].m_devices.empty());
    EXPECT_EQ(device.m_iComPort, 3);
}

TEST_F(EnumerationTests, EveryReply_HasRoomFor1023Bytes) {
    platform.server.AnswerPayload("listconprod", "8");
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.ClearCommands();
    device.EnumerateProducts(device);
    for (const std::string& call : platform.server.Calls()) {
        EXPECT_TRUE(call.starts_with("send ") || call == "receive 1023") << call;
    }
}

TEST_F(EnumerationTests, ParameterLists_AreAskedOfProducts8To17) {
    platform.server.AnswerPayload("listconprod", "7 8 17 18");
    CDevApiInterface_Impl& device = RealDevice();
    device.EnumerateProducts(device);
    EXPECT_EQ(platform.server.Commands(),
              (std::vector<std::string>{"listconprod", "comport 7 0", "listdev 7", "listdev 8", "bl-param-list 8",
                                        "listdev 17", "bl-param-list 17", "listdev 18"}));
}

TEST_F(EnumerationTests, ResultCode1_IsAskedAgainUpToFourTimes) {
    platform.server.Answer("listconprod", "1_listconprod_9\r");
    CDevApiInterface_Impl& device = RealDevice();
    device.EnumerateProducts(device);
    EXPECT_EQ(platform.server.Commands(),
              (std::vector<std::string>{"listconprod", "listconprod", "listconprod", "listconprod", "listconprod",
                                        "comport 9 0", "listdev 9", "bl-param-list 9"}));
    EXPECT_EQ(platform.clock.Sleeps(), std::vector<std::uint32_t>(4, 1000));
    EXPECT_EQ(device.m_products.size(), 1U);
}

TEST_F(EnumerationTests, ResultCode1ThenAnother_StopsTheRepeats) {
    platform.server.AnswerInTurn("listconprod", {"1_listconprod_9\r", "2_listconprod_10\r"});
    CDevApiInterface_Impl& device = RealDevice();
    device.EnumerateProducts(device);
    EXPECT_EQ(platform.clock.Sleeps(), std::vector<std::uint32_t>{1000});
    ASSERT_EQ(device.m_products.size(), 1U);
    EXPECT_EQ(device.m_products[0].m_iProduct, 10);
}

TEST_F(EnumerationTests, OtherResultCodes_AreNotActedOn) {
    platform.server.Answer("listconprod", "3_listconprod_9\r");
    platform.server.Answer("listdev 9", "1_listdev 9_4\r");
    CDevApiInterface_Impl& device = RealDevice();
    device.EnumerateProducts(device);
    EXPECT_EQ(device.m_products[0].m_devices, std::vector<std::int32_t>{4});
    EXPECT_TRUE(platform.clock.Sleeps().empty());
}

TEST_F(EnumerationTests, NoAnswerOrNoProducts_EndsAfterTheFirstCommand) {
    for (const ServerReply& reply :
         {ServerReply(kReceiveFails), ServerReply(""), ServerReply("0_listconprod_\r"), ServerReply("0"),
          ServerReply("no separators"), ServerReply(std::string(1024, '9'))}) {
        SCOPED_TRACE(testing::PrintToString(reply));
        platform.server.Answer("listconprod", reply);
        CDevApiInterface_Impl& device = RealDevice();
        device.m_products = {ProductWith(9)};
        device.m_iComPort = 5;
        platform.server.ClearCommands();
        device.EnumerateProducts(device);
        EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"listconprod"});
        EXPECT_TRUE(device.m_products.empty());
        EXPECT_EQ(device.m_iComPort, 5);
    }
}

TEST_F(EnumerationTests, ComPort_LastIntegerWinsAndAnEmptyPayloadKeepsIt) {
    platform.server.AnswerPayload("listconprod", "9");
    platform.server.AnswerPayload("comport 9 0", "3 5");
    CDevApiInterface_Impl& device = RealDevice();
    device.EnumerateProducts(device);
    EXPECT_EQ(device.m_iComPort, 5);
    platform.server.AnswerPayload("comport 9 0", "");
    device.EnumerateProducts(device);
    EXPECT_EQ(device.m_iComPort, 5);
}

TEST_F(EnumerationTests, ErrorPayload_GivesZeros) {
    platform.server.AnswerPayload("listconprod", "e1");
    CDevApiInterface_Impl& device = RealDevice();
    device.EnumerateProducts(device);
    ASSERT_EQ(device.m_products.size(), 2U);
    EXPECT_EQ(device.m_products[0].m_iProduct, 0);
    EXPECT_EQ(device.m_products[1].m_iProduct, 1);
}

TEST_F(EnumerationTests, DuplicateProducts_AreKept) {
    platform.server.AnswerPayload("listconprod", "9 9");
    CDevApiInterface_Impl& device = RealDevice();
    device.EnumerateProducts(device);
    EXPECT_EQ(device.m_products.size(), 2U);
}

TEST_F(EnumerationTests, EveryRun_StartsFromScratch) {
    platform.server.AnswerPayload("listconprod", "9");
    CDevApiInterface_Impl& device = RealDevice();
    device.EnumerateProducts(device);
    device.EnumerateProducts(device);
    EXPECT_EQ(device.m_products.size(), 1U);
    EXPECT_EQ(device.m_products[0].m_devices.size(), 1U);
}

TEST_F(EnumerationTests, WhileTheServerIsAsked_TheEarlierCatalogueServes) {
    platform.server.AnswerPayload("listconprod", "9");
    platform.server.AnswerPayload("bl-param-list 9", "107");
    CDevApiInterface_Impl& device = RealDevice();
    device.EnumerateProducts(device);
    // The first line of the second run comes with the answer to "listconprod", before the next question.
    std::vector<bool> present;
    HostLog::SetHook([&](std::int32_t, const wchar_t* line) {
        if (std::wstring(line).find(L" listconprod ") != std::wstring::npos) {
            present.push_back(IsDeviceParameterPresent(device, 9, 107, kNoCompanion));
        }
    });
    device.m_bLogCommunication = true;
    device.EnumerateProducts(device);
    EXPECT_EQ(present, std::vector<bool>{true});
}

using EnumerationDeathTests = EnumerationTests;

TEST_F(EnumerationDeathTests, EightDigits_EndTheProcessWithALine) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    platform.server.AnswerPayload("listconprod", "12345678");
    CDevApiInterface_Impl& device = RealDevice();
    HostLog::EchoToStderr(true);
    EXPECT_DEATH(device.EnumerateProducts(device), "ParseIntegerList: a number in the server's reply is too long");
}

TEST_F(EnumerationTests, ReplyTooLongForItsBuffer_IsNoAnswerWhateverTheLogSetting) {
    platform.server.Answer("listconprod", std::string(1024, '1'));
    CDevApiInterface_Impl& device = RealDevice();
    for (const bool log : {false, true}) {
        SCOPED_TRACE(testing::Message() << "log " << log);
        device.m_bLogCommunication = log;
        platform.server.ClearCommands();
        device.EnumerateProducts(device);
        EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"listconprod"}));
        EXPECT_TRUE(device.m_products.empty());
    }
}

}  // namespace
