// The library's own logic as a plug-in of this system, and around it whatever OKO_DEFECT says is wrong with it.

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "Defect.h"
#include "core/Exports.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/LibQuery.h"

extern "C" {
std::int32_t RealQueryPhysDevice(std::uint32_t index, void*, char* type, std::int32_t typeSize, char* name,
                                 std::int32_t nameSize, wchar_t* wideName, std::int32_t wideNameSize,
                                 wchar_t* wideName2, std::int32_t wideName2Size);
std::int32_t RealQueryInterface(std::uint32_t index, void*, CDevApiInterface** device);
}

namespace {

bool Is(std::string_view slot, std::string_view action) {
    return TheDefect().where == slot && TheDefect().action == action;
}

/// A slot between the host and the logic.
template <class Call>
auto Through(std::string_view slot, Call call) -> decltype(call()) {
    using Result = decltype(call());
    static std::map<std::string, int, std::less<>> calls;
    const bool wrong = TheDefect().where == slot && ++calls[std::string(slot)] >= TheDefect().from;
    Suffer(slot);
    if constexpr (std::is_void_v<Result>) {
        if (!(wrong && TheDefect().action == "skip")) {
            call();
        }
    } else {
        if (wrong && TheDefect().action == "skip") {
            return Result{};
        }
        const Result result = call();
        if (wrong && TheDefect().action == "other") {
            return result == Result{} ? static_cast<Result>(-1) : Result{};
        }
        return result;
    }
}

/// A slot that returns a truth, or an address.
template <class Call>
bool Truth(std::string_view slot, Call call) {
    return Through(slot, [&] { return call() ? 1 : 0; }) != 0;
}

/// A slot that writes numbers.
template <class Number, class Call>
std::int32_t Writes(std::string_view slot, Number* number, Call call) {
    const std::int32_t result = Through(slot, call);
    if (number != nullptr && ((Is(slot, "off") && result == oko::kSuccess) || (Is(slot, "spoil") && result != 0))) {
        *number = static_cast<Number>(*number + Number{1});
    }
    if (number != nullptr && Is(slot, "fill")) {
        *number = Number{7};
    }
    return result;
}

template <class Interface>
class Channel : public Interface {
 public:
    explicit Channel(Interface* inner) : m_pInner(inner) {}

    std::int32_t SetEnabled(std::uint8_t flag) override {
        return Through("SetEnabled", [&] { return m_pInner->SetEnabled(flag); });
    }
    std::int32_t GetName(wchar_t* buffer, std::int32_t length) override {
        const std::int32_t result = Through("GetName", [&] { return m_pInner->GetName(buffer, length); });
        if (buffer != nullptr && length > 0 && Is("GetName", "off")) {
            *buffer = L'?';
        }
        if (buffer != nullptr && Is("GetName", "mark")) {
            buffer[length] = L'\0';
        }
        return result;
    }
    std::int32_t NoOperation() override {
        return Through("NoOperation", [&] { return m_pInner->NoOperation(); });
    }
    std::int32_t SetTolerance(double below, double above) override {
        return Through("SetTolerance", [&] { return m_pInner->SetTolerance(below, above); });
    }
    std::int32_t GetTolerance(double* below, double* above) override {
        return Writes("GetTolerance", above, [&] { return m_pInner->GetTolerance(below, above); });
    }
    bool HasFeature(std::int32_t feature) override {
        return Truth("HasFeature", [&] { return m_pInner->HasFeature(feature); });
    }
    void* DeletingDestructor(unsigned flags) override {
        const bool deleted =
            Truth("DeletingDestructor", [&] { return m_pInner->DeletingDestructor(flags) != nullptr; });
        return deleted ? this : nullptr;
    }

