#include "device/TargetSetting.h"

#include <cstddef>
#include <string>
#include <string_view>

#include "text/Number.h"
#include "text/Parsed.h"

Parsed<TargetSetting> ParseTargetSetting(std::string_view text) {
    const std::size_t equals = text.rfind('=');  // a name may hold one
    if (equals == std::string_view::npos || equals == 0) {
        return Parsed<TargetSetting>::Error("\"" + std::string(text) + "\" is not of the form NAME=VALUE");
    }
    const Parsed<double> value = ParseNumber(text.substr(equals + 1));
    if (!value) {
        return Parsed<TargetSetting>::Error(value.error);
    }
    return Parsed<TargetSetting>::Of({std::string(text.substr(0, equals)), *value});
}
