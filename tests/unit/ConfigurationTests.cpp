// Slot 4 and the configuration dialog's fields, without a window.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Fixture.h"
#include "Journal.h"
#include "ProductSets.h"
#include "channels/SharedValues.h"
#include "fakes/HostLog.h"
#include "oko/Settings.h"
#include "oko/WindowHandle.h"
#include "ui/ConfigurationFields.h"
#include "ui/DialogEnd.h"
#include "ui/resources/ResourceIds.h"

namespace {

class ConfigurationTests : public DeviceTest {
 protected:
    /// A device with these products; its first channels are a heater, a CO2 and an O2 controller and a humidifier.
    CDevApiInterface_Impl& DeviceWith(const std::vector<int>& products) {
        CDevApiInterface_Impl& device = RealDevice();
        for (const int product : products) {
            device.m_products.push_back(ProductWith(product, {237, 238}));
        }
        AssignOneOfEach(device);
        device.m_nHumidifiers = 1;
        platform.server.ClearCommands();
        return device;
    }

    /// The enabled fields' ids.
    static std::vector<int> Enabled(const ConfigurationView& view) {
        std::vector<int> ids;
        for (const FieldView& field : view.fields) {
            if (field.enabled) {
                ids.push_back(field.id);
            }
        }
        return ids;
    }

    /// The ids of these quantities' fields.
    static std::vector<int> FieldIds(bool temperature, bool co2, bool o2, bool humidity) {
        std::vector<int> ids;
        const auto add = [&ids](bool wanted, int below, int above) {
            if (wanted) {
                ids.insert(ids.end(), {below, above});
            }
        };
        add(temperature, IDC_TEMPERATURE_BELOW, IDC_TEMPERATURE_ABOVE);
        add(co2, IDC_CO2_BELOW, IDC_CO2_ABOVE);
        add(o2, IDC_O2_BELOW, IDC_O2_ABOVE);
        add(humidity, IDC_HUMIDITY_BELOW, IDC_HUMIDITY_ABOVE);
        return ids;
    }

    static std::wstring TextOf(const ConfigurationView& view, int id) {
        return std::ranges::find(view.fields, id, &FieldView::id)->text;
    }

