// What each slot of a channel gives where nothing goes wrong.

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "check/Check.h"
#include "check/Incubator.h"
#include "check/Trial.h"
#include "check/Watched.h"
#include "oko/BandState.h"
#include "oko/CDevApiInterface.h"
#include "oko/Result.h"
#include "platform/ThreadMessages.h"
#include "text/Number.h"

namespace check {

namespace {

constexpr std::int32_t kNoFeature = 77;

void ExpectValue(const std::string& what, double expected, const CheckedRead& got) {
    Expect(got.result == oko::kSuccess && got.value == expected, what, "0 and " + FormatShortest(expected),
           ReadText(got));
}

std::string PairText(const std::pair<double, double>& pair) {
    return FormatShortest(pair.first) + " and " + FormatShortest(pair.second);
}

void ExpectPair(const std::string& what, const std::pair<double, double>& expected,
                const std::pair<double, double>& got) {
    Expect(expected == got, what, PairText(expected), PairText(got));
}

void Names(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const std::vector<std::string> expected{"H301-T", "Base", "Room", "Humidifier", "CO2", "O2", "H301-HM-ACTIVE"};
    const std::vector<WatchedChannel> channels = device.Channels();
    ExpectEqual("the live channels", expected.size(), channels.size());
    for (std::size_t i = 0; i < channels.size(); ++i) {
        ExpectText("GetName(" + std::to_string(channels[i].Index()) + ")", expected[i], channels[i].Name());
    }
}

void NamesThatAreCut(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    for (const auto& [channel, name] : {std::pair(device.Temperature(0), "H301-T"), std::pair(device.Gas(0), "CO2"),
                                        std::pair(device.Humidity(0), "H301-HM-ACTIVE")}) {
        for (const std::int32_t length : {0, 1, 3}) {
            ExpectText("GetName(" + std::to_string(length) + ")",
                       std::string(name).substr(0, static_cast<std::size_t>(length)), channel.Name(length));
        }
    }
}

void Currents(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    struct Row {
        WatchedChannel channel;
        double value;
        const char* command;
    };
    for (const Row& row : {Row{device.Temperature(0), incubator::kZone, "readcurval 9"},
                           Row{device.Temperature(1), incubator::kBase, "bl-param-read 9 107"},
                           Row{device.Gas(0), incubator::kCo2, "readcurval 12(0)"},
                           Row{device.Gas(1), incubator::kO2, "readcurval 12(1)"},
                           Row{device.Humidity(0), incubator::kHumidity, "readcurval 15(0)"}}) {
        ExpectValue(row.channel.CurrentName(), row.value, row.channel.Current());
        ExpectCommands(row.channel.CurrentName(), {row.command}, trial.Commands());
    }
}

void Targets(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    struct Row {
        WatchedChannel channel;
        double value;
        std::vector<std::string> commands;
    };
    for (const Row& row : {Row{device.Temperature(0), incubator::kZoneTarget, {"readsetpoint 9 0 -1"}},
                           Row{device.Gas(0), incubator::kCo2Target, {"readsetpoint 12 0 -1"}},
                           Row{device.Gas(1), incubator::kO2Target, {"bl-param-read 12 237", "readsetpoint 12 1 -1"}},
                           Row{device.Humidity(0), incubator::kHumidityTarget, {"readsetpoint 15 0 -1"}}}) {
        ExpectValue(row.channel.TargetName(), row.value, row.channel.Target());
        ExpectCommands(row.channel.TargetName(), row.commands, trial.Commands());
    }
}

void NewTargets(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    struct Row {
        WatchedChannel channel;
        double asked;
        double taken;
        std::vector<std::string> commands;
    };
    for (const Row& row : {Row{device.Temperature(0), 38.26, 38.3, {"writesetpoint 9 0 38.3", "readsetpoint 9 0 -1"}},
                           Row{device.Gas(0), 7.254, 7.25, {"writesetpoint 12 0 7.25"}},
                           Row{device.Gas(1), 3.0, 3.0, {"writesetpoint 12 1 3.00"}},
                           Row{device.Humidity(0), 62.7, 63.0, {"writesetpoint 15 0 63"}}}) {
        ExpectDone(row.channel.SetName(row.asked), row.channel.SetTarget(row.asked));
        ExpectCommands(row.channel.SetName(row.asked), row.commands, trial.Commands());
        ExpectValue(row.channel.TargetName(), row.taken, row.channel.Target());
        trial.Commands();
    }
}

void ClampedTargets(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    struct Row {
        WatchedChannel channel;
        double lowest;
        double highest;
    };
    for (const Row& row : {Row{device.Temperature(0), incubator::kZoneMin, incubator::kZoneMax},
                           Row{device.Gas(0), 0.0, incubator::kCo2Max}, Row{device.Gas(1), incubator::kO2Min, 20.0},
                           Row{device.Humidity(0), incubator::kHumidityMin, incubator::kHumidityMax}}) {
        for (const auto& [asked, taken] :
             {std::pair(1000.0, row.highest), std::pair(-1000.0, row.lowest), std::pair(kInfinite, row.highest),
              std::pair(-kInfinite, row.lowest), std::pair(row.highest, row.highest), std::pair(kNan, row.lowest)}) {
            ExpectDone(row.channel.SetName(asked), row.channel.SetTarget(asked));
            ExpectValue(row.channel.TargetName() + " after " + row.channel.SetName(asked), taken, row.channel.Target());
        }
    }
}

void SensorWithoutTarget(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const WatchedChannel base = device.Temperature(1);
    ExpectRefused(base.SetName(30.0), base.SetTarget(30.0));
    const CheckedRead target = base.Target();
    Expect(target.result == oko::kFailure && !target.value, base.TargetName(), "-1 and nothing", ReadText(target));
    ExpectCommands("a sensor's target", {}, trial.Commands());
}

void Limits(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    for (const auto& [index, expected] :
         {std::pair(0U, std::pair(incubator::kZoneMin, incubator::kZoneMax)), std::pair(1U, std::pair(0.0, 0.0))}) {
        const std::string call = "GetTemperatureLimits(" + std::to_string(index) + ")";
        std::pair<double, double> limits{-1.0, -1.0};
        auto* const channel = device.Temperature(index).AsTemperature();
        ExpectDone(call,
                   trial.Enter(call, [&] { return channel->GetTemperatureLimits(&limits.first, &limits.second); }));
        ExpectPair(call, expected, limits);
    }
}

void StepRateAndNotSupported(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    auto* const channel = device.Temperature(0).AsTemperature();
    double step = 0.0;
    ExpectDone("GetTemperatureStep(0)",
               trial.Enter("GetTemperatureStep(0)", [&] { return channel->GetTemperatureStep(&step); }));
    Expect(step == 0.2, "GetTemperatureStep(0)", "0.2", FormatShortest(step));
    ExpectDone("SetTemperatureRate(0, 1.5)",
               trial.Enter("SetTemperatureRate(0, 1.5)", [&] { return channel->SetTemperatureRate(1.5); }));
    ExpectRefused("NotSupported(0)", trial.Enter("NotSupported(0)", [&] { return channel->NotSupported(); }));
    ExpectCommands("slots that answer from memory", {}, trial.Commands());
}

void Tolerances(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    for (const auto& [channel, first] :
         {std::pair(device.Temperature(0), std::pair(0.2, 0.2)), std::pair(device.Gas(0), std::pair(0.5, 0.5)),
          std::pair(device.Humidity(0), std::pair(0.5, 2.0))}) {
        ExpectPair("GetTolerance at first", first, channel.Tolerance());
        ExpectDone("SetTolerance(1.25, 0.75)", channel.SetTolerance(1.25, 0.75));
        ExpectPair("GetTolerance after SetTolerance(1.25, 0.75)", {1.25, 0.75}, channel.Tolerance());
    }
    ExpectCommands("tolerances", {}, trial.Commands());
}

void States(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const auto expect = [](const WatchedChannel& channel, const char* when, std::uint32_t state) {
        ExpectEqual(std::string("the state of channel ") + std::to_string(channel.Index()) + " " + when, state,
                    channel.State());
    };
    for (const WatchedChannel& channel : {device.Temperature(0), device.Gas(0), device.Humidity(0)}) {
        channel.Current();
        channel.Target();
    }
    trial.Commands();
    const WatchedChannel zone = device.Temperature(0);
    expect(zone, "below its band", oko::kTemperatureBelow);
    zone.SetTolerance(1.0, 1.0);
    expect(zone, "in its band", oko::kTemperatureWithin);
    const WatchedChannel gas = device.Gas(0);
    expect(gas, "out of its band", oko::kOutsideBand);
    gas.SetTolerance(1.0, 1.0);
    expect(gas, "in its band", oko::kWithinBand);
    const WatchedChannel humidity = device.Humidity(0);
    expect(humidity, "out of its band", oko::kOutsideBand);
    humidity.SetTolerance(15.0, 1.0);
    expect(humidity, "in its band", oko::kWithinBand);
    ExpectCommands("states", {}, trial.Commands());
    zone.SetTarget(30.0);
    expect(zone, "above its band", oko::kTemperatureAbove);
}

void Features(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const auto expect = [](const char* what, bool expected, bool got) {
        Expect(expected == got, what, expected ? "true" : "false", got ? "true" : "false");
    };
    expect("a zone, without a set point?", false, device.Temperature(0).HasFeature(oko::kFeatureSensorOnly));
    expect("a sensor, without a set point?", true, device.Temperature(1).HasFeature(oko::kFeatureSensorOnly));
    expect("a sensor, another feature?", false, device.Temperature(1).HasFeature(kNoFeature));
    expect("O2, air mode while it is off?", false, device.Gas(1).HasFeature(oko::kFeatureAirMode));
    for (const std::int32_t feature : {oko::kFeatureAirMode, oko::kFeatureSensorOnly, kNoFeature}) {
        expect("CO2, any feature?", false, device.Gas(0).HasFeature(feature));
        expect("humidity, any feature?", false, device.Humidity(0).HasFeature(feature));
    }
}

void AirMode(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const WatchedChannel oxygen = device.Gas(1);
    trial.Rules({"bl-param-read 12 237; always; value 1"});
    for (int i = 1; i <= 4; ++i) {
        Expect(!oxygen.HasFeature(oko::kFeatureAirMode), "HasFeature(2) before four reads", "false", "true");
        oxygen.Target();
        ExpectEqual("how often the callback told of the air mode, after read " + std::to_string(i),
                    std::size_t{i == 4 ? 1U : 0U}, Trial::TakeHostCalls().airModeChanges);
    }
    Expect(oxygen.HasFeature(oko::kFeatureAirMode), "HasFeature(2) of O2 in air mode", "true", "false");
    Expect(!device.Gas(0).HasFeature(oko::kFeatureAirMode), "HasFeature(2) of CO2", "false", "true");
    oxygen.Target();
    ExpectEqual("how often it is told again", std::size_t{0}, Trial::TakeHostCalls().airModeChanges);
}

void AirModeThatFlickers(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const WatchedChannel oxygen = device.Gas(1);
    trial.Rules({"bl-param-read 12 237; always; value 1"});
    for (int i = 0; i < 3; ++i) {
        oxygen.Target();
    }
    trial.Rules({});
    oxygen.Target();
    trial.Rules({"bl-param-read 12 237; always; value 1"});
    oxygen.Target();
    ExpectEqual("how often the callback told of the air mode", std::size_t{0}, Trial::TakeHostCalls().airModeChanges);
    Expect(!oxygen.HasFeature(oko::kFeatureAirMode), "HasFeature(2)", "false", "true");
}

void Switches(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    for (const WatchedChannel& channel : device.Channels()) {
        ExpectDone("SetEnabled(0)", channel.SetEnabled(0));
        ExpectDone("NoOperation", channel.NoOperation());
    }
    ExpectCommands("SetEnabled and NoOperation", {}, trial.Commands());
    ExpectValue("a channel that is switched off", incubator::kHumidity, device.Humidity(0).Current());
    for (const WatchedChannel& channel : device.Channels()) {
        ExpectDone("SetEnabled(1)", channel.SetEnabled(1));
    }
}

void NullPointers(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    for (const WatchedChannel& channel : {device.Temperature(0), device.Gas(0), device.Humidity(0)}) {
        for (const auto& [call, result] : channel.NullResults()) {
            ExpectRefused(call, result);
        }
    }
    auto* const zone = device.Temperature(0).AsTemperature();
    ExpectRefused("GetTemperatureStep(0, null)",
                  trial.Enter("GetTemperatureStep(0, null)", [&] { return zone->GetTemperatureStep(nullptr); }));
    ExpectRefused("GetTemperatureLimits(0, null)", trial.Enter("GetTemperatureLimits(0, null)", [&] {
        return zone->GetTemperatureLimits(nullptr, nullptr);
    }));
}

void ChangeNotices(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    TakeThreadMessages();
    const auto expect = [](const std::string& what, std::size_t notices) {
        ExpectEqual(what + ", the change notices", notices, TakeThreadMessages());
    };
    device.Gas(0).SetTarget(7.0);
    expect("SetTargetGasConcentration", 1);
    device.Humidity(0).SetTarget(60.0);
    expect("SetTargetHumidity", 1);
    device.Temperature(0).SetTarget(36.0);
    expect("SetTargetTemperature", 0);
    trial.Rules({"writesetpoint*; always; code 3"});
    device.Gas(0).SetTarget(8.0);
    device.Humidity(0).SetTarget(61.0);
    expect("a target that is refused", 0);
}

void Deleted(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const WatchedChannel zone = device.Temperature(0);
    void* const address = zone.Address();
    Expect(zone.Delete() == address, "DeletingDestructor(0, 1)", "the object's address", "another one");
    Expect(!device.FindTemperature(0), "GetTemperature(0) of a channel that was deleted", "no channel", "one");
    ExpectDone("Init", device.Init());
    ExpectValue("GetCurrentTemperature(0) after another Init", incubator::kZone, device.Temperature(0).Current());
}

constexpr std::array<Check, 18> kChannelChecks{{
    {"channel/names", "incubator", Needs::Nothing, {}, Names, "Each live channel has the name of its sensor."},
    {"channel/names-cut",
     "incubator",
     Needs::Nothing,
     {},
     NamesThatAreCut,
     "GetName copies at most so many characters, and no terminator."},
    {"channel/current",
     "incubator",
     Needs::Nothing,
     {},
     Currents,
     "A current value is asked of the server, in the form that its sensor needs, and is what it says."},
    {"channel/target",
     "incubator",
     Needs::Nothing,
     {},
     Targets,
     "A target is asked of the server, and is what it says."},
    {"channel/new-target",
     "incubator",
     Needs::Nothing,
     {},
     NewTargets,
     "A new target is sent once, with the decimals of its kind."},
    {"channel/target-clamped",
     "incubator",
     Needs::Nothing,
     {},
     ClampedTargets,
     "A target out of the range becomes the nearest one in it, NaN the lowest, and the result is 0."},
    {"channel/sensor",
     "incubator",
     Needs::Nothing,
     {},
     SensorWithoutTarget,
     "A sensor has no target: -1, and nothing is sent."},
    {"channel/limits",
     "incubator",
     Needs::Nothing,
     {},
     Limits,
     "A zone's limits are those of the server, a sensor's are 0 and 0."},
    {"channel/step-rate",
     "incubator",
     Needs::Nothing,
     {},
     StepRateAndNotSupported,
     "The step is 0.2, a rate is taken, NotSupported gives -1, and nobody is asked."},
    {"channel/tolerances",
     "incubator",
     Needs::Nothing,
     {},
     Tolerances,
     "Tolerances are kept as they were given, and not sent."},
    {"channel/state",
     "incubator",
     Needs::Nothing,
     {},
     States,
     "A state is where the last known value lies in its band; nobody is asked."},
    {"channel/features",
     "incubator",
     Needs::Nothing,
     {},
     Features,
     "Only sensors are without a set point; no channel has a feature that there is not."},
    {"channel/air-mode",
     "incubator",
     Needs::Nothing,
     {},
     AirMode,
     "A new air mode is believed after four reads of the O2 target in a row, and told once."},
    {"channel/air-mode-flickers",
     "incubator",
     Needs::Nothing,
     {},
     AirModeThatFlickers,
     "An air mode that differs three times and not the fourth is not believed."},
    {"channel/switch",
     "incubator",
     Needs::Nothing,
     {},
     Switches,
     "SetEnabled and NoOperation give 0, and values are read all the same."},
    {"channel/null",
     "incubator",
     Needs::Nothing,
     {},
     NullPointers,
     "A null pointer where something is to be written gives -1."},
    {"channel/change-notice",
     "incubator",
     Needs::Windows,
     {},
     ChangeNotices,
     "A new target of gas or humidity posts one change notice, temperature and a refusal none."},
    {"channel/deleted",
     "incubator",
     Needs::Nothing,
     {},
     Deleted,
     "A channel that the host deleted is gone until the next Init makes a new one."},
}};

}  // namespace

std::span<const Check> ChannelChecks() { return kChannelChecks; }

}  // namespace check