 protected:
    Interface* m_pInner;
};

class Temperature final : public Channel<CDevApiInterface_Temperature> {
 public:
    using Channel::Channel;
    std::int32_t SetTargetTemperature(double value) override {
        return Through("SetTargetTemperature", [&] { return m_pInner->SetTargetTemperature(value); });
    }
    std::int32_t GetTargetTemperature(double* value) override {
        return Writes("GetTargetTemperature", value, [&] { return m_pInner->GetTargetTemperature(value); });
    }
    std::int32_t GetCurrentTemperature(double* value) override {
        return Writes("GetCurrentTemperature", value, [&] { return m_pInner->GetCurrentTemperature(value); });
    }
    std::int32_t GetTemperatureState(std::uint32_t* state) override {
        return Writes("GetTemperatureState", state, [&] { return m_pInner->GetTemperatureState(state); });
    }
    std::int32_t SetTemperatureRate(double value) override {
        return Through("SetTemperatureRate", [&] { return m_pInner->SetTemperatureRate(value); });
    }
    std::int32_t GetTemperatureStep(double* value) override {
        return Writes("GetTemperatureStep", value, [&] { return m_pInner->GetTemperatureStep(value); });
    }
    std::int32_t NotSupported() override {
        return Through("NotSupported", [&] { return m_pInner->NotSupported(); });
    }
    std::int32_t GetTemperatureLimits(double* min, double* max) override {
        return Writes("GetTemperatureLimits", max, [&] { return m_pInner->GetTemperatureLimits(min, max); });
    }
};

class Gas final : public Channel<CDevApiInterface_GasConcentration> {
 public:
    using Channel::Channel;
    std::int32_t SetTargetGasConcentration(double value) override {
        return Through("SetTargetGasConcentration", [&] { return m_pInner->SetTargetGasConcentration(value); });
    }
    std::int32_t GetTargetGasConcentration(double* value) override {
        return Writes("GetTargetGasConcentration", value, [&] { return m_pInner->GetTargetGasConcentration(value); });
    }
    std::int32_t GetCurrentGasConcentration(double* value) override {
        return Writes("GetCurrentGasConcentration", value, [&] { return m_pInner->GetCurrentGasConcentration(value); });
    }
    std::int32_t GetGasConcentrationState(std::uint32_t* state) override {
        return Writes("GetGasConcentrationState", state, [&] { return m_pInner->GetGasConcentrationState(state); });
    }
};

class Humidity final : public Channel<CDevApiInterface_Humidifier> {
 public:
    using Channel::Channel;
    std::int32_t SetTargetHumidity(double value) override {
        return Through("SetTargetHumidity", [&] { return m_pInner->SetTargetHumidity(value); });
    }
    std::int32_t GetTargetHumidity(double* value) override {
        return Writes("GetTargetHumidity", value, [&] { return m_pInner->GetTargetHumidity(value); });
    }
    std::int32_t GetCurrentHumidity(double* value) override {
        return Writes("GetCurrentHumidity", value, [&] { return m_pInner->GetCurrentHumidity(value); });
    }
    std::int32_t GetHumidityState(std::uint32_t* state) override {
        return Writes("GetHumidityState", state, [&] { return m_pInner->GetHumidityState(state); });
    }
};

oko::HostCallbackFunction g_callback = nullptr;

void Callback(std::int32_t code, const wchar_t* text) {
    if (!Is("callback", "drop")) {
        g_callback(Is("callback", "off") ? code + 1 : code, text);
    }
}

class Device final : public CDevApiInterface {
 public:
    explicit Device(CDevApiInterface* inner) : m_pInner(inner) {}

    std::int32_t Init(oko::HostCallbackFunction callback, void* hostData) override {
        g_callback = callback;
        if (TheDefect().where == "leak") {
            [[maybe_unused]] const int forgotten = dup(STDERR_FILENO);
        }
        if (callback == nullptr && Is("Init", "mark")) {
            callback(oko::kCallbackLog, L"of nobody");
        }
        return Through("Init", [&] { return m_pInner->Init(callback != nullptr ? Callback : nullptr, hostData); });
    }
    void Close() override {
        Through("Close", [&] { m_pInner->Close(); });
    }
    bool Unused2() override {
        return Truth("Unused2", [&] { return m_pInner->Unused2(); });
    }
    oko::WindowHandle CreateValuePanel(oko::WindowHandle parent, oko::DialogProcedure* procedure) override {
        return m_pInner->CreateValuePanel(parent, procedure);
    }
    std::int32_t ShowConfiguration(wchar_t* text, std::int32_t size, oko::WindowHandle parent) override {
        return Through("ShowConfiguration", [&] { return m_pInner->ShowConfiguration(text, size, parent); });
    }
    std::int32_t ApplyConfiguration(const wchar_t* text) override {
        return Through("ApplyConfiguration", [&] { return m_pInner->ApplyConfiguration(text); });
    }
    std::int32_t ShowConnection(wchar_t* text, std::int32_t length, oko::WindowHandle parent) override {
        return Through("ShowConnection", [&] { return m_pInner->ShowConnection(text, length, parent); });
    }
    std::int32_t ApplyConnection(const wchar_t* text) override {
        return Through("ApplyConnection", [&] { return m_pInner->ApplyConnection(text); });
    }
    std::int32_t Unused8() override {
        return Through("Unused8", [&] { return m_pInner->Unused8(); });
    }
    std::int32_t GetTemperatureCount() override {
        return Through("GetTemperatureCount", [&] { return m_pInner->GetTemperatureCount(); });
    }
    std::int32_t GetTemperature(std::uint32_t index, CDevApiInterface_Temperature** channel) override {
        return Give("GetTemperature", m_temperatures, index, channel, &CDevApiInterface::GetTemperature);
    }
    std::int32_t GetGasConcentrationCount() override {
        return Through("GetGasConcentrationCount", [&] { return m_pInner->GetGasConcentrationCount(); });
    }
    std::int32_t GetGasConcentration(std::uint32_t index, CDevApiInterface_GasConcentration** channel) override {
        return Give("GetGasConcentration", m_gases, index, channel, &CDevApiInterface::GetGasConcentration);
    }
    std::int32_t GetHumidifierCount() override {
        return Through("GetHumidifierCount", [&] { return m_pInner->GetHumidifierCount(); });
    }
    std::int32_t GetHumidifier(std::uint32_t index, CDevApiInterface_Humidifier** channel) override {
        return Give("GetHumidifier", m_humidities, index, channel, &CDevApiInterface::GetHumidifier);
    }

