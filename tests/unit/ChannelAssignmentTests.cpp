// Which channels each product gives, and the commands that find that out.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "Fixture.h"
#include "ProductSets.h"
#include "RegistryNames.h"
#include "channels/SharedValues.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/CDevApiInterface.h"
#include "oko/CDevApiInterface_Temperature.h"
#include "oko/Result.h"

namespace {

/// A live channel as the tests write it down.
struct Live {
    int product;
    int channel;
    double min;
    double max;
    bool operator==(const Live&) const = default;
};

void PrintTo(const Live& live, std::ostream* out) {
    *out << live.product << "/" << live.channel << " " << live.min << ".." << live.max;
}

template <class Channels>
std::vector<Live> LiveOf(const Channels& channels, int count) {
    std::vector<Live> live;
    for (int i = 0; i < count; ++i) {
        const auto& channel = *channels[static_cast<std::size_t>(i)];
        const auto [product, number] = Get(channel.m_address);
        live.push_back({product, number, channel.m_dMin, channel.m_dMax});
    }
    return live;
}

class ChannelAssignmentTests : public DeviceTest {
 protected:
    CDevApiInterface_Impl& InitialisedWith(const std::vector<int>& products) {
        ConnectProducts(platform, products);
        CDevApiInterface_Impl& device = RealDevice();
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
        return device;
    }

    /// No offset stands in the way of product 9's sensors.
    void AnswerCompanionsOfProduct9() {
        for (const char* const companion : {"115", "116", "117", "192"}) {
            platform.server.AnswerPayload(std::string("bl-param-read 9 ") + companion, "0");
        }
    }

    std::vector<Live> Temperatures() const { return LiveOf(m_pDevice->m_pTemperature, m_pDevice->m_nTemperatures); }
    std::vector<Live> Gases() const { return LiveOf(m_pDevice->m_pGasConcentration, m_pDevice->m_nGasConcentrations); }
    std::vector<Live> Humidities() const { return LiveOf(m_pDevice->m_pHumidifier, m_pDevice->m_nHumidifiers); }

