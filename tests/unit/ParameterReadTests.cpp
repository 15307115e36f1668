#include "channels/ParameterRead.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Fixture.h"
#include "ProductSets.h"
#include "ResultTexts.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"

namespace {

constexpr const wchar_t* kMethod = L"CDevApiInterface_Temperature_Impl::GetCurrentTemperature";

class ParameterReadTests : public DeviceTest {
 protected:
    CDevApiInterface_Impl& Device(const std::vector<int>& params = {107, 108, 115, 237}) {
        CDevApiInterface_Impl& device = RealDevice();
        device.m_products = {ProductWith(8), ProductWith(9, params)};
        platform.server.ClearCommands();
        return device;
    }

    /// Reads parameter 107 of product 9, whose reply this is; the value, or "(false)".
    std::string Read(const ServerReply& reply, bool check, std::uint32_t parameter = 107) {
        CDevApiInterface_Impl& device = Device();
        platform.server.Answer("bl-param-read 9 " + std::to_string(parameter), reply);
        ParameterText value{};
        return ReadDeviceParameter(device, 9, parameter, value.data(), check, false, kNoCompanion) ? value.data()
                                                                                                   : "(false)";
    }

    /// Whether parameter 107 counts as present beside the companion 115.
    bool PresentBeside(const std::string& first, const ServerReply& companion) {
        CDevApiInterface_Impl& device = Device();
        platform.server.Answer("bl-param-read 9 107", first);
        platform.server.Answer("bl-param-read 9 115", companion);
        const bool present = IsDeviceParameterPresent(device, 9, 107, 115);
        EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"bl-param-read 9 107", "bl-param-read 9 115"}));
        return present;
    }
};

TEST_F(ParameterReadTests, UnlistedParameters_AreNotAsked) {
    CDevApiInterface_Impl& device = Device({107, 108, 115});
    ParameterText value{};
    EXPECT_FALSE(ReadDeviceParameter(device, 9, 110, value.data(), false, false, kNoCompanion));
    EXPECT_FALSE(ReadDeviceParameter(device, 9, 200, value.data(), false, false, kNoCompanion));
    EXPECT_FALSE(ReadDeviceParameter(device, 8, 107, value.data(), false, false, kNoCompanion));
    EXPECT_FALSE(ReadDeviceParameter(device, 10, 107, value.data(), false, false, kNoCompanion));
    device.m_products.clear();
    EXPECT_FALSE(ReadDeviceParameter(device, 9, 107, value.data(), false, false, kNoCompanion));
    EXPECT_TRUE(platform.server.Commands().empty());
}

TEST_F(ParameterReadTests, SearchEndsAtTheFirstLargerNumber) {
    CDevApiInterface_Impl& device = Device({115, 107});
    ParameterText value{};
    EXPECT_FALSE(ReadDeviceParameter(device, 9, 107, value.data(), false, false, kNoCompanion));
    EXPECT_TRUE(ReadDeviceParameter(device, 9, 115, value.data(), false, false, kNoCompanion));
}

TEST_F(ParameterReadTests, Payloads_AreTakenWhole) {
    EXPECT_EQ(Read("0_bl-param-read 9 107_36.5\r", false), "36.5");
    EXPECT_EQ(Read("0_bl-param-read 9 107_two words\r", false), "two words");
    EXPECT_EQ(Read("0_bl-param-read 9 107_36.5", false), "36.5");
    EXPECT_EQ(Read("0_bl-param-read 9 107_36.5\n", false), "36.5");
    EXPECT_EQ(Read("0_bl-param-read 9 107_36.5 \r\n", false), "36.5 \r");
    EXPECT_EQ(Read("0_bl-param-read 9 107_\r", true), "");  // no payload: the check has nothing to look at
}

TEST_F(ParameterReadTests, Check_TakesZeroAndNForMissing) {
    for (const char* const payload : {"0", "0.0", "abc", "-0", "nan"}) {
        SCOPED_TRACE(payload);
        const std::string reply = std::string("0_bl-param-read 9 107_") + payload + "\r";
        EXPECT_EQ(Read(reply, true), "(false)");
        EXPECT_EQ(Read(reply, false), payload);
    }
    EXPECT_EQ(Read("0_bl-param-read_0.0", true), "(false)");
    EXPECT_EQ(Read("0_bl-param-read_1", true), "1");
    EXPECT_EQ(Read("0_bl-param-read 9 107_error\r", true), "(false)");
    EXPECT_EQ(Read("0_bl-param-read 9 107_error\r", false), "(false)");
}

TEST_F(ParameterReadTests, Check_TakesANumberThatIsNotFiniteForMissing) {
    for (const char* const payload : {"-nan", "+nan", " nan", "inf", "-inf", "1e999"}) {
        SCOPED_TRACE(payload);
        const std::string reply = std::string("0_bl-param-read 9 107_") + payload + "\r";
        EXPECT_EQ(Read(reply, true), "(false)");
        EXPECT_EQ(Read(reply, false), payload);
        EXPECT_EQ(Read(std::string("0_bl-param-read 9 237_") + payload + "\r", true, 237), "(false)");
    }
}

