// A device plug-in that the tests made up: the two exports and the interfaces of the real one, and behind them numbers
// that a test gives. It lets oko-host run natively, with sanitizers, against a device that is told to misbehave.
//
// The environment names the file that steers it, OKO_FAKE_CONTROL; it is read anew at each call. A line each:
//   value CO2 6.2     what the channel measures          novalue CO2    it answers, without a number
//   target CO2 5.5    what it aims at                    fail CO2       it refuses; "fail *": all do
//   silent            no call returns while this stands  delay 0.01     each call takes that many seconds
//   noread            no value is read while it stands   air 1          the air mode is on
//   hold              no target is taken while it stands: it is set, and the call does not return
//   noinit            Init fails
//   log TEXT          the next call logs the text, once for each change of the line
//   exchanges         each read logs its exchange; "exchanges silent": one that had no answer
// OKO_FAKE_CHANNELS=24 makes it as large as a device can be. OKO_FAKE_JOURNAL names a file that gets a line for each
// call that changes something.

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <ios>
#include <istream>
#include <map>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "oko/BandState.h"
#include "oko/LibQuery.h"

namespace {

struct Control {
    std::map<std::string, double> values;
    std::map<std::string, double> targets;
    std::set<std::string> withoutValue;
    std::set<std::string> failing;
    std::string log;
    double delaySeconds = 0.0;
    bool silent = false;
    bool readHangs = false;
    bool setHangs = false;
    bool initFails = false;
    bool airMode = false;
    bool exchanges = false;
    bool emptyReplies = false;
};

std::string Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

Control ReadControl() {
    Control control;
    std::ifstream file(Environment("OKO_FAKE_CONTROL"));
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string verb;
        std::string name;
        double number = 0.0;
        words >> verb;
        if (verb == "value" && words >> name >> number) {
            control.values[name] = number;
        } else if (verb == "target" && words >> name >> number) {
            control.targets[name] = number;
        } else if (verb == "novalue" && words >> name) {
            control.withoutValue.insert(name);
        } else if (verb == "fail" && words >> name) {
            control.failing.insert(name);
        } else if (verb == "delay") {
            words >> control.delaySeconds;
        } else if (verb == "air") {
            words >> control.airMode;
        } else if (verb == "exchanges") {
            control.exchanges = true;
            control.emptyReplies = static_cast<bool>(words >> name);
        } else if (verb == "log") {
            std::getline(words >> std::ws, control.log);
        }
        control.silent = control.silent || verb == "silent";
        control.readHangs = control.readHangs || verb == "noread";
        control.setHangs = control.setHangs || verb == "hold";
        control.initFails = control.initFails || verb == "noinit";
    }
    return control;
}

void Journal(const std::string& line) {
    if (const std::string name = Environment("OKO_FAKE_JOURNAL"); !name.empty()) {
        std::ofstream(name, std::ios::app) << line << std::endl;
    }
}

oko::HostCallbackFunction g_callback = nullptr;

void CallHost(const std::string& text) {
    if (g_callback != nullptr) {
        g_callback(oko::kCallbackLog, std::wstring(text.begin(), text.end()).c_str());
    }
}

void LogExchange(const Control& control, const std::string& command, double value) {
    if (control.exchanges) {
        CallHost("OKO-Lab bold line CommandSend: " + command + " -> " +
                 (control.emptyReplies ? "" : "0_" + command + "_" + std::to_string(value) + "\r"));
    }
}

/// Returns what is told once this is told no more.
Control WaitWhile(bool Control::* told) {
    Control control = ReadControl();
    while (control.*told) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        control = ReadControl();
    }
    return control;
}

/// What every call does first: it waits as the control file says, and logs.
Control Enter() {
    static std::string lastLog;
    Control control = ReadControl();
    std::this_thread::sleep_for(std::chrono::duration<double>(control.delaySeconds));
    if (control.silent) {
        control = WaitWhile(&Control::silent);
    }
    if (control.log != lastLog) {
        lastLog = control.log;
        CallHost(lastLog);
    }
    return control;
}

/// The part that the three kinds share: a name, a target and a value that follows it at once.
template <class Interface>
class FakeChannel : public Interface {
 public:
    FakeChannel(std::string name, double target, double min, double max, bool sensor = false)
        : m_name(std::move(name)), m_dTarget(target), m_dMin(min), m_dMax(max), m_bSensor(sensor) {}

    std::int32_t SetEnabled(std::uint8_t) override { return oko::kSuccess; }
    std::int32_t GetName(wchar_t* buffer, std::int32_t length) override {
        const auto count = std::min(static_cast<std::size_t>(length), m_name.size());
        std::copy_n(m_name.begin(), count, buffer);
        return oko::kSuccess;
    }
    std::int32_t NoOperation() override { return oko::kSuccess; }
    std::int32_t SetTolerance(double below, double above) override {
        m_dBelow = below;
        m_dAbove = above;
        return oko::kSuccess;
    }
    std::int32_t GetTolerance(double* below, double* above) override {
        *below = m_dBelow;
        *above = m_dAbove;
        return oko::kSuccess;
    }
    void* DeletingDestructor(unsigned) override { return this; }