    /// The commands after the status check.
    std::vector<std::string> SetupCommands() const {
        const std::vector<std::string> all = platform.server.Commands();
        const auto status = std::ranges::find(all, "status");
        return status != all.end() ? std::vector<std::string>(status + 1, all.end()) : all;
    }
};

TEST_F(ChannelAssignmentTests, Product7_GivesItsZoneAndItsPresentSensors) {
    platform.server.AnswerPayload("readmin 7 0", "5.5");
    platform.server.AnswerPayload("readmax 7 0", "45.25 more");
    platform.server.AnswerPayload("readcurval 7(2)", "0.0");
    platform.server.AnswerPayload("readcurval 7(3)", "nan");
    InitialisedWith({7});
    EXPECT_EQ(SetupCommands(), (std::vector<std::string>{"readmin 7 0", "readmax 7 0", "readcurval 7(1)",
                                                         "readcurval 7(2)", "readcurval 7(3)", "readcurval 7(4)"}));
    EXPECT_EQ(Temperatures(), (std::vector<Live>{{7, 0, 5.5, 45.25}, {7, 1, 0, 0}, {7, 4, 0, 0}}));
}

TEST_F(ChannelAssignmentTests, RangeEndsThatAreNotFinite_KeepTheirDefaultsAndReachNoCommand) {
    platform.server.AnswerPayload("readmin 9 0", "-nan");
    platform.server.AnswerPayload("readmax 9 0", "1e999");
    CDevApiInterface_Impl& device = InitialisedWith({9});
    EXPECT_EQ(Temperatures().front(), (Live{9, 0, 0.0, 60.0}));
    for (const double wanted : {std::nan(""), -5.0, 1e300}) {
        SCOPED_TRACE(wanted);
        platform.server.ClearCommands();
        device.m_pTemperature[0]->SetTargetTemperature(wanted);
        EXPECT_EQ(platform.server.Commands().front(),
                  wanted > 60.0 ? "writesetpoint 9 0 60.0" : "writesetpoint 9 0 0.0");
    }
}

TEST_F(ChannelAssignmentTests, RefusedRangeEnds_StillGiveTheirNumbers) {
    platform.server.Answer("readmin 9 0", "3_readmin 9 0_5.5\r");
    platform.server.Answer("readmax 9 0", "3_readmax 9 0_45\r");
    InitialisedWith({9});
    EXPECT_EQ(Temperatures().front(), (Live{9, 0, 5.5, 45.0}));
}

TEST_F(ChannelAssignmentTests, Product8_GivesItsZoneAndItsProbedSensors) {
    platform.server.AnswerPayload("bl-param-read 8 87", "0.0");
    InitialisedWith({8});
    EXPECT_EQ(SetupCommands(), (std::vector<std::string>{"readmin 8 0", "readmax 8 0", "bl-param-read 8 74",
                                                         "bl-param-read 8 87", "bl-param-read 8 88"}));
    EXPECT_EQ(Temperatures(), (std::vector<Live>{{8, 0, 1, 1}, {8, 74, 0, 0}, {8, 88, 0, 0}}));
}

TEST_F(ChannelAssignmentTests, Product9_ProbesItsSensorsWithTheirCompanions) {
    AnswerCompanionsOfProduct9();
    InitialisedWith({9});
    EXPECT_EQ(SetupCommands(),
              (std::vector<std::string>{"readmin 9 0", "readmax 9 0", "bl-param-read 9 107", "bl-param-read 9 115",
                                        "bl-param-read 9 119", "bl-param-read 9 109", "bl-param-read 9 117",
                                        "bl-param-read 9 110", "bl-param-read 9 108", "bl-param-read 9 116",
                                        "bl-param-read 9 189", "bl-param-read 9 192", "bl-param-read 9 132"}));
    EXPECT_EQ(Temperatures(), (std::vector<Live>{{9, 0, 1, 1},
                                                 {9, 107, 0, 0},
                                                 {9, 119, 0, 0},
                                                 {9, 109, 0, 0},
                                                 {9, 110, 0, 0},
                                                 {9, 108, 0, 0},
                                                 {9, 189, 0, 0},
                                                 {9, 132, 0, 0}}));
}

TEST_F(ChannelAssignmentTests, Product9_SensorThatEqualsItsCompanion_IsAbsent) {
    platform.server.AnswerPayload("bl-param-read 9 107", "12.5");
    platform.server.AnswerPayload("bl-param-read 9 115", "12.5");
    InitialisedWith({9});
    EXPECT_TRUE(std::ranges::none_of(Temperatures(), [](const Live& live) { return live.channel == 107; }));
}

TEST_F(ChannelAssignmentTests, Product14_GivesItsZoneAndItsProbedSensors) {
    platform.server.AnswerPayload("bl-param-read 14 115", "0");
    platform.server.AnswerPayload("bl-param-read 14 192", "0");
    InitialisedWith({14});
    EXPECT_EQ(SetupCommands(),
              (std::vector<std::string>{"readmin 14 0", "readmax 14 0", "bl-param-read 14 107", "bl-param-read 14 115",
                                        "bl-param-read 14 119", "bl-param-read 14 189", "bl-param-read 14 192",
                                        "bl-param-read 14 132", "bl-param-read 14 259"}));
    EXPECT_EQ(Temperatures(),
              (std::vector<Live>{
                  {14, 0, 1, 1}, {14, 107, 0, 0}, {14, 119, 0, 0}, {14, 189, 0, 0}, {14, 132, 0, 0}, {14, 259, 0, 0}}));
}

TEST_F(ChannelAssignmentTests, Product15_GivesAHumidifierAndItsTwoSensors) {
    platform.server.AnswerPayload("readmin 15 0", "e missing");
    platform.server.AnswerPayload("readmax 15 0", "N");
    InitialisedWith({15});
    EXPECT_EQ(SetupCommands(), (std::vector<std::string>{"readmin 15 0", "readmax 15 0", "bl-param-read 15 206",
                                                         "bl-param-read 15 209"}));
    EXPECT_EQ(Humidities(), (std::vector<Live>{{15, 0, 50, 95}}));
    EXPECT_EQ(Temperatures(), (std::vector<Live>{{15, 206, 0, 0}, {15, 209, 0, 0}}));
}

TEST_F(ChannelAssignmentTests, Product16_GivesTheZonesThatArePresent) {
    platform.server.AnswerPayload("readmin 16 0", "10");
    platform.server.AnswerPayload("readmax 16 0", "44");
    platform.server.AnswerPayload("readmin 16 1", "1.9");
    platform.server.AnswerPayload("readmax 16 1", "44");
    InitialisedWith({16});
    EXPECT_EQ(SetupCommands(),
              (std::vector<std::string>{"readcurval 16(0)", "readmin 16 0", "readmax 16 0", "readcurval 16(1)",
                                        "readmin 16 1", "readmax 16 1", "readcurval 16(2)"}));
    EXPECT_EQ(Temperatures(), (std::vector<Live>{{16, 0, 10, 44}, {16, 1, 25, 50}, {16, 2, 0, 0}}));
}

TEST_F(ChannelAssignmentTests, Product16_AbsentZone_IsNotAskedForItsRange) {
    platform.server.AnswerPayload("readcurval 16(0)", "0");
    platform.server.Answer("readcurval 16(2)", kReceiveFails);
    InitialisedWith({16});
    EXPECT_EQ(SetupCommands(), (std::vector<std::string>{"readcurval 16(0)", "readcurval 16(1)", "readmin 16 1",
                                                         "readmax 16 1", "readcurval 16(2)"}));
    EXPECT_EQ(Temperatures(), (std::vector<Live>{{16, 1, 25, 50}}));
}

TEST_F(ChannelAssignmentTests, Product17_GivesItsZoneAndItsPresentSensors) {
    platform.server.AnswerPayload("readmin 17 0", "1.5");
    platform.server.AnswerPayload("readmax 17 0", "40.0");
    platform.server.AnswerPayload("readcurval 17(4)", "error");
    platform.server.Answer("readcurval 17(5)", "3_readcurval 17(5)_e\r");  // refused counts as present
    InitialisedWith({17});
    EXPECT_EQ(SetupCommands(), (std::vector<std::string>{"readmin 17 0", "readmax 17 0", "readcurval 17(1)",
                                                         "readcurval 17(2)", "readcurval 17(3)", "readcurval 17(4)",
                                                         "readcurval 17(5)", "readcurval 17(6)"}));
    EXPECT_EQ(Temperatures(),
              (std::vector<Live>{
                  {17, 0, 25, 60}, {17, 1, 0, 0}, {17, 2, 0, 0}, {17, 3, 0, 0}, {17, 5, 0, 0}, {17, 6, 0, 0}}));
}

TEST_F(ChannelAssignmentTests, Product17_PlausibleRange_Stands) {
    platform.server.AnswerPayload("readmin 17 0", "2.0");
    platform.server.AnswerPayload("readmax 17 0", "40.0");
    InitialisedWith({17});
    EXPECT_EQ(Temperatures().front(), (Live{17, 0, 2, 40}));
}

TEST_F(ChannelAssignmentTests, Product10_GivesOneGasAndTheHumidifiersSensors) {
    platform.server.AnswerPayload("readmax 10 0", "20.123456789");  // seven characters count: 20.1234
    InitialisedWith({10});
    EXPECT_EQ(SetupCommands(), (std::vector<std::string>{"readmin 10 0", "readmax 10 0", "bl-param-read 10 206",
                                                         "bl-param-read 10 209"}));
    EXPECT_EQ(Gases(), (std::vector<Live>{{10, 0, 1, 20.1234}}));
    EXPECT_EQ(Temperatures(), (std::vector<Live>{{10, 206, 0, 0}, {10, 209, 0, 0}}));
}

TEST_F(ChannelAssignmentTests, Product11_GivesOneGasAndNothingElse) {
    InitialisedWith({11});
    EXPECT_EQ(SetupCommands(), (std::vector<std::string>{"readmin 11 0", "readmax 11 0"}));
    EXPECT_EQ(Gases(), (std::vector<Live>{{11, 0, 1, 1}}));
    EXPECT_TRUE(Temperatures().empty());
}

TEST_F(ChannelAssignmentTests, Mixers_GiveTwoGasesAndTheHumidifiersSensors) {
    for (const int product : {12, 13}) {
        SCOPED_TRACE(product);
        const std::string n = std::to_string(product);
        platform.server.Answer("readmin " + n + " 0", kReceiveFails);
        platform.server.Answer("readmax " + n + " 0", kReceiveFails);
        InitialisedWith({product});
        EXPECT_EQ(SetupCommands(),
                  (std::vector<std::string>{"readmin " + n + " 0", "readmax " + n + " 0", "readmin " + n + " 1",
                                            "readmax " + n + " 1", "bl-param-read " + n + " 206",
                                            "bl-param-read " + n + " 209"}));
        EXPECT_EQ(Gases(), (std::vector<Live>{{product, 0, 0, 60}, {product, 1, 1, 1}}));
        EXPECT_EQ(Temperatures(), (std::vector<Live>{{product, 206, 0, 0}, {product, 209, 0, 0}}));
        platform.server.ClearCommands();
    }
}

TEST_F(ChannelAssignmentTests, NumbersOutsideTheTable_GiveOneGas) {
    InitialisedWith({5, 18});
    EXPECT_EQ(Gases(), (std::vector<Live>{{5, 0, 1, 1}, {18, 0, 1, 1}}));
    EXPECT_TRUE(Temperatures().empty());
}

TEST_F(ChannelAssignmentTests, WithAHumidifier_GasProductsDoNotProbeItsSensors) {
    for (const int product : {10, 12, 13}) {
        SCOPED_TRACE(product);
        InitialisedWith({product, 15});
        EXPECT_EQ(Temperatures(), (std::vector<Live>{{15, 206, 0, 0}, {15, 209, 0, 0}}));
        platform.server.ClearCommands();
    }
}

TEST_F(ChannelAssignmentTests, ParameterThatIsNotListed_IsNotAsked) {
    ConnectProducts(platform, {8});
    platform.server.AnswerPayload("bl-param-list 8", "87 88");
    RealDevice().Init(HostLog::Callback, nullptr);
    EXPECT_EQ(SetupCommands(),
              (std::vector<std::string>{"readmin 8 0", "readmax 8 0", "bl-param-read 8 87", "bl-param-read 8 88"}));
}

TEST_F(ChannelAssignmentTests, Products7And9_AllProbesSuccessful_Give13Temperatures) {
    platform.server.SetDefault([](std::string_view command) -> ServerReply {
        const bool companion = command.ends_with(" 115") || command.ends_with(" 116") || command.ends_with(" 117") ||
                               command.ends_with(" 192");
        return "0_" + std::string(command) + (companion ? "_0\r" : "_21.5\r");
    });
    EXPECT_EQ(InitialisedWith({7, 9}).GetTemperatureCount(), 13);
}

TEST_F(ChannelAssignmentTests, MoreThan16Temperatures_TakesNoMoreAndSendsAllItsCommands) {
    AnswerCompanionsOfProduct9();
    // 5 + 4 + 5 = 14 before the 8 of product 9.
    platform.server.AnswerPayload("bl-param-read 14 107", "0");
    platform.server.AnswerPayload("bl-param-read 14 189", "5");
    InitialisedWith({7, 8, 14, 9, 17, 12});
    EXPECT_EQ(m_pDevice->GetTemperatureCount(), 16);
    EXPECT_EQ(Temperatures().back().product, 9);
    const std::vector<std::string> commands = SetupCommands();
    EXPECT_NE(std::ranges::find(commands, "bl-param-read 9 132"), commands.end());
    // A product that finds the array full is not begun, but a gas product's sensors are still asked for.
    EXPECT_EQ(std::ranges::find(commands, "readmin 17 0"), commands.end());
    EXPECT_NE(std::ranges::find(commands, "bl-param-read 12 209"), commands.end());
    EXPECT_EQ(m_pDevice->GetGasConcentrationCount(), 2);
}

TEST_F(ChannelAssignmentTests, MoreThan4Gases_TakesNoMore) {
    InitialisedWith({11, 12, 13, 10});
    EXPECT_EQ(Gases(), (std::vector<Live>{{11, 0, 1, 1}, {12, 0, 1, 1}, {12, 1, 1, 1}, {13, 0, 1, 1}}));
    const std::vector<std::string> commands = SetupCommands();
    EXPECT_NE(std::ranges::find(commands, "readmax 13 1"), commands.end());
    EXPECT_EQ(std::ranges::find(commands, "readmin 10 0"), commands.end());
}

TEST_F(ChannelAssignmentTests, MoreThan4Humidifiers_TakesNoMore) {
    InitialisedWith({15, 15, 15, 15, 15});
    EXPECT_EQ(m_pDevice->GetHumidifierCount(), 4);
    // The fifth is not begun: four of each command, not five.
    for (const char* const command : {"readmin 15 0", "readmax 15 0", "bl-param-read 15 206", "bl-param-read 15 209"}) {
        EXPECT_EQ(std::ranges::count(SetupCommands(), command), 4) << command;
    }
}

TEST_F(ChannelAssignmentTests, DeletedChannels_AreMadeAnewByInit) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_pTemperature[0]->DeletingDestructor(1);
    device.m_pTemperature[5]->DeletingDestructor(1);
    device.m_pGasConcentration[0]->DeletingDestructor(1);
    device.m_pHumidifier[0]->DeletingDestructor(1);
    ConnectProducts(platform, {9, 7, 11, 15});
    AnswerCompanionsOfProduct9();
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    EXPECT_EQ(device.GetTemperatureCount(), 15);  // 8 and 5 of products 9 and 7, 2 of 15
    EXPECT_EQ(device.GetGasConcentrationCount(), 1);
    EXPECT_EQ(device.GetHumidifierCount(), 1);
    for (std::uint32_t i = 0; i < oko::kTemperatureChannels; ++i) {
        CDevApiInterface_Temperature* channel = nullptr;
        device.GetTemperature(i, &channel);
        EXPECT_NE(channel, nullptr) << i;
    }
    EXPECT_EQ(device.m_pTemperature[5]->m_iIndex, 5);
}

