#include "link/Simulator.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "fakes/HostLog.h"
#include "link/Exchange.h"
#include "link/SimulatorTables.h"

namespace {

struct CommandCase {
    std::string_view command;
    std::string_view reply;  // without the carriage return
};

class SimulatorTests : public DeviceTest {
 protected:
    std::string ReplyTo(std::string_view command) const {
        const SimulatorText text = SimulatorReply(m_state, command);
        EXPECT_TRUE(text.view().ends_with('\r')) << command;
        return std::string(text.view().substr(0, text.length() - 1));
    }

    void ExpectAll(const std::vector<CommandCase>& cases) const {
        for (const CommandCase& row : cases) {
            SCOPED_TRACE(row.command);
            EXPECT_EQ(ReplyTo(row.command), row.reply);
        }
    }

    SimulatorState m_state{{}, kDefaultListConProdReply, false};
};

TEST_F(SimulatorTests, Keywords_AreAnsweredByTheFirstThatFits) {
    ExpectAll({
        {"listprod", "0_listprod_0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15"},
        {"listprodukt", "0_listprod_0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15"},
        {"listconprod", "0_listconprod_9 12 15"},
        {"mode 7 1", "0_mode 7 1_1"},
        {"comport 9 0", "0_comport 9 0_1"},
        {"comport 12 1 3", "0_comport 12 1 3_1"},
        {"connect 9 0", "0_connect 9 0_1"},
        {"status", "0_status_ "},
        {"start 1", "0_start 1_1"},
        {"writesetpoint 9 0 37.0", "0_writesetpoint 9 0 37.0_1"},
        {"readmin 9 0", "0_readmin 9 0_0"},
        {"readmin 15 0", "0_readmin 15 0_50"},
        {"readmin 150", "0_readmin 150_50"},
        {"readmax 9 0", "0_readmax 9 0_60"},
        {"readmax 15 0", "0_readmax 15 0_95"},
        {"checkcon 7", "0_checkcon 7_1"},
        {"find 7", "0_find 7_1"},
        {"findstat", "0_findstat_1"},
        {"alarm 9 0.2", "0_alarm 9 0.2_1"},
        {"bl-param-write 11 238 1", "0_bl-param-write 11 238 1_1"},
        {"anything", "0_anything_1"},
        {"", "0__1"},
    });
}

TEST_F(SimulatorTests, DeviceLists_OneShadowsTenToSeventeen) {
    ExpectAll({
        {"listdev 0", "0_listdev 0_0 1"},
        {"listdev 1", "0_listdev 1_0 1"},
        {"listdev 2", "0_listdev 2_0"},
        {"listdev 3", "0_listdev 3_0"},
        {"listdev 4", "0_listdev 4_0"},
        {"listdev 5", "0_listdev 5_0"},
        {"listdev 6", "0_listdev 6_0"},
        {"listdev 7", "0_listdev 7_0"},
        {"listdev 8", "0_listdev 8_0"},
        {"listdev 9", "0_listdev 9_0"},
        {"listdev 10", "0_listdev 1_0 1"},
        {"listdev 11", "0_listdev 1_0 1"},
        {"listdev 12", "0_listdev 1_0 1"},
        {"listdev 13", "0_listdev 1_0 1"},
        {"listdev 14", "0_listdev 1_0 1"},
        {"listdev 15", "0_listdev 1_0 1"},
        {"listdev 16", "0_listdev 1_0 1"},
        {"listdev 17", "0_listdev 1_0 1"},
        {"listdev 25", "0_listdev 2_0"},
        {"listdev", ""},
        {"listdev x", ""},
    });
}

TEST_F(SimulatorTests, DeviceLists_UnreachableRowsAreKept) {
    EXPECT_EQ(kDeviceLists[12].reply, "0_listdev 12_0 1");
    EXPECT_EQ(kDeviceLists[13].reply, "0_listdev 13_0 1");
    EXPECT_EQ(kDeviceLists[15].reply, "0_listdev 15_0");
    EXPECT_EQ(kDeviceLists[16].reply, "0_listdev 16_0 1 2");
    EXPECT_EQ(kDeviceLists[17].reply, "0_listdev 17_0 1 2 3 4 5 6");
}

TEST_F(SimulatorTests, ParameterLists_OfEveryProduct) {
    ExpectAll({
        {"bl-param-list 8", "0_bl-param-list 8_64 65 66 67 68 73 83 85 97 98 128 184 185 186"},
        {"bl-param-list 9",
         "0_bl-param-list 9_64 65 66 67 68 103 104 105 106 107 108 109 110 111 112 113 114 115 116 117 118 119 123 124 "
         "125 127 128 132 139 140 189 190 191 192 193 194 195 196 239 240 241 242 243 244 245 251 252 253 254 383"},
        {"bl-param-list 10",
         "0_bl-param-list 10_13 15 18 20 23 25 28 30 31 32 33 34 35 58 59 60 61 62 129 138 153 154 206 209 215 233 375 "
         "376"},
        {"bl-param-list 11",
         "0_bl-param-list 11_13 14 18 19 23 24 28 29 31 32 33 34 35 130 138 153 154 237 238 375 376"},
        {"bl-param-list 12",
         "0_bl-param-list 12_13 14 15 18 19 20 23 24 25 28 29 30 31 32 33 34 35 37 41 101 129 130 138 153 154 161 199 "
         "203 204 205 206 207 208 209 210 211 212 213 214 215 216 217 220 221 222 233 235 236 237 238 255 256 257 375 "
         "376"},
        {"bl-param-list 13",
         "0_bl-param-list 13_13 14 15 28 29 30 31 32 33 34 35 37 41 101 129 130 138 150 151 153 154 161 199 203 204 "
         "205 206 207 208 209 210 211 212 213 214 215 216 217 220 221 222 233 235 236 237 238 255 256 257"},
        {"bl-param-list 14", "0_bl-param-list 14_64 65 66 67 68 107 115 119 123 124 128 132 189 190 192 254 259 383"},
        {"bl-param-list 15",
         "0_bl-param-list 15_138 153 154 199 203 204 205 206 207 208 209 210 211 212 213 214 215 216 217 220 221 222 "
         "233 235 236 255 256 257 362 363 364 365 366 367 368"},
        {"bl-param-list 7", "0_bl-param-list 7_"},
        {"bl-param-list 16", "0_bl-param-list 16_"},
        {"bl-param-list 17", "0_bl-param-list 17_"},
        {"bl-param-list", "0_bl-param-list_"},
    });
}

TEST_F(SimulatorTests, ParameterValues_OfEveryParameter) {
    struct Row {
        std::vector<int> parameters;
        std::string payload;
    };
    const std::vector<Row> rows{
        {{13, 14, 15, 18, 19, 20, 23, 24, 25, 28, 29, 30, 73, 103, 104, 105, 106, 151, 190, 214, 215, 367}, "10"},
        {{31, 35, 58, 62, 64, 68, 362, 366}, "simulator"},
        {{32, 33, 59, 60, 65, 66, 363, 364}, "15/5/2015"},
        {{34, 61, 67, 365}, "12345"},
        {{83, 85, 115, 116, 117, 118, 184, 185, 186, 192}, "0"},
        {{97, 138, 150, 153}, "20"},
        {{98}, "100"},
        {{128, 129, 130, 233}, "1"},
    };
    std::vector<bool> known(1000);
    for (const Row& row : rows) {
        for (const int parameter : row.parameters) {
            const std::string command = "bl-param-read 12 " + std::to_string(parameter);
            EXPECT_EQ(ReplyTo(command), "0_" + command + "_" + row.payload);
            known[static_cast<std::size_t>(parameter)] = true;
        }
    }
    known[237] = true;
    for (std::size_t parameter = 0; parameter < known.size(); ++parameter) {
        if (!known[parameter]) {
            const std::string command = "bl-param-read 12 " + std::to_string(parameter);
            EXPECT_EQ(ReplyTo(command), "0_" + command + "_");
        }
    }
}

TEST_F(SimulatorTests, AirModeParameter_TellsTheDevicesAirMode) {
    EXPECT_EQ(ReplyTo("bl-param-read 11 237"), "0_bl-param-read 11 237_0");
    m_state.airMode = true;
    EXPECT_EQ(ReplyTo("bl-param-read 11 237"), "0_bl-param-read 11 237_1");
}

TEST_F(SimulatorTests, CurrentValues_ComeFromTheChannels) {
    m_state.channels.temperatures[0] = {true, {9, 0}, 36.5, 37.0};
    m_state.channels.temperatures[15] = {true, {7, 1}, 21.23456, 0.0};
    m_state.channels.temperatures[3] = {false, {9, 0}, 99.0, 99.0};
    m_state.channels.gasConcentrations[1] = {true, {12, 1}, 20.0, 19.0};
    m_state.channels.humidifiers[2] = {true, {15, 0}, 55.0, 60.0};
    ExpectAll({
        {"readcurval 9", "0_readcurval 9_36.500"},
        {"readcurval 9(0)", "0_readcurval 9(0)_36.500"},
        {"readcurval 12(1)", "0_readcurval 12(1)_20.000"},
        {"readcurval 15(0)", "0_readcurval 15(0)_55.000"},
        {"readcurval 7(1)", "0_readcurval 7(1)_21.235"},
        {"readcurval 7(2)", "0_readcurval 7(2)_"},
        {"readcurval 7", "0_readcurval 7_"},  // device 0
        {"readcurval", "0_readcurval_"},
        {"readcurval 12[1]", "0_readcurval 12[1]_"},
    });
}

TEST_F(SimulatorTests, CurrentValues_UpTo14CharactersAskForDevice0) {
    m_state.channels.temperatures[0] = {true, {9, 0}, 36.5, 37.0};
    m_state.channels.temperatures[1] = {true, {9, 1}, 21.0, 37.0};
    ExpectAll({
        {"readcurval 9(1", "0_readcurval 9(1_36.500"},    // 14
        {"readcurval 9(1)", "0_readcurval 9(1)_21.000"},  // 15
    });
}

TEST_F(SimulatorTests, CurrentValues_OfSeveralChannelsStandTogether) {
    m_state.channels.temperatures[0] = {true, {12, 0}, 1.0, 0.0};
    m_state.channels.temperatures[9] = {true, {12, 0}, 2.0, 0.0};
    m_state.channels.gasConcentrations[0] = {true, {12, 0}, 3.0, 0.0};
    m_state.channels.humidifiers[0] = {true, {12, 0}, 4.0, 0.0};
    EXPECT_EQ(ReplyTo("readcurval 12(0)"), "0_readcurval 12(0)_1.0002.0003.0004.000");
}

TEST_F(SimulatorTests, ParameterRead_OfAChannelsNumber_GivesItsCurrentValue) {
    m_state.channels.temperatures[5] = {true, {9, 115}, 24.9, 0.0};
    EXPECT_EQ(ReplyTo("bl-param-read 9 115"), "0_bl-param-read 9 115_24.900");
    EXPECT_EQ(ReplyTo("bl-param-read 8 115"), "0_bl-param-read 8 115_0");
    EXPECT_EQ(ReplyTo("bl-param-read"), "0_bl-param-read_");
    // A channel of any kind is the whole answer; the table's "0" is not added to it.
    m_state.channels.gasConcentrations[1] = {true, {12, 83}, 5.0, 0.0};
    m_state.channels.humidifiers[1] = {true, {15, 83}, 55.0, 0.0};
    EXPECT_EQ(ReplyTo("bl-param-read 12 83"), "0_bl-param-read 12 83_5.000");
    EXPECT_EQ(ReplyTo("bl-param-read 15 83"), "0_bl-param-read 15 83_55.000");
}

TEST_F(SimulatorTests, Targets_OfTheFirstFourTemperaturesOnly) {
    for (std::size_t i = 0; i < 6; ++i) {
        m_state.channels.temperatures[i] = {
            true, {7, static_cast<std::int32_t>(i)}, 0.0, 30.0 + static_cast<double>(i)};
    }
    m_state.channels.gasConcentrations[3] = {true, {12, 1}, 0.0, 19.5};
    m_state.channels.humidifiers[3] = {true, {15, 0}, 0.0, 60.0};
    ExpectAll({
        {"readsetpoint 7 0 -1", "0_readsetpoint 7 0 -1_30.000"},
        {"readsetpoint 7 3 -1", "0_readsetpoint 7 3 -1_33.000"},
        {"readsetpoint 7 4 -1", "0_readsetpoint 7 4 -1_"},
        {"readsetpoint 7 5 -1", "0_readsetpoint 7 5 -1_"},
        {"readsetpoint 12 1 -1", "0_readsetpoint 12 1 -1_19.500"},
        {"readsetpoint 15 0 -1", "0_readsetpoint 15 0 -1_60.000"},
        {"readsetpoint", "0_readsetpoint_"},
    });
}

TEST_F(SimulatorTests, StoredAnswer_IsGivenAsItStands) {
    m_state.listconprod = "what ever";
    EXPECT_EQ(ReplyTo("listconprod"), "what ever");
    m_state.listconprod = "";
    EXPECT_EQ(ReplyTo("listconprod"), "");
}

TEST_F(SimulatorTests, CommandSendSim_CountsTheCarriageReturnAndEndsTheText) {
    CDevApiInterface_Impl& device = Simulator();
    std::array<char, 65> reply;
    reply.fill('#');
    int length = 0;
    device.CommandSendSim("start 1", 7, reply.data(), 64, &length);
    EXPECT_EQ(length, 12);
    EXPECT_STREQ(reply.data(), "0_start 1_1\r");
    device.CommandSendSim("start 1", 7, reply.data(), 64, nullptr);
}

TEST_F(SimulatorTests, CommandSendSim_LongReply_IsCutAtTheCallersCapacity) {
    CDevApiInterface_Impl& device = Simulator();
    device.m_bLogCommunication = true;
    std::array<char, 66> reply;
    reply.fill('#');
    int length = 0;
    device.CommandSendSim("bl-param-list 12", 16, reply.data(), 64, &length);
    EXPECT_EQ(length, 64);
    EXPECT_EQ(reply[64], '\0');
    EXPECT_EQ(reply[65], '#');
    const Reply whole = Ask(device, FormatCommand(command::kListParams, {12}), kListReplySize);
    EXPECT_TRUE(whole.bytes().ends_with("375 376\r"));
}

TEST_F(SimulatorTests, CommandSendSim_LogOn_WritesItsOwnLine) {
    CDevApiInterface_Impl& device = Simulator();
    Tell(device, FormatCommand(command::kStart, {1}));
    EXPECT_TRUE(HostLog::Lines().empty());
    device.m_bLogCommunication = true;
    Tell(device, FormatCommand(command::kStart, {1}));
    EXPECT_EQ(HostLog::Lines(),
              std::vector<std::wstring>{L"OKO-Lab bold line CommandSendSim: start 1 -> 0_start 1_1\r"});
    device.HostCallback = nullptr;
    Tell(device, FormatCommand(command::kStart, {1}));
}

TEST_F(SimulatorTests, View_ShowsEveryChannelAndSkipsMissingOnes) {
    CDevApiInterface_Impl& device = Simulator();
    device.m_pTemperature[2]->DeletingDestructor(1);
    Assign(*device.m_pHumidifier[3], 15, 0);
    const ChannelViews views = device.ViewChannels();
    EXPECT_TRUE(views.temperatures[1].exists);
    EXPECT_FALSE(views.temperatures[2].exists);
    EXPECT_EQ(views.temperatures[1].target, 37.0);
    EXPECT_EQ(views.gasConcentrations[0].current, 5.0);
    EXPECT_EQ(views.humidifiers[3].address.m_iProduct, 15);
}

}  // namespace