 protected:
    bool Fails(const Control& control) const {
        return control.failing.contains(m_name) || control.failing.contains("*");
    }

    std::int32_t ReadTarget(double* value) {
        const Control control = Enter();
        if (Fails(control) || m_bSensor) {
            return oko::kFailure;
        }
        const auto given = control.targets.find(m_name);
        *value = given != control.targets.end() ? given->second : m_dTarget;
        return oko::kSuccess;
    }

    std::int32_t ReadCurrent(double* value) {
        Control control = Enter();
        if (control.readHangs) {
            control = WaitWhile(&Control::readHangs);
        }
        if (Fails(control)) {
            return oko::kFailure;
        }
        if (!control.withoutValue.contains(m_name)) {
            const auto given = control.values.find(m_name);
            *value = m_dCurrent = given != control.values.end() ? given->second : m_dTarget;
        }
        LogExchange(control, "readcurval " + m_name, m_dCurrent);
        return oko::kSuccess;
    }

    std::int32_t Set(double value) {
        if (Fails(Enter()) || m_bSensor) {
            return oko::kFailure;
        }
        m_dTarget = std::clamp(std::round(value * 10.0) / 10.0, m_dMin, m_dMax);
        Journal("set " + m_name + " " + std::to_string(m_dTarget));
        WaitWhile(&Control::setHangs);
        return oko::kSuccess;
    }

    bool IsBelow() const { return m_dCurrent < m_dTarget - m_dBelow; }
    bool IsAbove() const { return m_dCurrent > m_dTarget + m_dAbove; }

    std::string m_name;
    double m_dTarget;
    double m_dMin;
    double m_dMax;
    double m_dCurrent = 0.0;
    double m_dBelow = 0.5;
    double m_dAbove = 0.5;
    bool m_bSensor;
};

class Temperature final : public FakeChannel<CDevApiInterface_Temperature> {
 public:
    using FakeChannel::FakeChannel;
    std::int32_t SetTargetTemperature(double value) override { return Set(value); }
    std::int32_t GetTargetTemperature(double* value) override { return ReadTarget(value); }
    std::int32_t GetCurrentTemperature(double* value) override { return ReadCurrent(value); }
    std::int32_t GetTemperatureState(std::uint32_t* state) override {
        *state = IsBelow() ? oko::kTemperatureBelow : IsAbove() ? oko::kTemperatureAbove : oko::kTemperatureWithin;
        return oko::kSuccess;
    }
    std::int32_t SetTemperatureRate(double) override { return oko::kSuccess; }
    std::int32_t GetTemperatureStep(double* value) override {
        *value = 0.2;
        return oko::kSuccess;
    }
    std::int32_t NotSupported() override { return oko::kFailure; }
    std::int32_t GetTemperatureLimits(double* min, double* max) override {
        *min = m_dMin;
        *max = m_dMax;
        return oko::kSuccess;
    }
    bool HasFeature(std::int32_t feature) override { return feature == oko::kFeatureSensorOnly && m_bSensor; }
};

class Gas final : public FakeChannel<CDevApiInterface_GasConcentration> {
 public:
    using FakeChannel::FakeChannel;
    std::int32_t SetTargetGasConcentration(double value) override { return Set(value); }
    std::int32_t GetTargetGasConcentration(double* value) override { return ReadTarget(value); }
    std::int32_t GetCurrentGasConcentration(double* value) override { return ReadCurrent(value); }
    std::int32_t GetGasConcentrationState(std::uint32_t* state) override {
        *state = IsBelow() || IsAbove() ? oko::kOutsideBand : oko::kWithinBand;
        return oko::kSuccess;
    }
    bool HasFeature(std::int32_t feature) override {
        return feature == oko::kFeatureAirMode && m_name.starts_with("O2") && ReadControl().airMode;
    }
};

class Humidity final : public FakeChannel<CDevApiInterface_Humidifier> {
 public:
    using FakeChannel::FakeChannel;
    std::int32_t SetTargetHumidity(double value) override { return Set(value); }
    std::int32_t GetTargetHumidity(double* value) override { return ReadTarget(value); }
    std::int32_t GetCurrentHumidity(double* value) override { return ReadCurrent(value); }
    std::int32_t GetHumidityState(std::uint32_t* state) override {
        *state = IsBelow() || IsAbove() ? oko::kOutsideBand : oko::kWithinBand;
        return oko::kSuccess;
    }
    bool HasFeature(std::int32_t) override { return false; }
};