TEST_F(ParameterReadTests, AirModeParameter_MayBeZero) {
    EXPECT_EQ(Read("0_bl-param-read 9 237_0\r", true, 237), "0");
    EXPECT_EQ(Read("0_bl-param-read 9 237_nan\r", true, 237), "(false)");
}

TEST_F(ParameterReadTests, ResultCodes_AreLoggedUnderTheTemperatureChannelsName) {
    for (int code = 0; code <= 9; ++code) {
        SCOPED_TRACE(code);
        HostLog::Reset();
        const std::string reply = std::to_string(code) + "_bl-param-read 9 107_5\r";
        EXPECT_EQ(Read(reply, true), code == 3 ? "(false)" : code < 3 ? "5" : "");
        EXPECT_EQ(HostLog::Lines(), code >= 1 && code <= 3 ? std::vector<std::wstring>{ResultLine(kMethod, code)}
                                                           : std::vector<std::wstring>{});
    }
}

TEST_F(ParameterReadTests, NoAnswer_IsFalse) {
    EXPECT_EQ(Read(kReceiveFails, false), "(false)");
    EXPECT_EQ(Read("", false), "(false)");
    EXPECT_EQ(Read(std::string(65, '1'), false), "(false)");
}

TEST_F(ParameterReadTests, ReplyTooLongForItsBuffer_LeavesNothingInTheCache) {
    CDevApiInterface_Impl& device = Device();
    platform.server.AnswerInTurn("bl-param-read 9 107",
                                 {"0_bl-param-read 9 107_" + std::string(60, '7'), kReceiveFails});
    ParameterText value{};
    EXPECT_FALSE(ReadDeviceParameter(device, 9, 107, value.data(), false, false, kNoCompanion));
    EXPECT_FALSE(ReadDeviceParameter(device, 9, 107, value.data(), false, true, kNoCompanion));
    EXPECT_EQ(platform.server.Commands().size(), 2U);
}

TEST_F(ParameterReadTests, Reply_OfExactly64Bytes_IsTakenUpToItsEnd) {
    const std::string start = "0_bl-param-read 9 107_";
    EXPECT_EQ(Read(start + std::string(64 - start.size(), '7'), false), std::string(64 - start.size(), '7'));
    EXPECT_EQ(Read("__" + std::string(62, '7'), false), std::string(62, '7'));
}

TEST_F(ParameterReadTests, Cache_FilledByAnyReply_SavesTheNextQuestion) {
    for (const char* const reply : {"0_bl-param-read 9 107_5\r", "0_bl-param-read 9 107_error\r"}) {
        SCOPED_TRACE(reply);
        CDevApiInterface_Impl& device = Device();
        platform.server.Answer("bl-param-read 9 107", reply);
        ParameterText value{};
        const bool first = ReadDeviceParameter(device, 9, 107, value.data(), false, true, kNoCompanion);
        EXPECT_STREQ(device.m_products[1].m_params[0].m_szValue.data(), reply);
        platform.server.Answer("bl-param-read 9 107", "0_bl-param-read 9 107_6\r");
        EXPECT_EQ(ReadDeviceParameter(device, 9, 107, value.data(), false, true, kNoCompanion), first);
        EXPECT_EQ(platform.server.Commands().size(), 1U);
        EXPECT_STREQ(value.data(), first ? "5" : "");
    }
}

TEST_F(ParameterReadTests, Cache_InUse_AsksNoCompanionEither) {
    CDevApiInterface_Impl& device = Device();
    ParameterText value{};
    ReadDeviceParameter(device, 9, 107, value.data(), true, true, 115);
    platform.server.ClearCommands();
    platform.server.Answer("bl-param-read 9 115", "0_bl-param-read 9 115_1\r");
    // What equals its companion's value is present all the same when it is remembered.
    EXPECT_TRUE(ReadDeviceParameter(device, 9, 107, value.data(), true, true, 115));
    EXPECT_TRUE(platform.server.Commands().empty());
}

TEST_F(ParameterReadTests, Cache_IsFilledButNotUsedWithoutBeingAskedFor) {
    CDevApiInterface_Impl& device = Device();
    ParameterText value{};
    ReadDeviceParameter(device, 9, 107, value.data(), false, false, kNoCompanion);
    ReadDeviceParameter(device, 9, 107, value.data(), false, false, kNoCompanion);
    EXPECT_EQ(platform.server.Commands().size(), 2U);
    EXPECT_STREQ(device.m_products[1].m_params[0].m_szValue.data(), "0_bl-param-read 9 107_1\r");
}

TEST_F(ParameterReadTests, Cache_AfterNoAnswer_StaysEmpty) {
    CDevApiInterface_Impl& device = Device();
    platform.server.Answer("bl-param-read 9 107", kReceiveFails);
    ParameterText value{};
    EXPECT_FALSE(ReadDeviceParameter(device, 9, 107, value.data(), false, true, kNoCompanion));
    platform.server.Answer("bl-param-read 9 107", "0_bl-param-read 9 107_6\r");
    EXPECT_TRUE(ReadDeviceParameter(device, 9, 107, value.data(), false, true, kNoCompanion));
    EXPECT_STREQ(value.data(), "6");
}

