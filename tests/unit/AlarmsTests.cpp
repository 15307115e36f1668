#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Fixture.h"
#include "Journal.h"
#include "ProductSets.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/WindowHandle.h"

namespace {

class AlarmsTests : public DeviceTest {
 protected:
    /// A real device whose first channels are a temperature zone, a CO2 and an O2 controller and a humidifier.
    CDevApiInterface_Impl& Device() {
        CDevApiInterface_Impl& device = RealDevice();
        AssignOneOfEach(device);
        platform.server.ClearCommands();
        return device;
    }

    template <class Channel>
    static std::pair<double, double> ToleranceOf(const Channel* channel) {
        return {Get(channel->m_dToleranceBelow), Get(channel->m_dToleranceAbove)};
    }
};

using Pair = std::pair<double, double>;

TEST_F(AlarmsTests, SettingsText_BecomesTolerancesAndAlarms) {
    CDevApiInterface_Impl& device = Device();
    EXPECT_EQ(device.ApplyConfiguration(L"dIncubatorBelow 0.24 | dIncubatorAbove 0.3 | dCO2Below 0.4 | dCO2Above 0.6 | "
                                        L"dO2Below 1.5 | dO2Above 1.25 | dHumidityBelow 2 | dHumidityAbove 3"),
              0);
    EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"alarm 8 0.2", "alarm 10 0.40", "alarm 11 1.25"}));
    EXPECT_EQ(ToleranceOf(&*device.m_pTemperature[0]), (Pair{0.24, 0.3}));
    EXPECT_EQ(ToleranceOf(&*device.m_pGasConcentration[0]), (Pair{0.4, 0.6}));
    EXPECT_EQ(ToleranceOf(&*device.m_pGasConcentration[1]), (Pair{1.5, 1.25}));
    EXPECT_EQ(ToleranceOf(&*device.m_pHumidifier[0]), (Pair{2.0, 3.0}));
    EXPECT_FALSE(device.m_bBusy);
    EXPECT_TRUE(device.m_bSetupComplete);
}

TEST_F(AlarmsTests, EmptyText_AppliesTheDefaults) {
    CDevApiInterface_Impl& device = Device();
    EXPECT_EQ(device.ApplyConfiguration(L""), 0);
    EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"alarm 8 0.2", "alarm 10 0.50", "alarm 11 0.50"}));
    EXPECT_EQ(ToleranceOf(&*device.m_pHumidifier[0]), (Pair{1.0, 1.0}));
}

TEST_F(AlarmsTests, NullText_FailsAndStaysBusy) {
    CDevApiInterface_Impl& device = Device();
    int window = 0;
    device.m_hProgressWnd = &window;
    EXPECT_EQ(device.ApplyConfiguration(nullptr), -1);
    EXPECT_TRUE(device.m_bBusy);
    EXPECT_FALSE(device.m_bSetupComplete);
    EXPECT_EQ(platform.windows.Percents(&window), std::vector<int>{75});
    EXPECT_TRUE(platform.server.Commands().empty());
}

TEST_F(AlarmsTests, ProgressWindow_IsTakenToItsEndAndClosed) {
    CDevApiInterface_Impl& device = Device();
    int window = 0;
    device.m_hProgressWnd = &window;
    device.m_bProgressUp = true;
    device.ApplyConfiguration(L"");
    EXPECT_EQ(platform.windows.Percents(&window), (std::vector<int>{75, 83, 89}));
    EXPECT_EQ(platform.windows.Destroyed(), std::vector<oko::WindowHandle>{&window});
    EXPECT_EQ(device.m_hProgressWnd, &window);
    EXPECT_EQ(device.m_iProgress, 89);
}

TEST_F(AlarmsTests, ProgressWindowThatIsGone_IsNotDestroyedAgain) {
    CDevApiInterface_Impl& device = Device();
    int window = 0;
    device.m_hProgressWnd = &window;
    device.m_bProgressUp = true;
    device.ApplyConfiguration(L"");
    device.ApplyConfiguration(L"");  // the handle may be another window's by now
    EXPECT_EQ(platform.windows.Destroyed().size(), 1U);
}

TEST_F(AlarmsTests, Steps_AreInOrderAndBusyFromTheirStartToTheirEnd) {
    CDevApiInterface_Impl& device = Device();
    device.m_products = {ProductWith(11, {237})};
    int window = 0;
    device.m_hProgressWnd = &window;
    device.m_bProgressUp = true;
    const Journal journal(platform, device);
    EXPECT_EQ(device.ApplyConfiguration(L""), 0);
    EXPECT_EQ(journal.Events(), (std::vector<std::string>{"75 %", "bl-param-read 11 237", "83 %", "alarm 8 0.2",
                                                          "alarm 10 0.50", "alarm 11 0.50", "89 %", "destroy"}));
    for (const Journal::Entry& entry : journal.Entries()) {
        EXPECT_EQ(entry.busy, entry.what != "75 %") << entry.what;
    }
    EXPECT_FALSE(device.m_bBusy);
    EXPECT_TRUE(device.m_bSetupComplete);
}

TEST_F(AlarmsTests, FurtherGasChannels_AreLeftAlone) {
    CDevApiInterface_Impl& device = Device();
    Assign(*device.m_pGasConcentration[2], 10, 0);
    Assign(*device.m_pGasConcentration[3], 11, 0);
    const Pair before = ToleranceOf(&*device.m_pGasConcentration[2]);
    EXPECT_EQ(device.ApplyConfiguration(L"dIncubatorBelow 1 | dIncubatorAbove 1 | dCO2Below 2 | dCO2Above 3 | "
                                        L"dO2Below 4 | dO2Above 6"),
              0);
    EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"alarm 8 1.0", "alarm 10 2.00", "alarm 11 4.00"}));
    EXPECT_EQ(ToleranceOf(&*device.m_pGasConcentration[2]), before);
    EXPECT_EQ(ToleranceOf(&*device.m_pGasConcentration[3]), before);
}

