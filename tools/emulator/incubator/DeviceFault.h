#pragma once

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace emulator {

/// What goes wrong with the device itself, in words: "freeze 9 0 for 30". The same words stand in a scenario's events,
/// in the effect of a fault rule and in the remote control.

/// The words cannot be understood, or name what the incubator does not have; the text says why.
class DeviceFaultError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

struct DeviceFault {
    enum class Kind {
        RefuseTarget,  // a new target is refused
        IgnoreTarget,  // a new target is said to be taken, and is not
        Freeze,        // the reading stays
        Drift,         // the reading goes away from the value
        Spike,         // some readings are far off
        StuckOn,       // the value goes to its highest, whatever the target
        StuckOff,      // the value goes to the ambient's
        BottleEmpty,   // the same, of a gas
        DoorOpen,      // the same, fast
        Unplug,        // the product is not there
        Restart        // the server is not there, and forgets
    };
    Kind kind = Kind::Freeze;
    std::optional<int> product;     // nothing: every one
    std::optional<int> device;      // nothing: every one
    double amount = 0.0;            // of a drift: units a minute; of a spike: units
    int every = 0;                  // of spikes: one in so many readings
    std::optional<double> seconds;  // of the incubator's time; nothing: until somebody ends it

    bool operator==(const DeviceFault&) const = default;

    /// Whether it is this fault of this device.
    bool IsFor(Kind wanted, int ofProduct, int ofDevice) const {
        return kind == wanted && product.value_or(ofProduct) == ofProduct && device.value_or(ofDevice) == ofDevice;
    }
};

/// The words of a fault.
struct DeviceFaultWord {
    enum class Who { Device, Product, ProductOrAll, Server };
    std::string_view word;
    DeviceFault::Kind kind;
    Who who;
    std::string_view numbers;  // what may stand behind the device
    std::string_view description;
};

inline constexpr std::array<DeviceFaultWord, 11> kDeviceFaultWords{{
    {"refuse-target", DeviceFault::Kind::RefuseTarget, DeviceFaultWord::Who::Device, "",
     "a new target is refused, with code 3"},
    {"ignore-target", DeviceFault::Kind::IgnoreTarget, DeviceFaultWord::Who::Device, "",
     "a new target is said to be taken, and is not"},
    {"freeze", DeviceFault::Kind::Freeze, DeviceFaultWord::Who::Device, "", "the reading stays as it is"},
    {"drift", DeviceFault::Kind::Drift, DeviceFaultWord::Who::Device, "UNITS",
     "the reading goes away from the value, by so many units a minute"},
    {"spike", DeviceFault::Kind::Spike, DeviceFaultWord::Who::Device, "SIZE [EVERY]",
     "one in EVERY readings (10 when left out) is off by SIZE"},
    {"stuck-on", DeviceFault::Kind::StuckOn, DeviceFaultWord::Who::Device, "",
     "the value goes to its highest, whatever the target"},
    {"stuck-off", DeviceFault::Kind::StuckOff, DeviceFaultWord::Who::Device, "",
     "the value goes to the ambient's, whatever the target"},
    {"bottle-empty", DeviceFault::Kind::BottleEmpty, DeviceFaultWord::Who::Device, "",
     "the same, of a gas (products 10 to 13)"},
    {"door-open", DeviceFault::Kind::DoorOpen, DeviceFaultWord::Who::ProductOrAll, "",
     "every value, or the product's, goes to the ambient's ten times as fast"},
    {"unplug", DeviceFault::Kind::Unplug, DeviceFaultWord::Who::Product, "",
     "the product is not there; its values go on, its targets are kept"},
    {"restart", DeviceFault::Kind::Restart, DeviceFaultWord::Who::Server, "",
     "the server is away, for 5 s when no time is given; it forgets its COM ports and a running search"},
}};

constexpr double kRestartSeconds = 5.0;
constexpr int kSpikeEvery = 10;
constexpr double kShortestFault = 0.001;  // s
constexpr double kLargestAmount = 1e6;    // of a drift and a spike

/// "freeze PRODUCT DEVICE", without the time that may stand behind all of them.
std::string UsageOf(const DeviceFaultWord& word);

/// Whether the text begins with the word of a fault.
bool IsDeviceFault(std::string_view text);

/// Throws DeviceFaultError.
DeviceFault ParseDeviceFault(std::string_view text);

/// The words that give the fault again.
std::string FormatDeviceFault(const DeviceFault& fault);

}  // namespace emulator
