#include "ui/AlarmSettings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cwchar>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr const wchar_t* kDefaults =
    L"dIncubatorBelow 0.200000 | dIncubatorAbove 0.200000 | dCO2Below 0.500000 | dCO2Above 0.500000 | "
    L"dO2Below 0.500000 | dO2Above 0.500000 | dHumidityBelow 1.000000 | dHumidityAbove 1.000000";

std::vector<double> Values(const AlarmSettings& settings) {
    return {settings.incubator.below, settings.incubator.above, settings.co2.below,      settings.co2.above,
            settings.o2.below,        settings.o2.above,        settings.humidity.below, settings.humidity.above};
}

const std::vector<double> kDefaultValues{0.2, 0.2, 0.5, 0.5, 0.5, 0.5, 1.0, 1.0};

TEST(AlarmSettingsTests, Format_Defaults_PrintSixDecimals) { EXPECT_EQ(FormatAlarmSettings({}).view(), kDefaults); }

TEST(AlarmSettingsTests, Format_ThenParse_GivesTheSame) {
    const AlarmSettings settings{{1.25, 2.5}, {0.125, 99.99}, {0.0, 7.0}, {-1.0, 1234567.5}};
    EXPECT_EQ(Values(ParseAlarmSettings(FormatAlarmSettings(settings).view())), Values(settings));
}

TEST(AlarmSettingsTests, Format_LongestNumbers_FitTheHostsBuffer) {
    constexpr double kLongest = -std::numeric_limits<double>::max();
    const AlarmSettings settings{
        {kLongest, kLongest}, {kLongest, kLongest}, {kLongest, kLongest}, {kLongest, kLongest}};
    const AlarmSettingsText text = FormatAlarmSettings(settings);
    EXPECT_FALSE(text.IsCut());
    EXPECT_EQ(Values(ParseAlarmSettings(text.view())), Values(settings));
}

TEST(AlarmSettingsTests, Format_NoNumbers_DoNotBreakTheText) {
    AlarmSettings settings;
    settings.co2 = {std::nan(""), std::numeric_limits<double>::infinity()};
    const std::wstring text(FormatAlarmSettings(settings).view());
    EXPECT_NE(text.find(L"dCO2Below nan | dCO2Above inf | dO2Below 0.500000"), std::wstring::npos);
}

TEST(AlarmSettingsTests, Parse_EveryValue_GoesToItsPlace) {
    const auto settings = ParseAlarmSettings(
        L"dIncubatorBelow 1 | dIncubatorAbove 2 | dCO2Below 3 | dCO2Above 4 | dO2Below 5 | dO2Above 6 | "
        L"dHumidityBelow 7 | dHumidityAbove 8");
    EXPECT_EQ(Values(settings), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(AlarmSettingsTests, Parse_TextThatBreaksOff_KeepsTheDefaultsOfTheRest) {
    struct Case {
        const wchar_t* text;
        std::size_t taken;  // values 1, 2, 3, ...
    };
    const std::vector<Case> cases{
        {L"", 0},
        {L"nonsense", 0},
        {L"dIncubatorBelow", 0},
        {L"dIncubatorBelow x", 0},
        {L"dIncubatorAbove 2", 0},  // the order is fixed
        {L"dincubatorbelow 1", 0},  // and so is the case
        {L"dIncubatorBelow 1", 1},
        {L"dIncubatorBelow 1 |", 1},
        {L"dIncubatorBelow 1 ; dIncubatorAbove 2", 1},
        {L"dIncubatorBelow 1 | dIncubatorAbove 2", 2},
        {L"dIncubatorBelow 1 | dIncubatorAbove 2 | dCO2Below 3 | dCO2Above , | dO2Below 5", 3},
        {L"dIncubatorBelow 1,5 | dIncubatorAbove 2", 1},          // a comma ends a number
        {L"dIncubatorBelow 1|dIncubatorAbove 2|dCO2Below 3", 3},  // blanks may be missing
        {L"dIncubatorBelow\t1\n|\r\n dIncubatorAbove   2", 2},    // or be any white space
        {L"dIncubatorBelow1 | dIncubatorAbove2", 2},
        {L"dIncubatorBelow\u30001\u00A0|\u2003\u3000dIncubatorAbove \u20282 \u3000| dCO2Below 3", 3},  // of any script
        {L"dIncubatorBelow 1 | dIncubatorAbove \u200B2", 1},
        {L"dIncubatorBelow nan | dIncubatorAbove 2", 0},  // what is not finite is no number
        {L"dIncubatorBelow 1 | dIncubatorAbove -inf | dCO2Below 3", 1},
        {L"dIncubatorBelow 1 | dIncubatorAbove 2 | dCO2Below 1e999 | dCO2Above 4", 2},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(std::string(row.text, row.text + std::wcslen(row.text)));
        std::vector<double> expected = kDefaultValues;
        for (std::size_t i = 0; i < row.taken; ++i) {
            expected[i] = static_cast<double>(i + 1);
        }
        EXPECT_EQ(Values(ParseAlarmSettings(row.text)), expected);
    }
}

TEST(AlarmSettingsTests, Parse_LeadingBlank_IsAMismatchLikeAnyOtherCharacter) {
    EXPECT_EQ(Values(ParseAlarmSettings(L" dIncubatorBelow 1")), kDefaultValues);
}

TEST(AlarmSettingsTests, Parse_NonAsciiText_IsAMismatch) {
    EXPECT_EQ(Values(ParseAlarmSettings(L"dIncubatorBelow \u0661\u0662 | dIncubatorAbove 2")), kDefaultValues);
}

}  // namespace
