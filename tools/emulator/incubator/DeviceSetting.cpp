#include "incubator/DeviceSetting.h"

#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "incubator/Motion.h"
#include "incubator/Scenario.h"
#include "text/Number.h"
#include "text/Words.h"

namespace emulator {

namespace {

double NumberOf(std::string_view what, std::string_view value) {
    const auto number = ParseNumber(value);
    if (!number) {
        throw SettingError(std::string(what) + ": " + number.error);
    }
    if (std::abs(*number) > kLargestValue) {
        throw SettingError(std::string(what) + " must not be beyond " + FormatPlain(kLargestValue));
    }
    return *number;
}

int WholeOf(std::string_view text) {
    const auto number = ReadExactly<int>(text);
    if (!number) {
        throw SettingError(InQuotes(text) + " is no number of a product or a device");
    }
    return *number;
}

}  // namespace

SetAction ParseSetAction(std::string_view text) {
    constexpr std::size_t kFewestWords = 4;
    const std::vector<std::string_view> words = SplitWords(text);
    if (words.size() < kFewestWords || words.front() != "set") {
        throw SettingError(InQuotes(text) + " is not of the form set PRODUCT DEVICE WHAT VALUE");
    }
    // An error's text may have blanks, and be empty.
    const std::size_t behind = static_cast<std::size_t>(words[3].data() + words[3].size() - text.data());
    return {WholeOf(words[1]), WholeOf(words[2]), std::string(words[3]), std::string(TrimBlanks(text.substr(behind)))};
}

void SetDevice(DeviceScenario& device, Motion& motion, std::string_view what, std::string_view value) {
    if (what == "error") {
        device.error = value;
        return;
    }
    if (what != "value" && what != "target" && what != "noise") {
        throw SettingError(InQuotes(what) + " cannot be set; there are " + std::string(kSettingWords));
    }
    const double number = NumberOf(what, value);
    if (what == "value") {
        motion = {number, 0.0};
    } else if (what == "target") {
        if (!(number >= device.min && number <= device.max)) {
            throw SettingError("a target of " + FormatPlain(number) + " is out of range: " + FormatPlain(device.min) +
                               " to " + FormatPlain(device.max));
        }
        device.target = number;
    } else if (number < 0.0) {
        throw SettingError("noise must not be negative");
    } else {
        device.noise = number;
    }
}

}  // namespace emulator
