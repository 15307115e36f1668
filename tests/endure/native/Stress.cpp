// A careless host: threads of its own on every channel while others initialise, configure, search and close, on both
// devices at once. Built with the thread sanitizer it finds what is shared without a lock.
//   oko-stress SECONDS    prints how many calls there were

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Channels.h"
#include "RegistryNames.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/Dialogs.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/LibQuery.h"
#include "ui/ConfigurationFields.h"
#include "ui/DialogEnd.h"
#include "ui/StatusReport.h"

namespace {

using Clock = std::chrono::steady_clock;

/// A platform's records grow with every call: it is made anew this often, and the devices with it.
constexpr auto kEpisode = std::chrono::milliseconds(700);

constexpr int kChannelThreads = 3;  // a device

std::atomic<std::uint64_t> s_calls = 0;

void CountCall() { s_calls.fetch_add(1, std::memory_order_relaxed); }

/// Reads every line, as a host's log would.
void HostCalls(std::int32_t, const wchar_t* line) {
    std::size_t length = 0;
    while (line != nullptr && line[length] != L'\0') {
        ++length;
    }
    if (length > 511) {
        std::fputs("a line of the log is too long\n", stderr);
        std::abort();
    }
}

/// An incubator whose products come and go, so that the catalogue changes under its readers.
ServerReply Answer(std::string_view command, std::atomic<unsigned>& turn) {
    constexpr std::array<std::string_view, 4> kProducts{"7 9 12 15", "11 13 14", "8 9 10 16 17", "9 12 15"};
    const auto reply = [&](std::string_view payload) {
        return std::string("0_").append(command).append("_").append(payload).append("\r");
    };
    if (command == "listconprod") {
        return reply(kProducts[turn.fetch_add(1, std::memory_order_relaxed) % kProducts.size()]);
    }
    if (command.starts_with("listdev")) {
        return reply("0 1");
    }
    if (command.starts_with("bl-param-list")) {
        return reply("13 31 64 65 74 87 88 107 108 109 110 119 128 132 189 206 209 237 238 259");
    }
    if (command == "status") {
        return reply(turn.load(std::memory_order_relaxed) % 3 == 0 ? "9 0 4 12 1 2 " : " ");
    }
    return reply(command == "findstat" ? "-1" : command.starts_with("readm") ? "40" : "1");
}

void PreparePlatform(ScriptedPlatform& platform, std::atomic<unsigned>& turn) {
    platform.server.SetDefault([&turn](std::string_view command) { return Answer(command, turn); });
    platform.registry.Set(kMiscKey, kLogValue, RegistryValue::Dword(1));
    const std::wstring program = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\OKO";
    platform.registry.Set(program, L"DisplayName", RegistryValue::Text(L"OKO-Control Server"));
    platform.registry.Set(program, L"InstallLocation", RegistryValue::Text(L"C:\\OKO\\"));
    platform.files.Answer(L"C:\\OKO\\*", {{L"OKO-Control.exe"}});

    ScriptedDialogs::Reset();
    ScriptedDialogs::Current().onConnection = [](CDevApiInterface_Impl&) { return DialogEnd::FindAndConnect; };
    ScriptedDialogs::Current().onConfiguration = [](CDevApiInterface_Impl& device) {
        DescribeConfiguration(device);
        return TakeConfiguration(device, [](int) { return L"0.4"; }, true) ? DialogEnd::Ok : DialogEnd::Cancelled;
    };
}

void UseTemperature(CDevApiInterface_Temperature& channel) {
    double value = 0.0;
    double other = 0.0;
    std::uint32_t state = 0;
    std::array<wchar_t, oko::kChannelNameLength> name{};
    channel.GetName(name.data(), oko::kChannelNameLength);
    channel.SetTargetTemperature(38.5);
    channel.GetTargetTemperature(&value);
    channel.GetCurrentTemperature(&value);
    channel.GetTemperatureState(&state);
    channel.SetTemperatureRate(0.5);
    channel.GetTemperatureStep(&value);
    channel.SetTolerance(0.3, 0.4);
    channel.GetTolerance(&value, &other);
    channel.GetTemperatureLimits(&value, &other);
    channel.HasFeature(oko::kFeatureSensorOnly);
    channel.SetEnabled(1);
}

void UseGasConcentration(CDevApiInterface_GasConcentration& channel) {
    double value = 0.0;
    double other = 0.0;
    std::uint32_t state = 0;
    std::array<wchar_t, oko::kChannelNameLength> name{};
    channel.GetName(name.data(), oko::kChannelNameLength);
    channel.SetTargetGasConcentration(7.5);
    channel.GetTargetGasConcentration(&value);
    channel.GetCurrentGasConcentration(&value);
    channel.GetGasConcentrationState(&state);
    channel.SetTolerance(0.3, 0.4);
    channel.GetTolerance(&value, &other);
    channel.HasFeature(oko::kFeatureAirMode);
    channel.SetEnabled(1);
}

void UseHumidifier(CDevApiInterface_Humidifier& channel) {
    double value = 0.0;
    double other = 0.0;
    std::uint32_t state = 0;
    std::array<wchar_t, oko::kChannelNameLength> name{};
    channel.GetName(name.data(), oko::kChannelNameLength);
    channel.SetTargetHumidity(60.0);
    channel.GetTargetHumidity(&value);
    channel.GetCurrentHumidity(&value);
    channel.GetHumidityState(&state);
    channel.SetTolerance(0.3, 0.4);
    channel.GetTolerance(&value, &other);
    channel.HasFeature(0);
    channel.SetEnabled(1);
}

template <class Channel>
void UseAll(CDevApiInterface_Impl& device, std::uint32_t count, Channel& (*get)(CDevApiInterface&, std::uint32_t),
            void (*use)(Channel&)) {
    for (std::uint32_t index = 0; index < count; ++index) {
        use(get(device, index));
        CountCall();
    }
}

void UseChannels(CDevApiInterface_Impl& device) {
    using Device = CDevApiInterface_Impl;
    UseAll(device, Device::kTemperatures, TemperatureOf, UseTemperature);
    UseAll(device, Device::kGasConcentrations, GasConcentrationOf, UseGasConcentration);
    UseAll(device, Device::kHumidifiers, HumidifierOf, UseHumidifier);
    device.GetTemperatureCount();
    device.GetGasConcentrationCount();
    device.GetHumidifierCount();
}

void OpenAndClose(CDevApiInterface_Impl& device) {
    device.ApplyConnection(L"m_iComPort 3");
    device.Init(HostCalls, nullptr);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));  // the others shall find the device open too
    device.Close();
    CountCall();
}