    /// A person's entries by control id; other fields are "1".
    static FieldReader Fields(std::map<int, std::wstring> texts) {
        return [texts = std::move(texts)](int id) {
            const auto found = texts.find(id);
            return found != texts.end() ? found->second : std::wstring(L"1");
        };
    }
};

TEST_F(ConfigurationTests, Fields_AreEnabledByTheProducts) {
    struct Case {
        std::vector<int> products;
        bool temperature, co2, o2, humidity, airMode;
    };
    for (const Case& row : std::vector<Case>{{{}, false, false, false, false, false},
                                             {{7}, true, false, false, true, false},
                                             {{8}, true, false, false, true, false},
                                             {{9}, true, false, false, true, false},
                                             {{14}, true, false, false, true, false},
                                             {{16}, true, false, false, true, false},
                                             {{17}, true, false, false, true, false},
                                             {{10}, false, true, false, true, false},
                                             {{11}, false, false, true, true, true},
                                             {{12}, false, true, true, true, true},
                                             {{13}, false, true, true, true, true},
                                             {{15}, false, false, false, true, false}}) {
        SCOPED_TRACE(testing::PrintToString(row.products));
        const ConfigurationView view = DescribeConfiguration(DeviceWith(row.products));
        EXPECT_EQ(Enabled(view), FieldIds(row.temperature, row.co2, row.o2, row.humidity));
        EXPECT_EQ(view.airModeEnabled, row.airMode);
        EXPECT_EQ(view.showStatusEnabled, !row.products.empty());
    }
}

TEST_F(ConfigurationTests, Fields_AreFilledWhereThereIsAChannel) {
    CDevApiInterface_Impl& device = DeviceWith({});
    const ConfigurationView empty = DescribeConfiguration(device);
    EXPECT_EQ(TextOf(empty, IDC_TEMPERATURE_BELOW), L"0.2");
    EXPECT_EQ(TextOf(empty, IDC_CO2_ABOVE), L"0.50");
    EXPECT_EQ(TextOf(empty, IDC_O2_BELOW), L"0.50");
    EXPECT_EQ(TextOf(empty, IDC_HUMIDITY_BELOW), L"");  // humidity only where it is present
    device.m_products.push_back(ProductWith(15));
    EXPECT_EQ(TextOf(DescribeConfiguration(device), IDC_HUMIDITY_ABOVE), L"2");
    device.m_pHumidifier[0]->m_bEnabled = 0;
    EXPECT_EQ(TextOf(DescribeConfiguration(device), IDC_HUMIDITY_ABOVE), L"");
    device.m_pTemperature[0]->DeletingDestructor(1);
    Assign(*device.m_pGasConcentration[0], 14, 0);
    const ConfigurationView view = DescribeConfiguration(device);
    EXPECT_EQ(TextOf(view, IDC_TEMPERATURE_BELOW), L"");
    EXPECT_EQ(TextOf(view, IDC_CO2_BELOW), L"");
}

TEST_F(ConfigurationTests, AnyLiveHumidityChannel_FillsTheFieldsWithTheFirstOnesTolerances) {
    for (const int enabled : {0, 1, 2, 3}) {
        CDevApiInterface_Impl& device = DeviceWith({15});
        for (int i = 0; i < CDevApiInterface_Impl::kHumidifiers; ++i) {
            device.m_pHumidifier[static_cast<std::size_t>(i)]->m_bEnabled = i == enabled ? 1 : 0;
        }
        Put(device.m_pHumidifier[0]->m_dToleranceAbove, 7.0);
        for (const int live : {0, 1, 2, 3, 4}) {
            SCOPED_TRACE(testing::Message() << "enabled: " << enabled << ", live: " << live);
            device.m_nHumidifiers = live;
            const ConfigurationView view = DescribeConfiguration(device);
            EXPECT_EQ(Enabled(view), FieldIds(false, false, false, enabled < live));
            EXPECT_EQ(TextOf(view, IDC_HUMIDITY_ABOVE), enabled < live ? L"7" : L"");
        }
    }
}

TEST_F(ConfigurationTests, AirMode_IsCheckedWhereItIsOnAndAvailable) {
    CDevApiInterface_Impl& device = DeviceWith({11});
    device.m_bAirMode = 1;
    EXPECT_TRUE(DescribeConfiguration(device).airModeChecked);
    device.m_products[0].m_iProduct = 10;
    EXPECT_FALSE(DescribeConfiguration(device).airModeChecked);
}

TEST_F(ConfigurationTests, ShowStatus_NeedsAProductWithParameters) {
    CDevApiInterface_Impl& device = DeviceWith({7, 8});
    device.m_products[0].m_params.clear();
    EXPECT_TRUE(DescribeConfiguration(device).showStatusEnabled);
    device.m_products[1].m_params.clear();
    EXPECT_FALSE(DescribeConfiguration(device).showStatusEnabled);
}

TEST_F(ConfigurationTests, Taking_StoresEveryFieldAndWritesTheAirMode) {
    CDevApiInterface_Impl& device = DeviceWith({10, 11, 12});
    EXPECT_TRUE(TakeConfiguration(device,
                                  Fields({{IDC_TEMPERATURE_BELOW, L"0.3"},
                                          {IDC_TEMPERATURE_ABOVE, L" 0.4 "},
                                          {IDC_CO2_BELOW, L"x"},
                                          {IDC_CO2_ABOVE, L"1,5"},
                                          {IDC_O2_BELOW, L"2.5"},
                                          {IDC_O2_ABOVE, L"-1"},
                                          {IDC_HUMIDITY_BELOW, L"3"},
                                          {IDC_HUMIDITY_ABOVE, L"4e0"}}),
                                  true));
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceBelow, 0.3);
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceAbove, 0.4);
    EXPECT_EQ(device.m_pGasConcentration[0]->m_dToleranceBelow, 0.0);
    EXPECT_EQ(device.m_pGasConcentration[0]->m_dToleranceAbove, 1.0);
    EXPECT_EQ(device.m_pGasConcentration[1]->m_dToleranceBelow, 2.5);
    EXPECT_EQ(device.m_pGasConcentration[1]->m_dToleranceAbove, -1.0);
    EXPECT_EQ(device.m_pHumidifier[0]->m_dToleranceBelow, 3.0);
    EXPECT_EQ(device.m_pHumidifier[0]->m_dToleranceAbove, 4.0);
    EXPECT_EQ(platform.server.Commands(),
              (std::vector<std::string>{"bl-param-write 11 238 1", "bl-param-write 12 238 1"}));
    EXPECT_FALSE(device.m_bBusy);
}

