// A device from its making to its end.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "check/Check.h"
#include "check/Incubator.h"
#include "check/Trial.h"
#include "check/Watched.h"
#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "platform/Crashes.h"

namespace check {

namespace {

constexpr std::array<std::uint32_t, 2> kDevices{oko::kRealDevice, oko::kSimulatorDevice};

void ExpectNothingRead(const std::string& what, const CheckedRead& read) {
    Expect(read.result == oko::kFailure && !read.value, what, "-1 and nothing", ReadText(read));
}

/// One of each kind, live or not.
std::vector<WatchedChannel> OneOfEach(const WatchedDevice& device) {
    return {device.Temperature(0), device.Gas(0), device.Humidity(0)};
}

void ExpectCounts(const std::string& when, const WatchedDevice& device, std::int32_t temperatures, std::int32_t gases,
                  std::int32_t humidities) {
    ExpectEqual("GetTemperatureCount " + when, temperatures, device.TemperatureCount());
    ExpectEqual("GetGasConcentrationCount " + when, gases, device.GasCount());
    ExpectEqual("GetHumidifierCount " + when, humidities, device.HumidityCount());
}

void FreshCounts(Trial& trial) {
    for (const std::uint32_t index : kDevices) {
        ExpectCounts("before Init", WatchedDevice(trial, index), oko::kTemperatureChannels, oko::kGasChannels,
                     oko::kHumidityChannels);
    }
}

void ChannelsInBounds(Trial& trial) {
    for (const std::uint32_t index : kDevices) {
        const WatchedDevice device(trial, index);
        std::set<void*> addresses;
        const auto add = [&](std::uint32_t bound, auto get) {
            for (std::uint32_t i = 0; i < bound; ++i) {
                addresses.insert((device.*get)(i).Address());
            }
        };
        add(oko::kTemperatureChannels, &WatchedDevice::Temperature);
        add(oko::kGasChannels, &WatchedDevice::Gas);
        add(oko::kHumidityChannels, &WatchedDevice::Humidity);
        ExpectEqual("different channel objects",
                    std::size_t{oko::kTemperatureChannels + oko::kGasChannels + oko::kHumidityChannels},
                    addresses.size());
    }
}

void ChannelsOutOfBounds(Trial& trial) {
    const WatchedDevice device(trial, oko::kRealDevice);
    constexpr std::uint32_t kLast = 0xFFFF'FFFF;
    const auto expect = [](const char* call, const std::optional<WatchedChannel>& channel) {
        Expect(!channel, call, "that the pointer stays as it was", "a channel");
    };
    for (const std::uint32_t index : {oko::kTemperatureChannels, kLast}) {
        expect("GetTemperature", device.FindTemperature(index));
    }
    for (const std::uint32_t index : {oko::kGasChannels, kLast}) {
        expect("GetGasConcentration", device.FindGas(index));
        expect("GetHumidifier", device.FindHumidity(index));
    }
}

void UnusedSlots(Trial& trial) {
    for (const std::uint32_t index : kDevices) {
        const WatchedDevice device(trial, index);
        Expect(!device.Unused2(), "Unused2", "false", "true");
        ExpectDone("Unused8", device.Unused8());
    }
}

void CloseBeforeInit(Trial& trial) {
    for (const std::uint32_t index : kDevices) {
        const WatchedDevice device(trial, index);
        device.Close();
        ExpectDone("ApplyConnection", device.ApplyConnection(L"m_iComPort 3"));
        device.Close();
        device.Close();
    }
}

void ReadsWithoutALink(Trial& trial) {
    const WatchedDevice device(trial, oko::kRealDevice);
    for (const WatchedChannel& channel : OneOfEach(device)) {
        ExpectNothingRead(channel.CurrentName() + " without a link", channel.Current());
    }
    ExpectCommands("reads without a link", {}, trial.Commands());
}

void InitWithoutALink(Trial& trial) {
    const WatchedDevice device(trial, oko::kRealDevice);
    ExpectRefused("Init without ApplyConnection", device.Init());
    ExpectCounts("after an Init that failed", device, 0, 0, 0);
}

void InitTwice(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    void* const zone = device.Temperature(0).Address();
    ExpectDone("Init again", device.Init());
    ExpectCounts("after Init again", device, 4, 2, 1);
    Expect(device.Temperature(0).Address() == zone, "GetTemperature(0)", "the same object", "another one");
    const CheckedRead read = device.Temperature(0).Current();
    Expect(read.value == incubator::kZone, "GetCurrentTemperature(0)", "0 and 36.412", ReadText(read));
}

void WholeLifeAgain(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    void* const gas = device.Gas(0).Address();
    for (int i = 0; i < 2; ++i) {
        device.Close();
        ExpectDone("ApplyConnection", device.ApplyConnection(L"m_iComPort 3"));
        ExpectDone("Init", device.Init());
        ExpectDone("ApplyConfiguration", device.ApplyConfiguration(L""));
        ExpectCounts("in another life", device, 4, 2, 1);
        Expect(device.Gas(0).Address() == gas, "GetGasConcentration(0)", "the same object", "another one");
        const CheckedRead read = device.Gas(0).Current();
        Expect(read.value == incubator::kCo2, "GetCurrentGasConcentration(0)", "0 and 4.321", ReadText(read));
    }
}

void CloseTellsTheServer(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    device.Close();
    ExpectCommands("Close", {"start 0", "connect 9 0", "connect 12 0", "connect 15 0"}, trial.Commands());
    device.Close();
    ExpectCommands("Close again, whose link is closed", {}, trial.Commands());
}

void NothingAfterClose(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    for (const WatchedChannel& channel : OneOfEach(device)) {
        channel.Current();
        channel.Target();
    }
    device.Close();
    trial.Commands();
    for (const WatchedChannel& channel : OneOfEach(device)) {
        ExpectNothingRead(channel.CurrentName() + " after Close", channel.Current());
        ExpectNothingRead(channel.TargetName() + " after Close", channel.Target());
        ExpectRefused(channel.SetName(60.0) + " after Close", channel.SetTarget(60.0));
    }
    ExpectCommands("channels after Close", {}, trial.Commands());
}

void BothDevices(Trial& trial) {
    const WatchedDevice incubator = StartIncubator(trial);
    const WatchedDevice simulator = StartSimulator(trial);
    simulator.Temperature(0).Current();
    simulator.Temperature(0).SetTarget(33.0);
    ExpectCommands("the simulator's channels", {}, trial.Commands());
    const CheckedRead target = incubator.Temperature(0).Target();
    Expect(target.value == incubator::kZoneTarget, "GetTargetTemperature(0) of the incubator", "0 and 37.125",
           ReadText(target));
    simulator.Close();
    const CheckedRead current = incubator.Temperature(0).Current();
    Expect(current.value == incubator::kZone, "GetCurrentTemperature(0) of the incubator", "0 and 36.412",
           ReadText(current));
}

void Configuration(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    ExpectDone("ApplyConfiguration",
               device.ApplyConfiguration(
                   L"dIncubatorBelow 0.700000 | dIncubatorAbove 0.900000 | dCO2Below 0.410000 | dCO2Above 0.350000 | "
                   L"dO2Below 0.610000 | dO2Above 0.620000 | dHumidityBelow 3.000000 | dHumidityAbove 4.000000"));
    std::vector<std::string> alarms;
    for (const std::string& command : trial.Commands()) {
        if (command.starts_with("alarm")) {
            alarms.push_back(command);
        }
    }
    ExpectCommands("ApplyConfiguration", {"alarm 9 0.7", "alarm 12 0.35", "alarm 12 0.61"}, alarms);
    const auto expect = [](const WatchedChannel& channel, double below, double above) {
        const auto got = channel.Tolerance();
        Expect(got == std::pair(below, above), "GetTolerance(" + std::to_string(channel.Index()) + ")",
               std::to_string(below) + " and " + std::to_string(above),
               std::to_string(got.first) + " and " + std::to_string(got.second));
    };
    expect(device.Temperature(0), 0.7, 0.9);
    expect(device.Gas(0), 0.41, 0.35);
    expect(device.Gas(1), 0.61, 0.62);
    expect(device.Humidity(0), 3.0, 4.0);
}

void ConfigurationThatBreaksOff(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    struct Case {
        const wchar_t* text;
        double below;
        double above;
    };
    for (const Case& row : {Case{L"", 0.2, 0.2}, Case{L"dIncubatorBelow 0.7 | rubbish", 0.7, 0.2},
                            Case{L"rubbish", 0.2, 0.2}, Case{L"dIncubatorBelow nan", 0.2, 0.2}}) {
        ExpectDone("ApplyConfiguration", device.ApplyConfiguration(row.text));
        const auto got = device.Temperature(0).Tolerance();
        Expect(got == std::pair(row.below, row.above), "GetTolerance(0)",
               std::to_string(row.below) + " and " + std::to_string(row.above),
               std::to_string(got.first) + " and " + std::to_string(got.second));
    }
}

void NoConfiguration(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const std::vector<WatchedChannel> channels = OneOfEach(device);
    for (const WatchedChannel& channel : channels) {
        channel.Current();
    }
    ExpectRefused("ApplyConfiguration(null)", device.ApplyConfiguration(nullptr));
    trial.Commands();
    for (const WatchedChannel& channel : channels) {
        ExpectDone(channel.CurrentName() + " while the device is busy", channel.Current().result);
    }
    ExpectCommands("reads while the device is busy", {"readcurval 15(0)"}, trial.Commands());
    ExpectDone("ApplyConfiguration", device.ApplyConfiguration(L""));
    trial.Commands();
    channels.front().Current();
    ExpectCommands("a read once it is free", {"readcurval 9"}, trial.Commands());
}

void ConnectionTexts(Trial& trial) {
    const WatchedDevice device(trial, oko::kRealDevice);
    struct Case {
        const wchar_t* text;
        const char* command;
    };
    // What the server has for a port comes back in the course of each Init.
    trial.Rules({"comport 9 0; always; value"});
    for (const Case& row :
         {Case{L"m_iComPort 7", "comport 9 0 7"}, Case{L"", "comport 9 0 7"}, Case{L"rubbish", "comport 9 0 7"},
          Case{nullptr, "comport 9 0 7"}, Case{L"m_iComPort 11", "comport 9 0 11"}}) {
        ExpectDone("ApplyConnection", device.ApplyConnection(row.text));
        ExpectDone("Init", device.Init());
        const std::vector<std::string> commands = trial.Commands();
        Expect(std::ranges::find(commands, row.command) != commands.end(), "Init",
               std::string("\"") + row.command + "\"", "no such command");
        device.Close();
    }
}

/// A window that a user would have to close is closed for him.
void Dialogs(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    constexpr wchar_t kFill = L'#';
    std::array<wchar_t, oko::kConfigurationTextLength> text{};
    text.fill(kFill);
    const auto expectUntouched = [&](const char* call) {
        Expect(std::ranges::all_of(text, [](wchar_t c) { return c == kFill; }), call, "that nothing is written",
               "something");
    };
    ExpectRefused("ShowConfiguration, cancelled",
                  device.ShowConfiguration(text.data(), static_cast<std::int32_t>(text.size())));
    expectUntouched("ShowConfiguration, cancelled");
    ExpectRefused("ShowConfiguration(null)", device.ShowConfiguration(nullptr, 0));
    ExpectRefused("ShowConnection(null)", device.ShowConnection(nullptr, 0));
    const std::int32_t shown = device.ShowConnection(text.data(), 0);
    Expect(shown == oko::kSuccess || shown == oko::kFailure, "ShowConnection, closed", "0 or -1",
           std::to_string(shown));
    expectUntouched("ShowConnection, closed");
}

void ValuePanel(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    oko::DialogProcedure procedure = nullptr;
    device.CreateValuePanel(&procedure);
    Expect(procedure != nullptr, "CreateValuePanel", "the panel's procedure", "null");
    device.CreateValuePanel(nullptr);
}

void ManyLives(Trial& trial) {
    const WatchedDevice device = StartIncubator(trial);
    const auto live = [&](int times) {
        for (int i = 0; i < times; ++i) {
            device.Close();
            ExpectDone("ApplyConnection", device.ApplyConnection(L"m_iComPort 3"));
            ExpectDone("Init", device.Init());
        }
    };
    constexpr int kWarmUp = 5;
    constexpr int kLives = 40;
    constexpr std::size_t kStray = kLives / 4;  // the system's own come and go
    live(kWarmUp);
    const std::optional<std::size_t> before = OpenHandles();
    live(kLives);
    const std::optional<std::size_t> after = OpenHandles();
    if (!before || !after) {
        throw CheckSkipped("the system does not tell how many handles are open");
    }
    Expect(*after <= *before + kStray, "handles after " + std::to_string(kLives) + " lives",
           "about " + std::to_string(*before), std::to_string(*after));
}

constexpr std::array<Check, 19> kLifeChecks{{
    {"life/fresh-counts", "both", Needs::Nothing, {}, FreshCounts, "Before the first Init the counts are 16, 4 and 4."},
    {"life/channels",
     "both",
     Needs::Nothing,
     {},
     ChannelsInBounds,
     "Every index below the bounds has a channel of its own."},
    {"life/no-channel",
     "incubator",
     Needs::Nothing,
     {},
     ChannelsOutOfBounds,
     "An index at or above the bound gives 0, and the pointer stays as it was."},
    {"life/unused-slots", "both", Needs::Nothing, {}, UnusedSlots, "The unused slots give false and 0."},
    {"life/close-before-init", "both", Needs::Nothing, {}, CloseBeforeInit, "Close is harmless without an Init."},
    {"life/read-without-link",
     "incubator",
     Needs::Nothing,
     {},
     ReadsWithoutALink,
     "Without a link a read gives -1 and writes nothing."},
    {"life/init-without-link",
     "incubator",
     Needs::NoServer,
     {},
     InitWithoutALink,
     "Without a link Init fails, and there are no channels.",
     true},
    {"life/init-twice",
     "incubator",
     Needs::Nothing,
     {},
     InitTwice,
     "Init may be repeated without Close; the channels are the same objects."},
    {"life/again",
     "incubator",
     Needs::Nothing,
     {},
     WholeLifeAgain,
     "The whole order may be gone through again after Close, with the same objects."},
    {"life/close",
     "incubator",
     Needs::Nothing,
     {},
     CloseTellsTheServer,
     "Close stops and releases each product once, and is harmless when repeated."},
    {"life/after-close",
     "incubator",
     Needs::Nothing,
     {},
     NothingAfterClose,
     "After Close reads and new targets give -1, and nothing is sent."},
    {"life/both-devices", "both", Needs::Nothing, {}, BothDevices, "The two devices live side by side and do not mix."},
    {"life/configuration",
     "incubator",
     Needs::Nothing,
     {},
     Configuration,
     "The settings' tolerances are stored in the channels, and the narrower ones are sent."},
    {"life/configuration-broken",
     "incubator",
     Needs::Nothing,
     {},
     ConfigurationThatBreaksOff,
     "What a settings text lacks takes its default, and the result is 0."},
    {"life/no-configuration",
     "incubator",
     Needs::Nothing,
     {},
     NoConfiguration,
     "ApplyConfiguration with null gives -1 and leaves the device busy until a text comes."},
    {"life/connection-texts",
     "incubator",
     Needs::Nothing,
     {},
     ConnectionTexts,
     "The port of the connection text is sent; a text without one keeps the port."},
    {"life/dialogs",
     "incubator",
     Needs::Windows,
     {},
     Dialogs,
     "A dialog that is cancelled, and a null text, write nothing.",
     true},
    {"life/value-panel", "incubator", Needs::Windows, {}, ValuePanel, "The value panel's procedure is handed out."},
    {"life/handles", "incubator", Needs::Nothing, {}, ManyLives, "Forty lives leave no handles behind."},
}};

}  // namespace

std::span<const Check> LifeChecks() { return kLifeChecks; }

}  // namespace check