 private:
    template <class Wrapped, class Interface>
    std::int32_t Give(std::string_view slot, std::map<Interface*, std::unique_ptr<Wrapped>>& wrapped,
                      std::uint32_t index, Interface** channel,
                      std::int32_t (CDevApiInterface::*get)(std::uint32_t, Interface**)) {
        const std::uint32_t asked = Is(slot, "off") ? 0 : index;
        return Through(slot, [&] {
            Interface* inner = nullptr;
            const std::int32_t result = (m_pInner->*get)(asked, &inner);
            if (inner != nullptr) {
                std::unique_ptr<Wrapped>& wrapper = wrapped[inner];
                if (!wrapper || Is(slot, "anew")) {
                    // The earlier one stays, for the host has it.
                    m_forgotten.push_back(std::shared_ptr<Wrapped>(std::move(wrapper)));
                    wrapper = std::make_unique<Wrapped>(inner);
                }
                *channel = wrapper.get();
            }
            return result;
        });
    }

    CDevApiInterface* m_pInner;
    std::map<CDevApiInterface_Temperature*, std::unique_ptr<Temperature>> m_temperatures;
    std::map<CDevApiInterface_GasConcentration*, std::unique_ptr<Gas>> m_gases;
    std::map<CDevApiInterface_Humidifier*, std::unique_ptr<Humidity>> m_humidities;
    std::vector<std::shared_ptr<void>> m_forgotten;
};

/// The library as it is loaded and freed.
struct Loaded {
    Loaded() {
        Suffer("load");
        const char* const milliseconds = std::getenv("OKO_CHECK_REPLY_TIMEOUT");
        if (milliseconds != nullptr && TheDefect().where != "patient") {
            platform.registry.Set(L"Software\\Vellmark\\Misc", L"ReplyTimeout",
                                  RegistryValue::Dword(static_cast<std::uint32_t>(std::atoi(milliseconds))));
        }
        AttachModule(nullptr);
    }
    ~Loaded() {
        Suffer("unload");
        DetachModule();
    }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;

    ScriptedPlatform platform;
    std::array<std::unique_ptr<Device>, 2> devices;
};

Loaded g_loaded;

}  // namespace

std::int32_t LibQueryPhysDevice(std::uint32_t index, void* reserved, char* type, std::int32_t typeSize, char* name,
                                std::int32_t nameSize, wchar_t* wideName, std::int32_t wideNameSize, wchar_t* wideName2,
                                std::int32_t wideName2Size) {
    constexpr const char* kSlot = "LibQueryPhysDevice";
    const std::int32_t result = Through(kSlot, [&] {
        return RealQueryPhysDevice(index, reserved, type, typeSize, name, nameSize, wideName, wideNameSize, wideName2,
                                   wideName2Size);
    });
    if (type != nullptr && typeSize > 0 && Is(kSlot, "off")) {
        type[0] = 'i';
    }
    if (type != nullptr && typeSize > 0 && Is(kSlot, "mark")) {
        type[typeSize - 1] = '!';
    }
    return result;
}

std::int32_t LibQueryInterface(std::uint32_t index, void* reserved, CDevApiInterface** device) {
    return Through("LibQueryInterface", [&] {
        CDevApiInterface* inner = nullptr;
        const std::int32_t result = RealQueryInterface(index, reserved, device != nullptr ? &inner : nullptr);
        if (inner != nullptr) {
            std::unique_ptr<Device>& wrapper = g_loaded.devices.at(Is("LibQueryInterface", "off") ? 0 : index);
            if (!wrapper) {
                wrapper = std::make_unique<Device>(inner);
            }
            *device = wrapper.get();
        }
        return result;
    });
}