TEST_F(ConfigurationTests, Taking_WhatTheDialogShows_RoundsTheTolerances) {
    CDevApiInterface_Impl& device = DeviceWith({8});
    device.m_pTemperature[0]->SetTolerance(0.26, 0.24);
    device.m_pGasConcentration[0]->SetTolerance(0.125, 0.005);
    const ConfigurationView shown = DescribeConfiguration(device);
    EXPECT_TRUE(TakeConfiguration(device, [&shown](int id) { return TextOf(shown, id); }, false));
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceBelow, 0.3);
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceAbove, 0.2);
    EXPECT_EQ(device.m_pGasConcentration[0]->m_dToleranceBelow, 0.12);
    EXPECT_EQ(device.m_pGasConcentration[0]->m_dToleranceAbove, 0.01);
    EXPECT_EQ(device.m_pHumidifier[0]->m_dToleranceBelow, 0.0);  // 0.5 before
    EXPECT_EQ(device.m_pHumidifier[0]->m_dToleranceAbove, 2.0);
}

TEST_F(ConfigurationTests, Taking_NumberThatIsNotFinite_CountsAsTextThatIsNone) {
    CDevApiInterface_Impl& device = DeviceWith({});
    for (const wchar_t* const text : {L"nan", L"-nan", L"inf", L"-INFINITY", L"1e999"}) {
        TakeConfiguration(device, Fields({{IDC_TEMPERATURE_BELOW, text}}), false);
        EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceBelow, 0.0) << text;
    }
}

TEST_F(ConfigurationTests, Taking_BlanksOfAnyScriptBeforeANumber_AreSkipped) {
    CDevApiInterface_Impl& device = DeviceWith({});
    for (const wchar_t* const text : {L"\u30002.5", L"\u00A02.5", L"\t\u2003 \u2028\n2.5\u3000", L"\u00852.5\u2103"}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(text)));
        TakeConfiguration(device, Fields({{IDC_TEMPERATURE_BELOW, text}}), false);
        EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceBelow, 2.5);
    }
    for (const wchar_t* const text : {L"\u3000", L"\u200B2.5", L"\uFEFF2.5", L"\uFF12.5", L"\u41422.5"}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(text)));
        TakeConfiguration(device, Fields({{IDC_TEMPERATURE_BELOW, text}}), false);
        EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceBelow, 0.0);
    }
}

TEST_F(ConfigurationTests, Taking_EmptyField_StopsThereAndStaysBusy) {
    CDevApiInterface_Impl& device = DeviceWith({11});
    EXPECT_FALSE(TakeConfiguration(device, Fields({{IDC_TEMPERATURE_BELOW, L"9"}, {IDC_CO2_ABOVE, L""}}), true));
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceBelow, 9.0);
    EXPECT_EQ(device.m_pGasConcentration[0]->m_dToleranceBelow, 1.0);
    EXPECT_EQ(device.m_pGasConcentration[0]->m_dToleranceAbove, 0.5);
    EXPECT_EQ(device.m_bAirMode, 0);
    EXPECT_TRUE(device.m_bBusy);
    EXPECT_TRUE(platform.server.Commands().empty());
}

