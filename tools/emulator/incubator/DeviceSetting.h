#pragma once

#include <stdexcept>
#include <string_view>

#include "incubator/Motion.h"
#include "incubator/Scenario.h"

namespace emulator {

/// What somebody else than the client changes at a device: a scenario's event, "set 9 0 target 38", or the remote
/// control.

/// It cannot be set; the text says why.
class SettingError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// What can be set: the value itself, its target, the noise of its readings, the error text in their place.
constexpr std::string_view kSettingWords = "value, target, noise and error";

/// Reads "set 9 0 target 38". Throws SettingError.
SetAction ParseSetAction(std::string_view text);

/// Sets it; a target within the limits as a client's. Throws SettingError and changes nothing then.
void SetDevice(DeviceScenario& device, Motion& motion, std::string_view what, std::string_view value);

}  // namespace emulator
