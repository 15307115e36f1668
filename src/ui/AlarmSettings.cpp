#include "ui/AlarmSettings.h"

#include <array>

#include "base/Scan.h"

namespace {

/// One pair of the text: what stands before its number, and where the number belongs.
struct Field {
    std::string_view literal;
    Tolerance AlarmSettings::* tolerance;
    double Tolerance::* value;
};

constexpr std::array<Field, 8> kFields{{
    {"dIncubatorBelow ", &AlarmSettings::incubator, &Tolerance::below},
    {" | dIncubatorAbove ", &AlarmSettings::incubator, &Tolerance::above},
    {" | dCO2Below ", &AlarmSettings::co2, &Tolerance::below},
    {" | dCO2Above ", &AlarmSettings::co2, &Tolerance::above},
    {" | dO2Below ", &AlarmSettings::o2, &Tolerance::below},
    {" | dO2Above ", &AlarmSettings::o2, &Tolerance::above},
    {" | dHumidityBelow ", &AlarmSettings::humidity, &Tolerance::below},
    {" | dHumidityAbove ", &AlarmSettings::humidity, &Tolerance::above},
}};

constexpr int kDecimals = 6;

}  // namespace

AlarmSettings ParseAlarmSettings(std::wstring_view text) noexcept {
    AlarmSettings settings;
    Scanner scanner(text);
    for (const Field& field : kFields) {
        if (!scanner.Literal(field.literal) || !scanner.Double(settings.*field.tolerance.*field.value)) {
            break;
        }
    }
    return settings;
}

AlarmSettingsText FormatAlarmSettings(const AlarmSettings& settings) noexcept {
    AlarmSettingsText text;
    for (const Field& field : kFields) {
        const NumberText number = FormatFixed(settings.*field.tolerance.*field.value, kDecimals);
        text.AppendBytes(field.literal).AppendBytes(number.view());
    }
    return text;
}