TEST_F(ConfigurationTests, Taking_ParameterListWithout238_IsNotWritten) {
    CDevApiInterface_Impl& device = DeviceWith({11, 13});
    device.m_products[0].m_params = {{237, {}}, {300, {}}};
    TakeConfiguration(device, Fields({}), false);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"bl-param-write 13 238 0"});
}

TEST_F(ConfigurationTests, Taking_TheFirstLargerParameter_EndsTheSearchFor238) {
    CDevApiInterface_Impl& device = DeviceWith({11, 12});
    device.m_products[0].m_params = {{237, {}}, {239, {}}, {238, {}}};  // a server that does not sort its list
    TakeConfiguration(device, Fields({}), true);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"bl-param-write 12 238 1"});
}

TEST_F(ConfigurationTests, Taking_IsBusyFromTheFirstFieldToTheAirMode) {
    CDevApiInterface_Impl& device = DeviceWith({11, 12});
    const Journal journal(platform, device);
    const auto field = [&device](int id) {
        EXPECT_TRUE(device.m_bBusy) << id;
        return std::wstring(L"1");
    };
    EXPECT_TRUE(TakeConfiguration(device, field, true));
    ASSERT_EQ(journal.Events(), (std::vector<std::string>{"bl-param-write 11 238 1", "bl-param-write 12 238 1"}));
    EXPECT_TRUE(std::ranges::all_of(journal.Entries(), &Journal::Entry::busy));
    EXPECT_FALSE(device.m_bBusy);
}

TEST_F(ConfigurationTests, Taking_FieldOfBlanks_GivesZero) {
    CDevApiInterface_Impl& device = DeviceWith({});
    EXPECT_TRUE(
        TakeConfiguration(device, Fields({{IDC_TEMPERATURE_BELOW, L" "}, {IDC_HUMIDITY_ABOVE, L" \t  "}}), false));
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceBelow, 0.0);
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceAbove, 1.0);
    EXPECT_EQ(device.m_pHumidifier[0]->m_dToleranceAbove, 0.0);
}

TEST_F(ConfigurationTests, Taking_ReadsUpTo255CharactersOfAField) {
    CDevApiInterface_Impl& device = DeviceWith({});
    TakeConfiguration(device,
                      Fields({{IDC_TEMPERATURE_BELOW, std::wstring(254, L'0') + L"12"},
                              {IDC_TEMPERATURE_ABOVE, std::wstring(255, L' ') + L"3"}}),
                      false);
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceBelow, 1.0);
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceAbove, 0.0);
}

TEST_F(ConfigurationTests, FurtherGasChannels_AreNeitherShownNorTakenNorWritten) {
    CDevApiInterface_Impl& device = DeviceWith({10, 11});
    for (const auto& [channel, product] : {std::pair{2U, 10}, std::pair{3U, 11}}) {
        Assign(*device.m_pGasConcentration[channel], product, 0);
        Put(device.m_pGasConcentration[channel]->m_dToleranceBelow, 8.0);
        Put(device.m_pGasConcentration[channel]->m_dToleranceAbove, 9.0);
    }
    const ConfigurationView view = DescribeConfiguration(device);
    for (const int id : {IDC_CO2_BELOW, IDC_CO2_ABOVE, IDC_O2_BELOW, IDC_O2_ABOVE}) {
        EXPECT_EQ(TextOf(view, id), L"0.50") << id;
    }
    ScriptedDialogs::Current().onConfiguration = [](CDevApiInterface_Impl& shown) {
        EXPECT_TRUE(TakeConfiguration(shown, Fields({}), false));
        return DialogEnd::Ok;
    };
    std::array<wchar_t, oko::kConfigurationTextLength> text{};
    EXPECT_EQ(device.ShowConfiguration(text.data(), 10, nullptr), 0);
    EXPECT_NE(
        std::wstring(text.data()).find(L"dCO2Below 1.000000 | dCO2Above 1.000000 | dO2Below 1.000000 | dO2Above 1."),
        std::wstring::npos);
    EXPECT_EQ(device.m_pGasConcentration[2]->m_dToleranceBelow, 8.0);
    EXPECT_EQ(device.m_pGasConcentration[3]->m_dToleranceAbove, 9.0);
}