TEST_F(ChannelAssignmentTests, RepeatedInit_ZoneOfProducts7And14And15StaysAsItWas) {
    InitialisedWith({8});
    ASSERT_EQ(Temperatures()[1], (Live{8, 74, 0, 0}));
    auto& address = m_pDevice->m_pHumidifier[0]->m_address;
    Put(address, {Get(address).m_iProduct, 3});

    ConnectProducts(platform, {8, 15, 14});
    platform.server.AnswerPayload("bl-param-list 8", "");
    platform.server.AnswerPayload("bl-param-list 14", "");
    platform.server.AnswerPayload("bl-param-list 15", "");
    ASSERT_EQ(m_pDevice->Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(Temperatures(), (std::vector<Live>{{8, 0, 1, 1}, {14, 74, 1, 1}}));
    EXPECT_EQ(Humidities(), (std::vector<Live>{{15, 3, 1, 1}}));
}

TEST_F(ChannelAssignmentTests, SimulatorsDefaultAnswer_GivesTenTemperaturesTwoGasesAndAHumidifier) {
    CDevApiInterface_Impl& device = Simulator();
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(Temperatures(), (std::vector<Live>{{9, 0, 0, 60},
                                                 {9, 107, 0, 0},
                                                 {9, 119, 0, 0},
                                                 {9, 109, 0, 0},
                                                 {9, 110, 0, 0},
                                                 {9, 108, 0, 0},
                                                 {9, 189, 0, 0},
                                                 {9, 132, 0, 0},
                                                 {15, 206, 0, 0},
                                                 {15, 209, 0, 0}}));
    EXPECT_EQ(Gases(), (std::vector<Live>{{12, 0, 0, 60}, {12, 1, 0, 60}}));
    EXPECT_EQ(Humidities(), (std::vector<Live>{{15, 0, 50, 95}}));
}

/// 65 bytes: one more than a reply has room for, so that the receive fills the buffer and fails.
std::string TooLongReply(const std::string& command) {
    std::string reply = "0_" + command + "_37.5";
    reply.resize(65, ' ');
    return reply;
}

TEST_F(ChannelAssignmentTests, ReplyTooLongForItsBuffer_IsNoAnswerWhateverTheLogSetting) {
    for (const std::uint32_t log : {0U, 1U}) {
        SCOPED_TRACE(testing::Message() << "log " << log);
        platform.server.Answer("readcurval 7(2)", TooLongReply("readcurval 7(2)"));
        ConnectProducts(platform, {7});
        CDevApiInterface_Impl& device = RealDevice();
        platform.registry.Set(kMiscKey, kLogValue, RegistryValue::Dword(log));
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
        EXPECT_EQ(Temperatures(), (std::vector<Live>{{7, 0, 1, 1}, {7, 1, 0, 0}, {7, 3, 0, 0}, {7, 4, 0, 0}}));
    }
}

}  // namespace
