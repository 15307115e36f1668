#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "check/Trial.h"
#include "oko/CDevApiInterface.h"

namespace check {

/// The slots of the devices and channels, each call told before it is made.

/// A read's result, and what it wrote; nothing when it left the number alone.
struct CheckedRead {
    std::int32_t result = 0;
    std::optional<double> value;
};

/// "0 and 36.4", "-1 and nothing".
std::string ReadText(const CheckedRead& read);

/// One channel of whatever kind.
class WatchedChannel {
 public:
    using AnyChannel =
        std::variant<CDevApiInterface_Temperature*, CDevApiInterface_GasConcentration*, CDevApiInterface_Humidifier*>;

    WatchedChannel(Trial& trial, AnyChannel channel, std::uint32_t index)
        : m_pTrial(&trial), m_channel(channel), m_nIndex(index) {}

    /// "GetCurrentTemperature(0)", for sentences about it.
    std::string CurrentName() const;
    std::string TargetName() const;
    std::string SetName(double value) const;

    CheckedRead Current() const;
    CheckedRead Target() const;
    std::int32_t SetTarget(double value) const;
    std::uint32_t State() const;
    std::int32_t SetTolerance(double below, double above) const;
    std::pair<double, double> Tolerance() const;
    bool HasFeature(std::int32_t feature) const;
    std::int32_t SetEnabled(std::uint8_t flag) const;
    std::int32_t NoOperation() const;
    void* Delete() const;

    /// With a buffer of that many characters; throws CheckFailed where it writes behind it.
    std::string Name(std::int32_t length = oko::kChannelNameLength - 1) const;

    /// What each slot that takes a pointer gives for null.
    std::vector<std::pair<std::string, std::int32_t>> NullResults() const;

    CDevApiInterface_Temperature* AsTemperature() const;
    const AnyChannel& Kind() const { return m_channel; }
    void* Address() const;
    std::uint32_t Index() const { return m_nIndex; }
    Trial& Owner() const { return *m_pTrial; }

 private:
    std::string Call(const char* slot, const std::string& arguments = {}) const;

    Trial* m_pTrial;
    AnyChannel m_channel;
    std::uint32_t m_nIndex;
};

class WatchedDevice {
 public:
    /// The library's device at this index. Throws CheckFailed where it has none.
    WatchedDevice(Trial& trial, std::uint32_t index);

    std::int32_t Init() const;
    std::int32_t InitWithoutCallback() const;
    void Close() const;
    std::int32_t ApplyConnection(const wchar_t* text) const;
    std::int32_t ApplyConfiguration(const wchar_t* text) const;
    std::int32_t ShowConfiguration(wchar_t* text, std::int32_t size) const;
    std::int32_t ShowConnection(wchar_t* text, std::int32_t length) const;
    oko::WindowHandle CreateValuePanel(oko::DialogProcedure* procedure) const;
    bool Unused2() const;
    std::int32_t Unused8() const;

    std::int32_t TemperatureCount() const;
    std::int32_t GasCount() const;
    std::int32_t HumidityCount() const;

    /// Nothing where the library left the pointer as it was.
    std::optional<WatchedChannel> FindTemperature(std::uint32_t index) const;
    std::optional<WatchedChannel> FindGas(std::uint32_t index) const;
    std::optional<WatchedChannel> FindHumidity(std::uint32_t index) const;

    /// Throws CheckFailed where there is none.
    WatchedChannel Temperature(std::uint32_t index) const;
    WatchedChannel Gas(std::uint32_t index) const;
    WatchedChannel Humidity(std::uint32_t index) const;

    /// The live ones of each kind, in the device's order.
    std::vector<WatchedChannel> Channels() const;

    Trial& Owner() const { return *m_pTrial; }
    void* Address() const { return m_pDevice; }

 private:
    Trial* m_pTrial;
    CDevApiInterface* m_pDevice = nullptr;
    std::string m_name;  // "incubator"
};

/// The device, set up on COM 3, with what was sent for it forgotten. It is closed at the end of a check that goes well.
WatchedDevice StartIncubator(Trial& trial);
WatchedDevice StartSimulator(Trial& trial);

}  // namespace check