class Device final : public CDevApiInterface {
 public:
    explicit Device(bool simulated) : m_bSimulated(simulated) {
        const bool large = Environment("OKO_FAKE_CHANNELS") == "24";
        m_temperatures.emplace_back("H301-T", 37.0, 25.0, 60.0);
        m_temperatures.emplace_back("Base", 30.0, 0.0, 0.0, true);
        m_gases.emplace_back("CO2", 5.0, 0.0, 20.0);
        m_gases.emplace_back("O2", 20.0, 1.0, 95.0);
        m_humidities.emplace_back("Humidity", 90.0, 50.0, 95.0);
        for (std::size_t i = 2; large && i < oko::kTemperatureChannels; ++i) {
            m_temperatures.emplace_back("Zone " + std::to_string(i + 1), 37.0, 25.0, 60.0);
        }
        for (std::size_t i = 2; large && i < oko::kGasChannels; ++i) {
            m_gases.emplace_back("Gas " + std::to_string(i + 1), 5.0, 0.0, 20.0);
        }
        for (std::size_t i = 1; large && i < oko::kHumidityChannels; ++i) {
            m_humidities.emplace_back("Humidity " + std::to_string(i + 1), 90.0, 50.0, 95.0);
        }
    }

    std::int32_t Init(oko::HostCallbackFunction callback, void*) override {
        g_callback = callback;
        CallHost("OKO-Lab bold line Init()");
        Journal("Init");
        m_bOpen = !Enter().initFails;
        return m_bOpen ? oko::kSuccess : oko::kFailure;
    }
    void Close() override {
        Enter();
        m_bOpen = false;
        Journal("Close");
    }
    bool Unused2() override { return false; }
    oko::WindowHandle CreateValuePanel(oko::WindowHandle, oko::DialogProcedure*) override { return nullptr; }
    std::int32_t ShowConfiguration(wchar_t*, std::int32_t, oko::WindowHandle) override { return oko::kFailure; }
    std::int32_t ApplyConfiguration(const wchar_t* text) override {
        const std::wstring wide(text);
        Journal("alarms " + std::string(wide.begin(), wide.end()));
        return oko::kSuccess;
    }
    std::int32_t ShowConnection(wchar_t*, std::int32_t, oko::WindowHandle) override { return oko::kFailure; }
    std::int32_t ApplyConnection(const wchar_t* text) override {
        const std::wstring wide(text);
        Journal("connection " + std::string(wide.begin(), wide.end()) + (m_bSimulated ? "" : " real"));
        return oko::kSuccess;
    }
    std::int32_t Unused8() override { return oko::kSuccess; }

    std::int32_t GetTemperatureCount() override { return Count(m_temperatures); }
    std::int32_t GetTemperature(std::uint32_t index, CDevApiInterface_Temperature** channel) override {
        return Give(m_temperatures, index, channel);
    }
    std::int32_t GetGasConcentrationCount() override { return Count(m_gases); }
    std::int32_t GetGasConcentration(std::uint32_t index, CDevApiInterface_GasConcentration** channel) override {
        return Give(m_gases, index, channel);
    }
    std::int32_t GetHumidifierCount() override { return Count(m_humidities); }
    std::int32_t GetHumidifier(std::uint32_t index, CDevApiInterface_Humidifier** channel) override {
        return Give(m_humidities, index, channel);
    }

 private:
    template <class Channel>
    std::int32_t Count(const std::vector<Channel>& channels) const {
        return m_bOpen ? static_cast<std::int32_t>(channels.size()) : 0;
    }

    template <class Channel, class Interface>
    static std::int32_t Give(std::vector<Channel>& channels, std::uint32_t index, Interface** channel) {
        if (index < channels.size()) {
            *channel = &channels[index];
        }
        return oko::kSuccess;
    }

    bool m_bSimulated;
    bool m_bOpen = false;
    std::vector<Temperature> m_temperatures;
    std::vector<Gas> m_gases;
    std::vector<Humidity> m_humidities;
};

}  // namespace

std::int32_t LibQueryPhysDevice(std::uint32_t index, void*, char* type, std::int32_t typeSize, char* name,
                                std::int32_t nameSize, wchar_t*, std::int32_t, wchar_t*, std::int32_t) {
    if (index > oko::kSimulatorDevice) {
        return oko::kFailure;
    }
    const auto copy = [](const std::string& text, char* buffer, std::int32_t size) {
        std::fill_n(buffer, size, '\0');
        std::copy_n(text.begin(), std::min(text.size(), static_cast<std::size_t>(size)), buffer);
    };
    copy("Incubator", type, typeSize);
    copy(index == oko::kRealDevice ? "Made-up incubator" : "Made-up simulator", name, nameSize);
    return oko::kSuccess;
}

std::int32_t LibQueryInterface(std::uint32_t index, void*, CDevApiInterface** device) {
    static std::array<Device, 2> devices{Device(false), Device(true)};
    if (index > oko::kSimulatorDevice) {
        return oko::kFailure;
    }
    *device = &devices[index];
    return oko::kSuccess;
}
