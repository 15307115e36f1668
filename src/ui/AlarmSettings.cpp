#include "ui/AlarmSettings.h"

#include <array>

#include "base/Scan.h"

AlarmSettings ParseAlarmSettings(std::wstring_view text) noexcept {
    struct Field {
        std::string_view literal;
        double* value;
    };
    AlarmSettings settings;
    const std::array<Field, 8> fields{{
        {"dIncubatorBelow ", &settings.incubator.below},
        {" | dIncubatorAbove ", &settings.incubator.above},
        {" | dCO2Below ", &settings.co2.below},
        {" | dCO2Above ", &settings.co2.above},
        {" | dO2Below ", &settings.o2.below},
        {" | dO2Above ", &settings.o2.above},
        {" | dHumidityBelow ", &settings.humidity.below},
        {" | dHumidityAbove ", &settings.humidity.above},
    }};
    Scanner scanner(text);
    for (const Field& field : fields) {
        if (!scanner.Literal(field.literal) || !scanner.Double(*field.value)) {
            break;
        }
    }
    return settings;
}
