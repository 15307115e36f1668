#include "check/Watched.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "check/Trial.h"
#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "text/Number.h"
#include "text/Text.h"

namespace check {

namespace {

/// No device gives this number.
constexpr double kUntouched = -54'321.125;

/// How each kind calls what all of them have.
template <class Interface>
struct Slots;

template <>
struct Slots<CDevApiInterface_Temperature> {
    using Type = CDevApiInterface_Temperature;
    static constexpr const char* kKind = "Temperature";
    static constexpr auto kSet = &Type::SetTargetTemperature;
    static constexpr auto kTarget = &Type::GetTargetTemperature;
    static constexpr auto kCurrent = &Type::GetCurrentTemperature;
    static constexpr auto kState = &Type::GetTemperatureState;
};

template <>
struct Slots<CDevApiInterface_GasConcentration> {
    using Type = CDevApiInterface_GasConcentration;
    static constexpr const char* kKind = "GasConcentration";
    static constexpr auto kSet = &Type::SetTargetGasConcentration;
    static constexpr auto kTarget = &Type::GetTargetGasConcentration;
    static constexpr auto kCurrent = &Type::GetCurrentGasConcentration;
    static constexpr auto kState = &Type::GetGasConcentrationState;
};

template <>
struct Slots<CDevApiInterface_Humidifier> {
    using Type = CDevApiInterface_Humidifier;
    static constexpr const char* kKind = "Humidity";
    static constexpr auto kSet = &Type::SetTargetHumidity;
    static constexpr auto kTarget = &Type::GetTargetHumidity;
    static constexpr auto kCurrent = &Type::GetCurrentHumidity;
    static constexpr auto kState = &Type::GetHumidityState;
};

template <class Channel>
using SlotsOf = Slots<std::remove_pointer_t<std::decay_t<Channel>>>;

const char* KindOf(const WatchedChannel::AnyChannel& channel) {
    return std::visit([](auto* any) { return SlotsOf<decltype(any)>::kKind; }, channel);
}

std::string NumberText(double number) {
    return std::isfinite(number) ? FormatShortest(number) : std::to_string(number);
}

template <class Interface>
std::optional<WatchedChannel> Find(const WatchedDevice& device, const std::string& name, std::uint32_t index,
                                   CDevApiInterface* object,
                                   std::int32_t (CDevApiInterface::*get)(std::uint32_t, Interface**)) {
    Interface* channel = nullptr;
    const std::string call = name + "(" + std::to_string(index) + ")";
    ExpectDone(call, device.Owner().Enter(call, [&] { return (object->*get)(index, &channel); }));
    return channel != nullptr ? std::optional(WatchedChannel(device.Owner(), channel, index)) : std::nullopt;
}

WatchedChannel Demand(std::optional<WatchedChannel> channel, const char* name, std::uint32_t index) {
    if (!channel) {
        throw CheckFailed(std::string(name) + "(" + std::to_string(index) + "): expected a channel, got none");
    }
    return *channel;
}

WatchedDevice Start(Trial& trial, std::uint32_t index) {
    const WatchedDevice device(trial, index);
    ExpectDone("ApplyConnection", device.ApplyConnection(L"m_iComPort 3"));
    ExpectDone("Init", device.Init());
    trial.AtEnd([device] { device.Close(); });
    trial.Commands();
    Trial::TakeHostCalls();
    return device;
}

}  // namespace

std::string ReadText(const CheckedRead& read) {
    return std::to_string(read.result) + " and " + (read.value ? NumberText(*read.value) : "nothing");
}

std::string WatchedChannel::Call(const char* slot, const std::string& arguments) const {
    return std::string(slot) + "(" + std::to_string(m_nIndex) + (arguments.empty() ? "" : ", " + arguments) + ")";
}

std::string WatchedChannel::CurrentName() const {
    return Call((std::string("GetCurrent") + KindOf(m_channel)).c_str());
}
std::string WatchedChannel::TargetName() const { return Call((std::string("GetTarget") + KindOf(m_channel)).c_str()); }
std::string WatchedChannel::SetName(double value) const {
    return Call((std::string("SetTarget") + KindOf(m_channel)).c_str(), NumberText(value));
}

CheckedRead WatchedChannel::Current() const {
    double value = kUntouched;
    const std::int32_t result = m_pTrial->Enter(CurrentName(), [&] {
        return std::visit([&](auto* channel) { return (channel->*SlotsOf<decltype(channel)>::kCurrent)(&value); },
                          m_channel);
    });
    return {result, value == kUntouched ? std::nullopt : std::optional(value)};
}

CheckedRead WatchedChannel::Target() const {
    double value = kUntouched;
    const std::int32_t result = m_pTrial->Enter(TargetName(), [&] {
        return std::visit([&](auto* channel) { return (channel->*SlotsOf<decltype(channel)>::kTarget)(&value); },
                          m_channel);
    });
    return {result, value == kUntouched ? std::nullopt : std::optional(value)};
}

std::int32_t WatchedChannel::SetTarget(double value) const {
    return m_pTrial->Enter(SetName(value), [&] {
        return std::visit([&](auto* channel) { return (channel->*SlotsOf<decltype(channel)>::kSet)(value); },
                          m_channel);
    });
}

std::uint32_t WatchedChannel::State() const {
    constexpr std::uint32_t kNone = 0xABCDEF;
    std::uint32_t state = kNone;
    const std::string name = Call((std::string("Get") + KindOf(m_channel) + "State").c_str());
    ExpectDone(name, m_pTrial->Enter(name, [&] {
        return std::visit([&](auto* channel) { return (channel->*SlotsOf<decltype(channel)>::kState)(&state); },
                          m_channel);
    }));
    Expect(state != kNone, name, "a state", "nothing");
    return state;
}

std::int32_t WatchedChannel::SetTolerance(double below, double above) const {
    return m_pTrial->Enter(Call("SetTolerance", NumberText(below) + ", " + NumberText(above)), [&] {
        return std::visit([&](auto* channel) { return channel->SetTolerance(below, above); }, m_channel);
    });
}

std::pair<double, double> WatchedChannel::Tolerance() const {
    double below = kUntouched;
    double above = kUntouched;
    const std::string name = Call("GetTolerance");
    ExpectDone(name, m_pTrial->Enter(name, [&] {
        return std::visit([&](auto* channel) { return channel->GetTolerance(&below, &above); }, m_channel);
    }));
    return {below, above};
}

bool WatchedChannel::HasFeature(std::int32_t feature) const {
    return m_pTrial->Enter(Call("HasFeature", std::to_string(feature)), [&] {
        return std::visit([&](auto* channel) { return channel->HasFeature(feature); }, m_channel);
    });
}

std::int32_t WatchedChannel::SetEnabled(std::uint8_t flag) const {
    return m_pTrial->Enter(Call("SetEnabled", std::to_string(flag)), [&] {
        return std::visit([&](auto* channel) { return channel->SetEnabled(flag); }, m_channel);
    });
}

std::int32_t WatchedChannel::NoOperation() const {
    return m_pTrial->Enter(Call("NoOperation"),
                           [&] { return std::visit([](auto* channel) { return channel->NoOperation(); }, m_channel); });
}

void* WatchedChannel::Delete() const {
    return m_pTrial->Enter(Call("DeletingDestructor", "1"), [&] {
        return std::visit([](auto* channel) { return channel->DeletingDestructor(1); }, m_channel);
    });
}

std::string WatchedChannel::Name(std::int32_t length) const {
    constexpr wchar_t kBehind = L'#';
    constexpr std::size_t kSize = 256;
    std::array<wchar_t, kSize> buffer{};
    std::fill(buffer.begin() + length, buffer.end(), kBehind);
    const std::string name = Call("GetName", std::to_string(length));
    ExpectDone(name, m_pTrial->Enter(name, [&] {
        return std::visit([&](auto* channel) { return channel->GetName(buffer.data(), length); }, m_channel);
    }));
    const bool kept = std::all_of(buffer.begin() + length, buffer.end(), [](wchar_t c) { return c == kBehind; });
    Expect(kept, name, "that nothing is written behind the buffer", "something there");
    buffer[static_cast<std::size_t>(length)] = L'\0';
    return ToUtf8(buffer.data());
}

std::vector<std::pair<std::string, std::int32_t>> WatchedChannel::NullResults() const {
    std::vector<std::pair<std::string, std::int32_t>> results;
    const auto note = [&](const std::string& slot, auto call) {
        const std::string name = Call(slot.c_str(), "null");
        results.emplace_back(name, m_pTrial->Enter(name, [&] { return std::visit(call, m_channel); }));
    };
    const std::string kind = KindOf(m_channel);
    note("GetCurrent" + kind, [](auto* c) { return (c->*SlotsOf<decltype(c)>::kCurrent)(nullptr); });
    note("GetTarget" + kind, [](auto* c) { return (c->*SlotsOf<decltype(c)>::kTarget)(nullptr); });
    note("Get" + kind + "State", [](auto* c) { return (c->*SlotsOf<decltype(c)>::kState)(nullptr); });
    note("GetTolerance", [](auto* c) { return c->GetTolerance(nullptr, nullptr); });
    note("GetName", [](auto* c) { return c->GetName(nullptr, 10); });
    return results;
}

CDevApiInterface_Temperature* WatchedChannel::AsTemperature() const {
    return std::get<CDevApiInterface_Temperature*>(m_channel);
}

void* WatchedChannel::Address() const {
    return std::visit([](auto* channel) -> void* { return channel; }, m_channel);
}

WatchedDevice::WatchedDevice(Trial& trial, std::uint32_t index)
    : m_pTrial(&trial), m_name(index == oko::kSimulatorDevice ? "simulator" : "incubator") {
    const std::string name = "LibQueryInterface(" + std::to_string(index) + ")";
    ExpectDone(name, trial.Enter(name, [&] { return trial.QueryInterface()(index, nullptr, &m_pDevice); }));
    Expect(m_pDevice != nullptr, name, "a device", "null");
}

std::int32_t WatchedDevice::Init() const {
    return m_pTrial->Enter("Init", [this] { return m_pDevice->Init(&Trial::Callback, nullptr); });
}

std::int32_t WatchedDevice::InitWithoutCallback() const {
    return m_pTrial->Enter("Init(null)", [this] { return m_pDevice->Init(nullptr, nullptr); });
}

void WatchedDevice::Close() const {
    m_pTrial->Enter("Close", [this] { m_pDevice->Close(); });
}

std::int32_t WatchedDevice::ApplyConnection(const wchar_t* text) const {
    return m_pTrial->Enter("ApplyConnection", [&] { return m_pDevice->ApplyConnection(text); });
}

std::int32_t WatchedDevice::ApplyConfiguration(const wchar_t* text) const {
    return m_pTrial->Enter("ApplyConfiguration", [&] { return m_pDevice->ApplyConfiguration(text); });
}

std::int32_t WatchedDevice::ShowConfiguration(wchar_t* text, std::int32_t size) const {
    return m_pTrial->Enter("ShowConfiguration", [&] { return m_pDevice->ShowConfiguration(text, size, nullptr); });
}

std::int32_t WatchedDevice::ShowConnection(wchar_t* text, std::int32_t length) const {
    return m_pTrial->Enter("ShowConnection", [&] { return m_pDevice->ShowConnection(text, length, nullptr); });
}

oko::WindowHandle WatchedDevice::CreateValuePanel(oko::DialogProcedure* procedure) const {
    return m_pTrial->Enter("CreateValuePanel", [&] { return m_pDevice->CreateValuePanel(nullptr, procedure); });
}

bool WatchedDevice::Unused2() const {
    return m_pTrial->Enter("Unused2", [this] { return m_pDevice->Unused2(); });
}

std::int32_t WatchedDevice::Unused8() const {
    return m_pTrial->Enter("Unused8", [this] { return m_pDevice->Unused8(); });
}

std::int32_t WatchedDevice::TemperatureCount() const {
    return m_pTrial->Enter("GetTemperatureCount", [this] { return m_pDevice->GetTemperatureCount(); });
}

std::int32_t WatchedDevice::GasCount() const {
    return m_pTrial->Enter("GetGasConcentrationCount", [this] { return m_pDevice->GetGasConcentrationCount(); });
}

std::int32_t WatchedDevice::HumidityCount() const {
    return m_pTrial->Enter("GetHumidifierCount", [this] { return m_pDevice->GetHumidifierCount(); });
}

std::optional<WatchedChannel> WatchedDevice::FindTemperature(std::uint32_t index) const {
    return Find(*this, "GetTemperature", index, m_pDevice, &CDevApiInterface::GetTemperature);
}

std::optional<WatchedChannel> WatchedDevice::FindGas(std::uint32_t index) const {
    return Find(*this, "GetGasConcentration", index, m_pDevice, &CDevApiInterface::GetGasConcentration);
}

std::optional<WatchedChannel> WatchedDevice::FindHumidity(std::uint32_t index) const {
    return Find(*this, "GetHumidifier", index, m_pDevice, &CDevApiInterface::GetHumidifier);
}

WatchedChannel WatchedDevice::Temperature(std::uint32_t index) const {
    return Demand(FindTemperature(index), "GetTemperature", index);
}

WatchedChannel WatchedDevice::Gas(std::uint32_t index) const {
    return Demand(FindGas(index), "GetGasConcentration", index);
}

WatchedChannel WatchedDevice::Humidity(std::uint32_t index) const {
    return Demand(FindHumidity(index), "GetHumidifier", index);
}

std::vector<WatchedChannel> WatchedDevice::Channels() const {
    std::vector<WatchedChannel> channels;
    const auto add = [&](std::int32_t count, auto get) {
        for (std::int32_t i = 0; i < count; ++i) {
            channels.push_back((this->*get)(static_cast<std::uint32_t>(i)));
        }
    };
    add(TemperatureCount(), &WatchedDevice::Temperature);
    add(GasCount(), &WatchedDevice::Gas);
    add(HumidityCount(), &WatchedDevice::Humidity);
    return channels;
}

WatchedDevice StartIncubator(Trial& trial) { return Start(trial, oko::kRealDevice); }

WatchedDevice StartSimulator(Trial& trial) { return Start(trial, oko::kSimulatorDevice); }

}  // namespace check