TEST_F(AlarmsTests, WithoutAProgressWindow_NoneIsClosed) {
    Device().ApplyConfiguration(L"");
    EXPECT_TRUE(platform.windows.Destroyed().empty());
}

TEST_F(AlarmsTests, GasChannels_AreClassifiedByProductAndChannel) {
    struct Case {
        int product;
        int channel;
        const char* command;  // null: none
    };
    for (const Case& row :
         {Case{10, 0, "alarm 10 0.10"}, Case{10, 1, "alarm 10 0.10"}, Case{11, 0, "alarm 11 0.30"},
          Case{12, 0, "alarm 12 0.10"}, Case{12, 1, "alarm 12 0.30"}, Case{13, 0, "alarm 13 0.10"},
          Case{13, 1, "alarm 13 0.30"}, Case{12, 2, nullptr}, Case{0, 0, nullptr}, Case{14, 0, nullptr}}) {
        SCOPED_TRACE(testing::Message() << row.product << "/" << row.channel);
        CDevApiInterface_Impl& device = Device();
        device.m_pTemperature[0]->DeletingDestructor(1);
        Assign(*device.m_pGasConcentration[1], 0, 0);
        Assign(*device.m_pGasConcentration[0], row.product, row.channel);
        device.ApplyConfiguration(
            L"dIncubatorBelow 1 | dIncubatorAbove 1 | dCO2Below 0.1 | dCO2Above 0.2 | dO2Below 0.3 | "
            L"dO2Above 0.4");
        EXPECT_EQ(platform.server.Commands(),
                  row.command != nullptr ? std::vector<std::string>{row.command} : std::vector<std::string>{});
    }
}

TEST_F(AlarmsTests, TemperatureChannelThatStandsForNothing_IsAlarmedAsProduct0) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.AnswerPayload("listconprod", "");
    ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    platform.server.ClearCommands();
    EXPECT_EQ(device.ApplyConfiguration(L""), 0);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"alarm 0 0.2"});
}

TEST_F(AlarmsTests, BothGasesOfAMixer_AreAlarmedUnderItsOneNumber) {
    CDevApiInterface_Impl& device = Device();
    Assign(*device.m_pGasConcentration[0], 12, 0);
    Assign(*device.m_pGasConcentration[1], 12, 1);
    EXPECT_EQ(device.ApplyConfiguration(L"dIncubatorBelow 1 | dIncubatorAbove 1 | dCO2Below 0.1 | dCO2Above 0.2 | "
                                        L"dO2Below 0.3 | dO2Above 0.4"),
              0);
    EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"alarm 8 1.0", "alarm 12 0.10", "alarm 12 0.30"}));
}

TEST_F(AlarmsTests, MissingChannels_AreLeftOut) {
    CDevApiInterface_Impl& device = Device();
    device.m_pTemperature[0]->DeletingDestructor(1);
    device.m_pGasConcentration[0]->DeletingDestructor(1);
    device.m_pGasConcentration[1]->DeletingDestructor(1);
    device.m_pHumidifier[0]->DeletingDestructor(1);
    EXPECT_EQ(device.ApplyConfiguration(L""), 0);
    EXPECT_TRUE(platform.server.Commands().empty());
}

TEST_F(AlarmsTests, AirMode_IsWhatTheLastProductReports) {
    struct Case {
        const char* reply11;
        const char* reply12;
        int airMode;
    };
    for (const Case& row : {Case{"0", "1", 1}, Case{"1", "0", 0}, Case{"1", "error", 1}, Case{"error", "error", 0},
                            Case{"2", "2", 0}, Case{"1.9", "nan", 1}}) {
        SCOPED_TRACE(testing::Message() << row.reply11 << " " << row.reply12);
        CDevApiInterface_Impl& device = Device();
        device.m_bAirMode = 1;
        device.m_products = {ProductWith(10, {237}), ProductWith(11, {237}), ProductWith(12, {237}), ProductWith(13)};
        platform.server.AnswerPayload("bl-param-read 11 237", row.reply11);
        platform.server.AnswerPayload("bl-param-read 12 237", row.reply12);
        device.ApplyConfiguration(L"");
        EXPECT_EQ(device.m_bAirMode, row.airMode);
        EXPECT_EQ(platform.server.Commands(),
                  (std::vector<std::string>{"bl-param-read 11 237", "bl-param-read 12 237", "alarm 8 0.2",
                                            "alarm 10 0.50", "alarm 11 0.50"}));
    }
}

TEST_F(AlarmsTests, AirMode_WithoutAProductThatHasOne_IsOff) {
    CDevApiInterface_Impl& device = Device();
    device.m_bAirMode = 1;
    device.m_products = {ProductWith(10, {237})};
    device.ApplyConfiguration(L"");
    EXPECT_EQ(device.m_bAirMode, 0);
}

TEST_F(AlarmsTests, FailingCommands_DoNotMatter) {
    CDevApiInterface_Impl& device = Device();
    platform.server.SetDefault([](std::string_view) -> ServerReply { return kReceiveFails; });
    EXPECT_EQ(device.ApplyConfiguration(L""), 0);
    EXPECT_FALSE(device.m_bBusy);
}

}  // namespace
