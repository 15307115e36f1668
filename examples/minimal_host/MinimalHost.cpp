// The smallest complete host: loads the plug-in that lies beside the program, connects, reads every channel, sets two
// targets and closes. "minimal-host incubator" takes the real incubator; without an argument it is the simulated one.
// Everything runs on one thread, the one that would be a host's user-interface thread.

#include <windows.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <limits>
#include <stdexcept>
#include <string>

#include "oko/LibQuery.h"

namespace {

std::string ToUtf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    std::string bytes(text.size() * 3, '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(),
                                                              static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

void Require(bool succeeded, const std::string& what) {
    if (!succeeded) {
        throw std::runtime_error(what);
    }
}

/// Called by the plug-in while it works for us. The text is gone after the call, and nothing may be thrown.
void OnCallback(std::int32_t code, const wchar_t* text) {
    if (code == oko::kCallbackLog && text != nullptr) {
        std::printf("log: %s\n", ToUtf8(text).c_str());
    } else if (code == oko::kCallbackAirModeChanged) {
        std::printf("the air mode changed\n");
    }
}

/// The loaded library. By its full path: a bare name would be looked for in the current folder, too.
class Plugin {
 public:
    Plugin() {
        wchar_t program[32768] = {};
        GetModuleFileNameW(nullptr, program, 32767);
        std::wstring file(program);
        file.replace(file.find_last_of(L'\\') + 1, std::wstring::npos, L"OkoLabBoldLine.dll");
        m_module = LoadLibraryW(file.c_str());
        Require(m_module != nullptr,
                "cannot load " + ToUtf8(file) + " (system error " + std::to_string(GetLastError()) + ")");
    }
    ~Plugin() { FreeLibrary(m_module); }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    CDevApiInterface& Device(std::uint32_t index) const {
        char type[oko::kDeviceTextLength] = {};
        char name[oko::kDeviceTextLength] = {};
        const auto describe = Find<oko::LibQueryPhysDeviceFunction>("LibQueryPhysDevice");
        Require(describe(index, nullptr, type, oko::kDeviceTextLength - 1, name, oko::kDeviceTextLength - 1, nullptr, 0,
                         nullptr, 0) == oko::kSuccess,
                "the library does not know the device");
        std::printf("%s: %s\n", type, name);

        CDevApiInterface* device = nullptr;
        const auto get = Find<oko::LibQueryInterfaceFunction>("LibQueryInterface");
        Require(get(index, nullptr, &device) == oko::kSuccess, "the library gives no device");
        return *device;  // it belongs to the library
    }

 private:
    template <class Function>
    Function Find(const char* name) const {
        const auto address = reinterpret_cast<void*>(GetProcAddress(m_module, name));
        Require(address != nullptr, std::string("the library has no ") + name);
        return reinterpret_cast<Function>(address);
    }

    HMODULE m_module;
};

/// A device in use, from ApplyConnection to Close; it closes after a failed Init, too.
class Session {
 public:
    explicit Session(CDevApiInterface& device) : m_device(device) {}
    ~Session() { m_device.Close(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Both texts come from ShowConnection and ShowConfiguration, and a host stores them between its runs. At first it
    /// has none: an empty one keeps the port, or takes the default tolerances.
    void Open(const wchar_t* connectionText, const wchar_t* alarmText) {
        Require(m_device.ApplyConnection(connectionText) == oko::kSuccess, "the link cannot be opened");
        Require(m_device.Init(OnCallback, nullptr) == oko::kSuccess, "the incubator does not answer");
        Require(m_device.ApplyConfiguration(alarmText) == oko::kSuccess, "the tolerances are not taken");
    }

 private:
    CDevApiInterface& m_device;
};

std::string NameOf(INotify& channel) {
    wchar_t name[oko::kChannelNameLength] = {};  // zeros: the plug-in adds no terminator
    Require(channel.GetName(name, oko::kChannelNameLength - 1) == oko::kSuccess, "a channel tells no name");
    return ToUtf8(name);
}

template <class Channel>
using ReadSlot = std::int32_t (Channel::*)(double*);

/// A value as it is shown. The read may fail, or succeed without a value.
template <class Channel>
std::string Read(Channel& channel, ReadSlot<Channel> slot) {
    double value = std::numeric_limits<double>::quiet_NaN();
    if ((channel.*slot)(&value) != oko::kSuccess) {
        return "no answer";
    }
    return std::isnan(value) ? "no value" : std::to_string(value);
}

template <class Channel>
void Show(Channel& channel, ReadSlot<Channel> current, ReadSlot<Channel> target) {
    std::printf("%s: %s, target %s\n", NameOf(channel).c_str(), Read(channel, current).c_str(),
                target != nullptr ? Read(channel, target).c_str() : "none");
}

/// Channel `index` of a kind, which lies below the kind's live count.
template <class Channel>
Channel& ChannelAt(CDevApiInterface& device, std::int32_t (CDevApiInterface::*slot)(std::uint32_t, Channel**),
                   std::int32_t index) {
    Channel* channel = nullptr;
    const std::int32_t result = (device.*slot)(static_cast<std::uint32_t>(index), &channel);
    Require(result == oko::kSuccess && channel != nullptr, "a channel is missing");
    return *channel;  // cppcheck-suppress nullPointer; Require throws
}

using Temperature = CDevApiInterface_Temperature;
using Gas = CDevApiInterface_GasConcentration;
using Humidifier = CDevApiInterface_Humidifier;

void ShowAll(CDevApiInterface& device) {
    for (std::int32_t i = 0; i < device.GetTemperatureCount(); ++i) {
        auto& zone = ChannelAt(device, &CDevApiInterface::GetTemperature, i);
        const bool isSensor = zone.HasFeature(oko::kFeatureSensorOnly);
        Show(zone, &Temperature::GetCurrentTemperature, isSensor ? nullptr : &Temperature::GetTargetTemperature);
    }
    for (std::int32_t i = 0; i < device.GetGasConcentrationCount(); ++i) {
        Show(ChannelAt(device, &CDevApiInterface::GetGasConcentration, i), &Gas::GetCurrentGasConcentration,
             &Gas::GetTargetGasConcentration);
    }
    for (std::int32_t i = 0; i < device.GetHumidifierCount(); ++i) {
        Show(ChannelAt(device, &CDevApiInterface::GetHumidifier, i), &Humidifier::GetCurrentHumidity,
             &Humidifier::GetTargetHumidity);
    }
}

/// A target outside the channel's range is taken as the nearest one inside, so the one that counts is read back.
void SetTargets(CDevApiInterface& device) {
    if (device.GetTemperatureCount() > 0) {
        auto& zone = ChannelAt(device, &CDevApiInterface::GetTemperature, 0);
        Require(zone.SetTargetTemperature(38.5) == oko::kSuccess, "the temperature is not taken");
        Show(zone, &Temperature::GetCurrentTemperature, &Temperature::GetTargetTemperature);
    }
    if (device.GetGasConcentrationCount() > 0) {
        auto& gas = ChannelAt(device, &CDevApiInterface::GetGasConcentration, 0);
        Require(gas.SetTargetGasConcentration(1000.0) == oko::kSuccess, "the concentration is not taken");
        Show(gas, &Gas::GetCurrentGasConcentration, &Gas::GetTargetGasConcentration);
    }
}

/// What a host does in its message loop before it dispatches a message.
void TakeNotices() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        if (message.hwnd == nullptr && message.message == WM_COMMAND &&
            message.wParam == oko::kValuesChangedParameter) {
            std::printf("values changed\n");
        }
        DispatchMessageW(&message);
    }
}

}  // namespace

int main(int argc, char** argv) try {
    const bool real = argc > 1 && std::string(argv[1]) == "incubator";
    const Plugin plugin;
    CDevApiInterface& device = plugin.Device(real ? oko::kRealDevice : oko::kSimulatorDevice);
    {
        Session session(device);  // closes before the library goes
        session.Open(L"m_iComPort 1", L"");
        ShowAll(device);
        SetTargets(device);
        TakeNotices();
    }
    std::printf("closed\n");
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "minimal-host: %s\n", error.what());
    return 1;
}
