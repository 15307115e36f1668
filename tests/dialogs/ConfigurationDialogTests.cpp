// The configuration dialog: what it shows for which incubator, how it is left, and what comes of it.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "Channels.h"
#include "DialogTest.h"
#include "dialogs/OpenDialog.h"
#include "oko/Result.h"
#include "ui/resources/ResourceIds.h"

namespace {

constexpr std::array<int, 8> kFields{IDC_TEMPERATURE_BELOW, IDC_TEMPERATURE_ABOVE, IDC_CO2_BELOW,
                                     IDC_CO2_ABOVE,         IDC_O2_BELOW,          IDC_O2_ABOVE,
                                     IDC_HUMIDITY_BELOW,    IDC_HUMIDITY_ABOVE};

const std::wstring kDefaults =
    L"dIncubatorBelow 0.200000 | dIncubatorAbove 0.200000 | dCO2Below 0.500000 | dCO2Above 0.500000 | "
    L"dO2Below 0.500000 | dO2Above 0.500000 | dHumidityBelow 1.000000 | dHumidityAbove 1.000000";

class ConfigurationDialogTests : public IncubatorDialogTest {
 protected:
    /// Cancels the dialog after `look`.
    template <class Look>
    void LookAt(Look look) {
        EXPECT_EQ(ShowConfiguration([&](const OpenDialog& dialog) {
                      look(dialog);
                      dialog.Click(IDCANCEL);
                  }),
                  oko::kFailure);
    }

