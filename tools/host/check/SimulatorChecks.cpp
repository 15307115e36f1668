// The simulator, which needs nobody.

#include <array>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "check/Check.h"
#include "check/Trial.h"
#include "check/Watched.h"
#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "platform/Crashes.h"
#include "text/Number.h"

namespace check {

namespace {

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::milliseconds kPause{50};

/// Asks again and again until it is so.
template <class Condition>
bool WaitFor(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    bool holds = condition();
    while (!holds && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kPause);
        holds = condition();
    }
    return holds;
}

double Value(const std::string& what, const CheckedRead& read) {
    const double value = read.value.value_or(std::numeric_limits<double>::quiet_NaN());
    Expect(read.result == oko::kSuccess && std::isfinite(value), what, "0 and a number", ReadText(read));
    return value;
}

void AsksNobody(Trial& trial) {
    const WatchedDevice device = StartSimulator(trial);
    ExpectDone("ApplyConfiguration", device.ApplyConfiguration(L""));
    for (const WatchedChannel& channel : device.Channels()) {
        Value(channel.CurrentName(), channel.Current());
    }
    device.Close();
    ExpectCommands("the simulator's whole life", {}, trial.Commands());
}

void NeedsNoLink(Trial& trial) {
    const WatchedDevice device(trial, oko::kSimulatorDevice);
    ExpectDone("Init without ApplyConnection", device.Init());
    for (const WatchedChannel& channel : device.Channels()) {
        Value(channel.CurrentName(), channel.Current());
    }
    device.Close();
}

void Channels(Trial& trial) {
    const WatchedDevice device = StartSimulator(trial);
    const std::vector<WatchedChannel> channels = device.Channels();
    Expect(!channels.empty(), "the live channels", "some", "none");
    for (const WatchedChannel& channel : channels) {
        Expect(!channel.Name().empty(), "GetName(" + std::to_string(channel.Index()) + ")", "a name", "none");
        Value(channel.CurrentName(), channel.Current());
    }
}

/// The first live channel of gas or humidity, whose values are never still.
WatchedChannel RestlessChannel(const WatchedDevice& device) {
    for (const WatchedChannel& channel : device.Channels()) {
        if (!std::holds_alternative<CDevApiInterface_Temperature*>(channel.Kind())) {
            return channel;
        }
    }
    throw CheckSkipped("the simulator of this computer has neither gas nor humidity");
}

void ExpectMoves(const WatchedChannel& channel, const std::string& when) {
    const double first = Value(channel.CurrentName(), channel.Current());
    Expect(WaitFor([&] { return Value(channel.CurrentName(), channel.Current()) != first; }),
           channel.CurrentName() + when, "another value within some seconds", FormatShortest(first) + " all the time");
}

void ValuesMove(Trial& trial) {
    const WatchedDevice device = StartSimulator(trial);
    ExpectMoves(RestlessChannel(device), "");
}

void ValuesMoveAgain(Trial& trial) {
    const WatchedDevice device = StartSimulator(trial);
    device.Close();
    device.Close();
    ExpectDone("ApplyConnection", device.ApplyConnection(L""));
    ExpectDone("Init", device.Init());
    ExpectMoves(RestlessChannel(device), " in another life");
}

/// The first zone with a set point.
WatchedChannel Zone(const WatchedDevice& device) {
    for (std::int32_t i = 0; i < device.TemperatureCount(); ++i) {
        const WatchedChannel channel = device.Temperature(static_cast<std::uint32_t>(i));
        if (!channel.HasFeature(oko::kFeatureSensorOnly)) {
            return channel;
        }
    }
    throw CheckSkipped("the simulator of this computer has no zone with a set point");
}

void FollowsItsTarget(Trial& trial) {
    const WatchedDevice device = StartSimulator(trial);
    const WatchedChannel zone = Zone(device);
    const double first = Value(zone.CurrentName(), zone.Current());
    const double target = first + 12.0;
    ExpectDone(zone.SetName(target), zone.SetTarget(target));
    const double taken = Value(zone.TargetName(), zone.Target());
    Expect(std::abs(taken - target) < 0.06, zone.TargetName(), FormatShortest(target), FormatShortest(taken));
    constexpr double kClearly = 0.15;  // more than the noise of a reading
    Expect(WaitFor([&] { return Value(zone.CurrentName(), zone.Current()) > first + kClearly; }), zone.CurrentName(),
           "a value that rises to its target", "one that does not");
}

void Clamped(Trial& trial) {
    const WatchedDevice device = StartSimulator(trial);
    const WatchedChannel zone = Zone(device);
    double low = 0.0;
    double high = 0.0;
    const std::string call = "GetTemperatureLimits(" + std::to_string(zone.Index()) + ")";
    ExpectDone(call, trial.Enter(call, [&] { return zone.AsTemperature()->GetTemperatureLimits(&low, &high); }));
    for (const auto& [asked, expected] : {std::pair(1000.0, high), std::pair(-1000.0, low)}) {
        ExpectDone(zone.SetName(asked), zone.SetTarget(asked));
        const double taken = Value(zone.TargetName(), zone.Target());
        Expect(taken == expected, zone.TargetName(), FormatShortest(expected), FormatShortest(taken));
    }
}

void InitTwiceWithoutServer(Trial& trial) {
    const WatchedDevice device = StartSimulator(trial);
    const std::size_t channels = device.Channels().size();
    ExpectDone("Init again", device.Init());
    ExpectEqual("the live channels", channels, device.Channels().size());
    ExpectMoves(RestlessChannel(device), " after Init again");
}

void KeepsItsValues(Trial& trial) {
    const WatchedDevice device = StartSimulator(trial);
    const std::vector<WatchedChannel> channels = device.Channels();
    device.Close();
    std::vector<double> values;
    values.reserve(channels.size());
    for (const WatchedChannel& channel : channels) {
        values.push_back(Value(channel.CurrentName() + " after Close", channel.Current()));
    }
    std::this_thread::sleep_for(3 * kPause);
    for (std::size_t i = 0; i < channels.size(); ++i) {
        ExpectEqual(channels[i].CurrentName() + " after Close, once more", values[i],
                    Value(channels[i].CurrentName(), channels[i].Current()));
    }
}

void NoConnectionDialog(Trial& trial) {
    const WatchedDevice device = StartSimulator(trial);
    std::array<wchar_t, oko::kConnectionTextLength> text{};
    ExpectDone("ShowConnection of the simulator", device.ShowConnection(text.data(), 0));
}

void SomeLives(Trial& trial) {
    const WatchedDevice device = StartSimulator(trial);
    const auto live = [&](int times) {
        for (int i = 0; i < times; ++i) {
            device.Close();
            ExpectDone("Init", device.Init());
        }
    };
    live(3);
    const std::optional<std::size_t> before = OpenHandles();
    constexpr int kLives = 8;
    live(kLives);
    const std::optional<std::size_t> after = OpenHandles();
    if (!before || !after) {
        throw CheckSkipped("the system does not tell how many handles are open");
    }
    Expect(*after < *before + kLives, "handles after " + std::to_string(kLives) + " lives",
           "about " + std::to_string(*before), std::to_string(*after));
}

constexpr std::array<Check, 11> kSimulatorChecks{{
    {"simulator/asks-nobody", "simulator", Needs::Nothing, {}, AsksNobody, "The simulator sends nothing to a server."},
    {"simulator/no-link", "simulator", Needs::Nothing, {}, NeedsNoLink, "The simulator needs no connection."},
    {"simulator/channels",
     "simulator",
     Needs::Nothing,
     {},
     Channels,
     "Each of the simulator's channels has a name and a value."},
    {"simulator/values-move", "simulator", Needs::Nothing, {}, ValuesMove, "The simulated values move from Init on."},
    {"simulator/again",
     "simulator",
     Needs::Nothing,
     {},
     ValuesMoveAgain,
     "After Close, and another one, a new Init moves them again."},
    {"simulator/target",
     "simulator",
     Needs::Nothing,
     {},
     FollowsItsTarget,
     "A new target is read back, and the value goes to it."},
    {"simulator/target-clamped",
     "simulator",
     Needs::Nothing,
     {},
     Clamped,
     "A target out of the limits becomes the nearest one in them."},
    {"simulator/init-twice",
     "simulator",
     Needs::Nothing,
     {},
     InitTwiceWithoutServer,
     "Init may be repeated without Close."},
    {"simulator/after-close",
     "simulator",
     Needs::Nothing,
     {},
     KeepsItsValues,
     "After Close the last values stay, and stand still."},
    {"simulator/connection-dialog",
     "simulator",
     Needs::Nothing,
     {},
     NoConnectionDialog,
     "The simulator has no connection dialog: 0 at once."},
    {"simulator/handles", "simulator", Needs::Nothing, {}, SomeLives, "Some lives leave no handles behind."},
}};

}  // namespace

std::span<const Check> SimulatorChecks() { return kSimulatorChecks; }

}  // namespace check