TEST_F(ParameterReadTests, Companion_EqualValues_CountAsMissing) {
    EXPECT_FALSE(PresentBeside("0_bl-param-read 9 107_12.5\r", "0_bl-param-read 9 115_12.5\r"));
    EXPECT_TRUE(PresentBeside("0_bl-param-read 9 107_12.5\r", "0_bl-param-read 9 115_12.4\r"));
    EXPECT_TRUE(PresentBeside("0_bl-param-read 9 107_0.0\r", "0_bl-param-read 9 115_12.4\r"));
    EXPECT_FALSE(PresentBeside("0_bl-param-read 9 107_0.0\r", "0_bl-param-read 9 115_0\r"));
}

TEST_F(ParameterReadTests, Companion_WithoutAValue_CountsAsZero) {
    for (const ServerReply& companion :
         {ServerReply(kReceiveFails), ServerReply(""), ServerReply("3_bl-param-read 9 115_12.5\r"),
          ServerReply("5_bl-param-read 9 115_12.5\r"), ServerReply("0_bl-param-read 9 115_nan\r"),
          ServerReply("0_bl-param-read 9 115_\r"), ServerReply("0_bl-param-read 9 115_-nan\r"),
          ServerReply("0_bl-param-read 9 115_1e999\r"), ServerReply("0"), ServerReply("garbage")}) {
        SCOPED_TRACE(testing::PrintToString(companion));
        EXPECT_TRUE(PresentBeside("0_bl-param-read 9 107_12.5\r", companion));
        EXPECT_FALSE(PresentBeside("0_bl-param-read 9 107_0.0\r", companion));
    }
}

TEST_F(ParameterReadTests, Companion_WithAFailure2_IsStillCompared) {
    EXPECT_FALSE(PresentBeside("0_bl-param-read 9 107_12.5\r", "2_bl-param-read 9 115_12.5\r"));
}

TEST_F(ParameterReadTests, Companion_EOfTheFirstReplyAtItsPayload_VoidsIt) {
    // The companion's payload begins at position 22, where the first reply has an "e" in its own payload.
    const std::string first = "0_bl-param-read 9 _107e\r";
    ASSERT_EQ(first[22], 'e');
    EXPECT_TRUE(PresentBeside(first, "0_bl-param-read 9 115_107\r"));
    EXPECT_FALSE(PresentBeside("0_bl-param-read 9 _107 \r", "0_bl-param-read 9 115_107\r"));
}

TEST_F(ParameterReadTests, Companion_IsWalkedOnlyAsFarAsTheFirstReplyReaches) {
    EXPECT_TRUE(PresentBeside("0__12.5", "0_bl-param-read 9 115_12.5\r"));
}

TEST_F(ParameterReadTests, Companion_IsAskedEvenWhenTheFirstReadFailed) {
    CDevApiInterface_Impl& device = Device();
    platform.server.Answer("bl-param-read 9 107", kReceiveFails);
    EXPECT_FALSE(IsDeviceParameterPresent(device, 9, 107, 115));
    EXPECT_EQ(platform.server.Commands().size(), 2U);
}

TEST_F(ParameterReadTests, Companion_WithoutTheCheckOrBelow1_IsNotAsked) {
    CDevApiInterface_Impl& device = Device();
    ParameterText value{};
    ReadDeviceParameter(device, 9, 107, value.data(), false, false, 115);
    ReadDeviceParameter(device, 9, 107, value.data(), true, false, 0);
    ReadDeviceParameter(device, 9, 107, value.data(), true, false, -1);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>(3, "bl-param-read 9 107"));
}

TEST_F(ParameterReadTests, Companion_FullOfText_IsCut) {
    EXPECT_TRUE(PresentBeside("__1" + std::string(61, '2'), "__" + std::string(62, '9')));
}

TEST_F(ParameterReadTests, NonZeroReply_IsJudgedByCodeAndPayload) {
    struct Case {
        const char* reply;
        bool nonZero;
    };
    for (const Case& row : std::vector<Case>{{"", false},
                                             {"3_readcurval_e", true},
                                             {"9_readcurval_0", true},
                                             {"0_readcurval_0.00", false},
                                             {"0_readcurval_0.00\r", false},
                                             {"0_readcurval_n", false},
                                             {"0_readcurval_error\r", false},
                                             {"0_readcurval_abc\r", false},
                                             {"0_readcurval_-nan\r", false},
                                             {"0_readcurval_+inf\r", false},
                                             {"0_readcurval_1e999\r", false},
                                             {"0_readcurval_21.5\r", true},
                                             {"0_readcurval_21.5", true},
                                             {"2_readcurval_-3\n", true},
                                             {"0_readcurval_\r", true},
                                             {"0_readcurval_", true},
                                             {"0_readcurval", true},
                                             {"0\r", true},
                                             {"x", true},
                                             {"0_readcurval_ 5\r", true}}) {
        EXPECT_EQ(IsReplyValueNonZero(row.reply), row.nonZero) << row.reply;
    }
}

}  // namespace