    /// Types into the fields, presses OK and gives the settings text.
    std::wstring Enter(const std::vector<std::pair<int, std::wstring>>& fields) {
        EXPECT_EQ(ShowConfiguration([&](const OpenDialog& dialog) {
                      for (const auto& [id, value] : fields) {
                          dialog.Type(id, value);
                      }
                      dialog.Click(IDOK);
                  }),
                  oko::kSuccess);
        return text.data();
    }
};

/// The fields and buttons that an incubator with these products has.
struct Shown {
    std::vector<int> products;
    bool temperature, co2, o2, humidity;
    std::array<const wchar_t*, 8> texts;
    bool showStatus;
};

void PrintTo(const Shown& shown, std::ostream* out) { *out << testing::PrintToString(shown.products); }

std::string NameOf(const testing::TestParamInfo<Shown>& incubator) {
    std::string name;
    for (const int product : incubator.param.products) {
        name += "Product" + std::to_string(product);
    }
    return name.empty() ? "NoProduct" : name;
}

// Temperature channel 0 always exists: its fields are filled even where no product has a temperature.
const std::array<Shown, 12> kIncubators{{
    {{}, false, false, false, false, {L"0.2", L"0.2", L"", L"", L"", L"", L"", L""}, false},
    {{7}, true, false, false, false, {L"0.2", L"0.2", L"", L"", L"", L"", L"", L""}, false},
    {{8}, true, false, false, false, {L"0.2", L"0.2", L"", L"", L"", L"", L"", L""}, true},
    {{9}, true, false, false, false, {L"0.2", L"0.2", L"", L"", L"", L"", L"", L""}, true},
    {{10}, false, true, false, false, {L"0.2", L"0.2", L"0.50", L"0.50", L"", L"", L"", L""}, true},
    {{11}, false, false, true, false, {L"0.2", L"0.2", L"", L"", L"0.50", L"0.50", L"", L""}, true},
    {{12}, false, true, true, false, {L"0.2", L"0.2", L"0.50", L"0.50", L"0.50", L"0.50", L"", L""}, true},
    {{13}, false, true, true, false, {L"0.2", L"0.2", L"0.50", L"0.50", L"0.50", L"0.50", L"", L""}, true},
    {{14}, true, false, false, false, {L"0.2", L"0.2", L"", L"", L"", L"", L"", L""}, true},
    {{15}, false, false, false, true, {L"0.2", L"0.2", L"", L"", L"", L"", L"1", L"1"}, true},
    {{9, 12, 15}, true, true, true, true, {L"0.2", L"0.2", L"0.50", L"0.50", L"0.50", L"0.50", L"1", L"1"}, true},
    // Product 10's sensor is channel 0, but it is product 16 that has a temperature to control.
    {{10, 16}, true, true, false, false, {L"0.2", L"0.2", L"0.50", L"0.50", L"", L"", L"", L""}, true},
}};

class ConfigurationDialogFieldTests : public ConfigurationDialogTests, public testing::WithParamInterface<Shown> {};

INSTANTIATE_TEST_SUITE_P(Incubators, ConfigurationDialogFieldTests, testing::ValuesIn(kIncubators), NameOf);

TEST_P(ConfigurationDialogFieldTests, Fields_AreEnabledByProductAndFilledByChannel) {
    const Shown& incubator = GetParam();
    Start(incubator.products);
    LookAt([&](const OpenDialog& dialog) {
        const std::array<bool, 4> enabled{incubator.temperature, incubator.co2, incubator.o2, incubator.humidity};
        for (std::size_t i = 0; i < kFields.size(); ++i) {
            EXPECT_EQ(dialog.IsEnabled(kFields[i]), enabled[i / 2]) << kFields[i];
            EXPECT_EQ(dialog.Text(kFields[i]), incubator.texts[i]) << kFields[i];
        }
        EXPECT_EQ(dialog.IsEnabled(IDC_AIR_MODE), incubator.o2);
        EXPECT_EQ(dialog.IsChecked(IDC_AIR_MODE), incubator.o2);  // the server reports it as on
        EXPECT_EQ(dialog.IsEnabled(IDC_SHOW_STATUS), incubator.showStatus);
    });
}

TEST_F(ConfigurationDialogTests, Report_IsHiddenAtFirst) {
    Start({9});
    LookAt([](const OpenDialog& dialog) {
        for (const int id : {IDC_STATUS_GROUP, IDC_REPORT_FIRST, IDC_REPORT_SECOND, IDC_REPORT_THIRD}) {
            EXPECT_FALSE(dialog.IsShown(id)) << id;
        }
        for (const int id :
             {IDOK, IDCANCEL, IDC_TEMPERATURE_LABEL, IDC_TEMPERATURE_BELOW, IDC_AIR_MODE, IDC_SHOW_STATUS}) {
            EXPECT_TRUE(dialog.IsShown(id)) << id;
        }
    });
}

TEST_F(ConfigurationDialogTests, Parent_CannotBeUsedMeanwhile) {
    Start({9});
    LookAt([this](const OpenDialog& dialog) {
        EXPECT_FALSE(IsWindowEnabled(parent.Get()));
        EXPECT_EQ(GetWindow(dialog.Window(), GW_OWNER), parent.Get());
    });
    EXPECT_TRUE(IsWindowEnabled(parent.Get()));
}

TEST_F(ConfigurationDialogTests, Products16And17_HaveNoDialog) {
    for (const int product : {16, 17}) {
        SCOPED_TRACE(product);
        Start({product});
        SetText(L"before");
        EXPECT_EQ(Device().ShowConfiguration(text.data(), 400, parent.Get()), oko::kFailure);
        EXPECT_STREQ(text.data(), L"before");
        EXPECT_TRUE(server.NewCommands().empty());
        Device().Close();
    }
}

TEST_F(ConfigurationDialogTests, CancelEscapeAndCloseBox_ChangeNothing) {
    Start({9, 12, 15});
    SetText(L"before");
    struct Way {
        const char* name;
        void (*leave)(const OpenDialog&);
    };
    for (const Way& way : {Way{"Cancel", [](const OpenDialog& dialog) { dialog.Click(IDCANCEL); }},
                           Way{"Escape", [](const OpenDialog& dialog) { dialog.Press(VK_ESCAPE); }},
                           Way{"close box", [](const OpenDialog& dialog) { dialog.PressCloseBox(); }}}) {
        SCOPED_TRACE(way.name);
        EXPECT_EQ(ShowConfiguration([&](const OpenDialog& dialog) {
                      dialog.Type(IDC_TEMPERATURE_BELOW, L"9");
                      dialog.Click(IDC_AIR_MODE);
                      way.leave(dialog);
                  }),
                  oko::kFailure);
        EXPECT_STREQ(text.data(), L"before");
        EXPECT_TRUE(server.NewCommands().empty());
    }
    LookAt([](const OpenDialog& dialog) { EXPECT_EQ(dialog.Text(IDC_TEMPERATURE_BELOW), L"0.2"); });
    EXPECT_EQ(HostRecord::Current().airModeChanges, 0);
}

TEST_F(ConfigurationDialogTests, Ok_WritesTheTextAndSendsTheAlarms) {
    Start({9, 12, 15}, "107 119 189");
    EXPECT_EQ(Enter({{IDC_TEMPERATURE_BELOW, L"0.3"},
                     {IDC_TEMPERATURE_ABOVE, L"0.24"},
                     {IDC_CO2_BELOW, L"0.4"},
                     {IDC_CO2_ABOVE, L"0.6"},
                     {IDC_O2_BELOW, L"1.25"},
                     {IDC_O2_ABOVE, L"0.128"},
                     {IDC_HUMIDITY_BELOW, L"2"},
                     {IDC_HUMIDITY_ABOVE, L"3.5"}}),
              L"dIncubatorBelow 0.300000 | dIncubatorAbove 0.240000 | dCO2Below 0.400000 | dCO2Above 0.600000 | "
              L"dO2Below 1.250000 | dO2Above 0.128000 | dHumidityBelow 2.000000 | dHumidityAbove 3.500000");
    // The narrower tolerance of each; none for the humidity.
    EXPECT_EQ(server.NewCommands(), (std::vector<std::string>{"alarm 9 0.2", "alarm 12 0.40", "alarm 12 0.13"}));
    LookAt([](const OpenDialog& dialog) {
        const std::array<const wchar_t*, 8> rounded{L"0.3", L"0.2", L"0.40", L"0.60", L"1.25", L"0.13", L"2", L"4"};
        for (std::size_t i = 0; i < kFields.size(); ++i) {
            EXPECT_EQ(dialog.Text(kFields[i]), rounded[i]) << kFields[i];
        }
    });
}

/// A host's own slot 5, in place of the device's.
class ReplacedApplyConfiguration {
 public:
    explicit ReplacedApplyConfiguration(CDevApiInterface& device)
        : m_table(*reinterpret_cast<void***>(&device)), m_device(device) {
        std::copy_n(m_table, m_copy.size(), m_copy.begin());
        m_copy[5] = reinterpret_cast<void*>(&Apply);
        *reinterpret_cast<void***>(&device) = m_copy.data();
        Applied().clear();
    }
    ~ReplacedApplyConfiguration() { *reinterpret_cast<void***>(&m_device) = m_table; }
    ReplacedApplyConfiguration(const ReplacedApplyConfiguration&) = delete;
    ReplacedApplyConfiguration& operator=(const ReplacedApplyConfiguration&) = delete;