TEST_F(ConfigurationTests, Taking_HumidityChannelThatIsNotLive_IsLeftOut) {
    CDevApiInterface_Impl& device = DeviceWith({11});
    device.m_nHumidifiers = 0;
    EXPECT_TRUE(TakeConfiguration(device, Fields({{IDC_HUMIDITY_BELOW, L""}}), false));
}

TEST_F(ConfigurationTests, Show_Ok_WritesTheTextAndAppliesIt) {
    CDevApiInterface_Impl& device = DeviceWith({11});
    platform.server.AnswerPayload("bl-param-read 11 237", "1");
    int parent = 0;
    ScriptedDialogs::Current().onConfiguration = [](CDevApiInterface_Impl& shown) {
        Put(shown.m_pTemperature[0]->m_dToleranceBelow, 1.5);
        Put(shown.m_pGasConcentration[1]->m_dToleranceAbove, 2.25);
        return DialogEnd::Ok;
    };
    std::array<wchar_t, oko::kConfigurationTextLength> text{};
    EXPECT_EQ(device.ShowConfiguration(text.data(), 10, &parent), 0);
    EXPECT_STREQ(text.data(),
                 L"dIncubatorBelow 1.500000 | dIncubatorAbove 0.200000 | dCO2Below 0.500000 | dCO2Above 0.500000 | "
                 L"dO2Below 0.500000 | dO2Above 2.250000 | dHumidityBelow 0.500000 | dHumidityAbove 2.000000");
    EXPECT_EQ(platform.server.Commands(),
              (std::vector<std::string>{"bl-param-read 11 237", "alarm 8 0.2", "alarm 10 0.50", "alarm 11 0.50"}));
    EXPECT_EQ(HostLog::AirModeChanges(), 1U);
    EXPECT_EQ(ScriptedDialogs::Current().configurationParents, std::vector<oko::WindowHandle>{&parent});
    EXPECT_EQ(device.m_nConfigTextSize, 10);
    EXPECT_EQ(device.m_pszConfigText, text.data());
}

TEST_F(ConfigurationTests, Show_HumidityChannelThatIsNotLive_StillGivesItsTolerances) {
    CDevApiInterface_Impl& device = DeviceWith({11});
    device.m_nHumidifiers = 0;
    Put(device.m_pHumidifier[0]->m_dToleranceBelow, 7.0);
    Put(device.m_pHumidifier[0]->m_dToleranceAbove, 8.0);
    ScriptedDialogs::Current().onConfiguration = [](CDevApiInterface_Impl& shown) {
        const ConfigurationView view = DescribeConfiguration(shown);
        for (const int id : {IDC_HUMIDITY_BELOW, IDC_HUMIDITY_ABOVE}) {
            SCOPED_TRACE(id);
            EXPECT_EQ(TextOf(view, id), L"");
            EXPECT_FALSE(std::ranges::find(view.fields, id, &FieldView::id)->enabled);
        }
        EXPECT_TRUE(TakeConfiguration(shown, Fields({{IDC_HUMIDITY_BELOW, L"3"}, {IDC_HUMIDITY_ABOVE, L"4"}}), false));
        return DialogEnd::Ok;
    };
    std::array<wchar_t, oko::kConfigurationTextLength> text{};
    EXPECT_EQ(device.ShowConfiguration(text.data(), 10, nullptr), 0);
    EXPECT_TRUE(std::wstring(text.data()).ends_with(L"dHumidityBelow 7.000000 | dHumidityAbove 8.000000"));
}

