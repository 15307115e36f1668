#include "ui/AlarmSettings.h"

#include <array>
#include <string_view>

#include "base/Numbers.h"
#include "base/Scan.h"
#include "oko/Settings.h"

namespace {

/// One pair of the text: its key, and where its number belongs.
struct Field {
    const wchar_t* key;
    Tolerance AlarmSettings::* tolerance;
    double Tolerance::* value;
};

constexpr std::array<Field, 8> kFields{{
    {oko::kIncubatorBelowKey, &AlarmSettings::incubator, &Tolerance::below},
    {oko::kIncubatorAboveKey, &AlarmSettings::incubator, &Tolerance::above},
    {oko::kCo2BelowKey, &AlarmSettings::co2, &Tolerance::below},
    {oko::kCo2AboveKey, &AlarmSettings::co2, &Tolerance::above},
    {oko::kO2BelowKey, &AlarmSettings::o2, &Tolerance::below},
    {oko::kO2AboveKey, &AlarmSettings::o2, &Tolerance::above},
    {oko::kHumidityBelowKey, &AlarmSettings::humidity, &Tolerance::below},
    {oko::kHumidityAboveKey, &AlarmSettings::humidity, &Tolerance::above},
}};

constexpr int kDecimals = 6;

/// What stands before a pair.
const wchar_t* SeparatorBefore(const Field& field) noexcept {
    return &field == kFields.data() ? L"" : oko::kAlarmSeparator;
}

}  // namespace

AlarmSettings ParseAlarmSettings(std::wstring_view text) noexcept {
    AlarmSettings settings;
    Scanner scanner(text);
    for (const Field& field : kFields) {
        scanner.Literal(SeparatorBefore(field));
        scanner.Literal(field.key);
        scanner.Literal(" ");
        if (!scanner.Double(settings.*field.tolerance.*field.value)) {
            break;
        }
    }
    return settings;
}

AlarmSettingsText FormatAlarmSettings(const AlarmSettings& settings) noexcept {
    AlarmSettingsText text;
    for (const Field& field : kFields) {
        text.Append(SeparatorBefore(field)).Append(field.key).Append(L" ");
        text.AppendBytes(FormatFixed(settings.*field.tolerance.*field.value, kDecimals).view());
    }
    return text;
}