    static std::vector<std::wstring>& Applied() {
        static std::vector<std::wstring> texts;
        return texts;
    }

 private:
    static std::int32_t Apply(CDevApiInterface*, const wchar_t* text) {
        Applied().emplace_back(text);
        return oko::kSuccess;
    }

    void** m_table;
    CDevApiInterface& m_device;
    std::array<void*, 15> m_copy{};
};

TEST_F(ConfigurationDialogTests, Ok_AppliesTheTextThroughTheObjectsOwnSlot) {
    Start({8});
    const ReplacedApplyConfiguration replaced(Device());
    Enter({});
    EXPECT_EQ(ReplacedApplyConfiguration::Applied(), std::vector<std::wstring>{kDefaults});
    EXPECT_TRUE(server.NewCommands().empty());
}

TEST_F(ConfigurationDialogTests, EnterKey_IsOk) {
    Start({8});
    EXPECT_EQ(ShowConfiguration([](const OpenDialog& dialog) { dialog.Press(VK_RETURN); }), oko::kSuccess);
    EXPECT_EQ(text.data(), kDefaults);
    EXPECT_EQ(server.NewCommands(), std::vector<std::string>{"alarm 8 0.2"});
}

TEST_F(ConfigurationDialogTests, EveryEmptyField_KeepsTheDialogOpen) {
    Start({9, 12, 15});
    EXPECT_EQ(ShowConfiguration([this](const OpenDialog& dialog) {
                  for (const int id : kFields) {
                      const std::wstring before = dialog.Text(id);
                      dialog.Type(id, L"");
                      dialog.Click(IDOK);
                      dialog.Settle();
                      EXPECT_TRUE(dialog.IsOpen()) << id;
                      EXPECT_TRUE(server.NewCommands().empty()) << id;
                      dialog.Type(id, before);
                  }
                  dialog.Click(IDOK);
              }),
              oko::kSuccess);
    EXPECT_EQ(text.data(), kDefaults);
}

TEST_F(ConfigurationDialogTests, EmptyField_LeavesTheEarlierOnesTaken) {
    Start({9, 12, 15});
    EXPECT_EQ(ShowConfiguration([](const OpenDialog& dialog) {
                  dialog.Type(IDC_TEMPERATURE_BELOW, L"0.7");
                  dialog.Type(IDC_CO2_ABOVE, L"");
                  dialog.Type(IDC_O2_BELOW, L"0.9");
                  dialog.Click(IDOK);
                  dialog.Click(IDCANCEL);
              }),
              oko::kFailure);
    EXPECT_EQ(std::wstring(text.data()), L"");
    LookAt([](const OpenDialog& dialog) {
        EXPECT_EQ(dialog.Text(IDC_TEMPERATURE_BELOW), L"0.7");
        EXPECT_EQ(dialog.Text(IDC_CO2_ABOVE), L"0.50");
        EXPECT_EQ(dialog.Text(IDC_O2_BELOW), L"0.50");
    });
}

TEST_F(ConfigurationDialogTests, EmptyField_KeepsTheChannelsOffTheServerUntilTheNextOk) {
    Start({9});
    const auto readAsks = [&] {
        double value = 0.0;
        TemperatureOf(Device(), 0).GetCurrentTemperature(&value);
        return !server.NewCommands().empty();
    };
    EXPECT_TRUE(readAsks());
    EXPECT_EQ(ShowConfiguration([](const OpenDialog& dialog) {
                  dialog.Type(IDC_TEMPERATURE_BELOW, L"");
                  dialog.Click(IDOK);
                  dialog.Click(IDCANCEL);
              }),
              oko::kFailure);
    EXPECT_FALSE(readAsks());
    Enter({});
    server.NewCommands();
    EXPECT_TRUE(readAsks());
}

TEST_F(ConfigurationDialogTests, HumidityThatTheHostSwitchedOff_LetsTheDialogOnlyBeCancelled) {
    Start({9, 12, 15});
    HumidifierOf(Device(), 0).SetEnabled(0);
    EXPECT_EQ(ShowConfiguration([](const OpenDialog& dialog) {
                  for (const int id : {IDC_HUMIDITY_BELOW, IDC_HUMIDITY_ABOVE}) {
                      EXPECT_FALSE(dialog.IsEnabled(id)) << id;
                      EXPECT_EQ(dialog.Text(id), L"") << id;
                  }
                  dialog.Click(IDOK);
                  dialog.Settle();
                  EXPECT_TRUE(dialog.IsOpen());
                  dialog.Click(IDCANCEL);
              }),
              oko::kFailure);
}

TEST_F(ConfigurationDialogTests, Numbers_AreReadUpToWhatIsNone) {
    Start({9, 12, 15});
    const std::wstring longNumber = std::wstring(254, L'0') + L"12";  // one character more than is read
    EXPECT_EQ(Enter({{IDC_TEMPERATURE_BELOW, L"abc"},
                     {IDC_TEMPERATURE_ABOVE, L"0,7"},
                     {IDC_CO2_BELOW, L" 1.5x"},
                     {IDC_CO2_ABOVE, L"-2"},
                     {IDC_O2_BELOW, L"1e1"},
                     {IDC_O2_ABOVE, longNumber},
                     {IDC_HUMIDITY_BELOW, L"."},
                     {IDC_HUMIDITY_ABOVE, L"\u0661"}}),
              L"dIncubatorBelow 0.000000 | dIncubatorAbove 0.000000 | dCO2Below 1.500000 | dCO2Above -2.000000 | "
              L"dO2Below 10.000000 | dO2Above 1.000000 | dHumidityBelow 0.000000 | dHumidityAbove 0.000000");
}

TEST_F(ConfigurationDialogTests, OtherNotificationCodesAndIds_AreLeftAlone) {
    Start({9});
    LookAt([](const OpenDialog& dialog) {
        for (const int id : {static_cast<int>(IDOK), static_cast<int>(IDCANCEL), IDC_SHOW_STATUS}) {
            dialog.Command(id, BN_DBLCLK);
            dialog.Command(id, EN_CHANGE >> 8);
        }
        dialog.Command(8, 0);
        dialog.Command(IDC_FIND_AND_CONNECT, 0);
        dialog.Settle();
        EXPECT_TRUE(dialog.IsOpen());
        EXPECT_TRUE(dialog.IsShown(IDC_SHOW_STATUS));
    });
    EXPECT_TRUE(server.NewCommands().empty());
}

TEST_F(ConfigurationDialogTests, AirModeSwitchedOn_IsWrittenAndCalledBack) {
    server.Answer("bl-param-read 11 237", "0");
    Start({11}, "31 237 238 259");
    const auto switchOn = [this](const char* reported) {
        EXPECT_EQ(ShowConfiguration([&](const OpenDialog& dialog) {
                      EXPECT_FALSE(dialog.IsChecked(IDC_AIR_MODE));
                      dialog.Click(IDC_AIR_MODE);
                      EXPECT_TRUE(dialog.IsChecked(IDC_AIR_MODE));
                      server.Answer("bl-param-read 11 237", reported);
                      dialog.Click(IDOK);
                  }),
                  oko::kSuccess);
        const std::vector<std::string> commands = server.NewCommands();
        EXPECT_EQ(std::ranges::count(commands, "bl-param-write 11 238 1"), 1);
        return HostRecord::Current().airModeChanges;
    };
    // It ends as the server reports it, whatever the box said.
    EXPECT_EQ(switchOn("0"), 0);
    EXPECT_EQ(switchOn("1"), 1);

    EXPECT_EQ(ShowConfiguration([&](const OpenDialog& dialog) {
                  EXPECT_TRUE(dialog.IsChecked(IDC_AIR_MODE));
                  dialog.Click(IDC_AIR_MODE);
                  server.Answer("bl-param-read 11 237", "0");
                  dialog.Click(IDOK);
              }),
              oko::kSuccess);
    EXPECT_EQ(std::ranges::count(server.NewCommands(), "bl-param-write 11 238 0"), 1);
    EXPECT_EQ(HostRecord::Current().airModeChanges, 2);
}

TEST_F(ConfigurationDialogTests, AirModeWithoutItsParameter_IsNotWritten) {
    Start({12}, "31 237 239");
    Enter({});
    EXPECT_EQ(server.NewCommands(),
              (std::vector<std::string>{"bl-param-read 12 237", "alarm 0 0.2", "alarm 12 0.50", "alarm 12 0.50"}));
}

TEST_F(ConfigurationDialogTests, DialogWithoutADevice_EndsAsCancelled) {
    Start({9});
    DLGPROC procedure = nullptr;
    LookAt([&](const OpenDialog& dialog) {
        procedure = reinterpret_cast<DLGPROC>(GetWindowLongPtrW(dialog.Window(), DWLP_DLGPROC));
    });
    ASSERT_NE(procedure, nullptr);
    EXPECT_EQ(DialogBoxParamW(GetModuleHandleW(L"OkoLabBoldLine.dll"), L"INCUBATOR_CONFIGURATION", parent.Get(),
                              procedure, 0),
              2);
}

}  // namespace