TEST_F(ConfigurationTests, Show_TextEndsInAZeroAndTouchesNothingBehindIt) {
    CDevApiInterface_Impl& device = DeviceWith({});
    ScriptedDialogs::Current().onConfiguration = [](CDevApiInterface_Impl&) { return DialogEnd::Ok; };
    std::array<wchar_t, oko::kConfigurationTextLength> text;
    text.fill(L'#');
    text.back() = L'\0';  // the text is read again when it is applied
    EXPECT_EQ(device.ShowConfiguration(text.data(), 10, nullptr), 0);
    const auto end = std::ranges::find(text, L'\0');
    EXPECT_TRUE(std::wstring(text.begin(), end).ends_with(L"dHumidityAbove 2.000000"));
    EXPECT_EQ(std::count(end, text.end(), L'#'), text.end() - end - 2);
}

TEST_F(ConfigurationTests, Show_AirModeAsBefore_CallsNobody) {
    CDevApiInterface_Impl& device = DeviceWith({11});
    platform.server.AnswerPayload("bl-param-read 11 237", "0");
    ScriptedDialogs::Current().onConfiguration = [](CDevApiInterface_Impl& shown) {
        shown.m_bAirMode = 1;  // what the check box said counts for nothing once the product has answered
        return DialogEnd::Ok;
    };
    std::array<wchar_t, oko::kConfigurationTextLength> text{};
    EXPECT_EQ(device.ShowConfiguration(text.data(), 10, nullptr), 0);
    EXPECT_EQ(HostLog::AirModeChanges(), 0U);
    EXPECT_EQ(device.m_bAirMode, 0);
}

TEST_F(ConfigurationTests, Show_CancelledOrRefused_WritesNothing) {
    CDevApiInterface_Impl& device = DeviceWith({11});
    std::array<wchar_t, oko::kConfigurationTextLength> text{L'#'};
    for (const DialogEnd end : {DialogEnd::Cancelled, DialogEnd::Failed}) {
        ScriptedDialogs::Current().onConfiguration = [end](CDevApiInterface_Impl&) { return end; };
        EXPECT_EQ(device.ShowConfiguration(text.data(), 10, nullptr), -1) << "end " << static_cast<int>(end);
    }
    EXPECT_EQ(text[0], L'#');
    EXPECT_EQ(device.ShowConfiguration(nullptr, 10, nullptr), -1);
    EXPECT_TRUE(platform.server.Commands().empty());
}

TEST_F(ConfigurationTests, Show_Products16And17_AreRefusedWithoutADialog) {
    CDevApiInterface_Impl& device = DeviceWith({16});
    std::array<wchar_t, oko::kConfigurationTextLength> text{};
    for (const int product : {16, 17}) {
        Assign(*device.m_pTemperature[0], product, 0);
        EXPECT_EQ(device.ShowConfiguration(text.data(), 10, nullptr), -1) << product;
    }
    EXPECT_TRUE(ScriptedDialogs::Current().configurationParents.empty());
}

TEST_F(ConfigurationTests, Show_BothGasChannelsOfOneGas_TheSecondWins) {
    CDevApiInterface_Impl& device = DeviceWith({10});
    Assign(*device.m_pGasConcentration[1], 10, 0);
    device.m_pGasConcentration[1]->m_dToleranceBelow = 7.0;
    ScriptedDialogs::Current().onConfiguration = [](CDevApiInterface_Impl&) { return DialogEnd::Ok; };
    std::array<wchar_t, oko::kConfigurationTextLength> text{};
    device.ShowConfiguration(text.data(), 10, nullptr);
    EXPECT_NE(std::wstring(text.data()).find(L"dCO2Below 7.000000"), std::wstring::npos);
}

}  // namespace