/// Takes the link away from whatever is under way: an Init, a search, settings, a Close.
void Interrupt(CDevApiInterface_Impl& device) {
    constexpr std::array kTexts{L"m_iComPort 3", L"m_iComPort 3 m_nReplyTimeout 50", L"m_iComPort 3 m_bWatchOnly 1"};
    for (const wchar_t* const text : kTexts) {
        std::this_thread::sleep_for(std::chrono::milliseconds(3));  // time for an Init to get somewhere
        device.Close();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        device.ApplyConnection(text);
        CountCall();
    }
}

void Configure(CDevApiInterface_Impl& device) {
    device.ApplyConfiguration(L"dIncubatorBelow 0.3 | dIncubatorAbove 0.4 | dCO2Below 0.6");
    SplitStatusReport(CollectStatusReport(device).text);
    std::wstring text(oko::kConfigurationTextLength, L'\0');
    device.ShowConfiguration(text.data(), oko::kConfigurationTextLength, nullptr);
    CountCall();
}

void FindAndConnect(CDevApiInterface_Impl& device) {
    std::wstring text = L"m_iComPort 4";
    text.resize(oko::kConnectionTextLength);
    device.ShowConnection(text.data(), oko::kConnectionTextLength, nullptr);
    device.CreateValuePanel(nullptr, nullptr);
    CountCall();
}

/// Does the same again and again, on a thread of its own, until it goes.
class Repeater {
 public:
    Repeater(void (*action)(CDevApiInterface_Impl&), CDevApiInterface_Impl& device)
        : m_thread([action, &device](const std::stop_token& stop) {
              while (!stop.stop_requested()) {
                  action(device);
              }
          }) {}

 private:
    std::jthread m_thread;
};

/// All threads on one device.
class Host {
 public:
    explicit Host(CDevApiInterface_Impl& device) {
        for (auto* const action : {OpenAndClose, FindAndConnect, Configure, Interrupt}) {
            m_threads.push_back(std::make_unique<Repeater>(action, device));
        }
        for (int i = 0; i < kChannelThreads; ++i) {
            m_threads.push_back(std::make_unique<Repeater>(UseChannels, device));
        }
    }

 private:
    std::vector<std::unique_ptr<Repeater>> m_threads;
};

void RunEpisode() {
    std::atomic<unsigned> turn = 0;
    ScriptedPlatform platform;
    PreparePlatform(platform, turn);
    CDevApiInterface_Impl incubator(oko::kRealDevice);
    CDevApiInterface_Impl simulator(oko::kSimulatorDevice);
    {
        const Host first(incubator);
        const Host second(simulator);
        std::this_thread::sleep_for(kEpisode);
    }
    incubator.Close();
    simulator.Close();
}

}  // namespace

int main(int argc, char** argv) {
    const int seconds = argc == 2 ? std::atoi(argv[1]) : 0;
    if (seconds <= 0) {
        std::fputs("usage: oko-stress SECONDS\n", stderr);
        return 2;
    }
    const auto end = Clock::now() + std::chrono::seconds(seconds);
    int episodes = 0;
    for (; Clock::now() < end; ++episodes) {
        RunEpisode();
    }
    std::printf("calls %llu episodes %d\n", static_cast<unsigned long long>(s_calls.load()), episodes);
    return 0;
}
