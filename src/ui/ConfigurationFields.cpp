#include "ui/ConfigurationFields.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/Numbers.h"
#include "base/Scan.h"
#include "catalogue/Catalogue.h"
#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "channels/CDevApiInterface_Humidifier_Impl.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/OwnSlots.h"
#include "link/Exchange.h"
#include "link/Products.h"
#include "ui/resources/ResourceIds.h"

namespace {

/// The two fields of one tolerance, and how its numbers are shown.
struct FieldPair {
    int below;
    int above;
    int decimals;
};

// kept: docs/oddities.md#tolerances-as-shown
constexpr FieldPair kTemperatureFields{IDC_TEMPERATURE_BELOW, IDC_TEMPERATURE_ABOVE, 1};
constexpr FieldPair kCo2Fields{IDC_CO2_BELOW, IDC_CO2_ABOVE, 2};
constexpr FieldPair kO2Fields{IDC_O2_BELOW, IDC_O2_ABOVE, 2};
constexpr FieldPair kHumidityFields{IDC_HUMIDITY_BELOW, IDC_HUMIDITY_ABOVE, 0};

/// Asked product by product, and so only where there is one.
// kept: docs/oddities.md#through-the-own-slot
bool IsHumidityPresent(CDevApiInterface_Impl& device) noexcept {
    const auto live =
        std::clamp(ThroughSlots<CDevApiInterface>(device).GetHumidifierCount(), 0, CDevApiInterface_Impl::kHumidifiers);
    return ProductAt(device, 0).has_value() &&
           std::any_of(device.m_pHumidifier.begin(), device.m_pHumidifier.begin() + live,
                       [](const CDevApiInterface_Humidifier_Impl* channel) {
                           return channel != nullptr && channel->m_bEnabled != 0;
                       });
}

std::wstring FormatField(double value, int decimals) {
    const NumberText digits = FormatFixed(value, decimals);
    return {digits.view().begin(), digits.view().end()};
}

FieldView& FieldOf(ConfigurationView& view, int id) { return *std::ranges::find(view.fields, id, &FieldView::id); }

template <class Channel>
void ShowTolerance(ConfigurationView& view, const FieldPair& pair, const Channel& channel) {
    FieldOf(view, pair.below).text = FormatField(Get(channel.m_dToleranceBelow), pair.decimals);
    FieldOf(view, pair.above).text = FormatField(Get(channel.m_dToleranceAbove), pair.decimals);
}

/// The fields of a gas channel; none when it controls neither gas.
std::optional<FieldPair> FieldsOf(const CDevApiInterface_GasConcentration_Impl& channel) noexcept {
    switch (GasKindOf(Get(channel.m_address))) {
        case GasKind::Co2:
            return kCo2Fields;
        case GasKind::O2:
            return kO2Fields;
        case GasKind::Neither:
            break;
    }
    return std::nullopt;
}

/// The dialog knows only the first two gas channels.
constexpr std::size_t kDialogGasChannels = 2;

constexpr std::size_t kMaxFieldLength = 255;

/// Reads one field. Text that is no number, or none that is finite, gives 0; an empty field gives nothing.
// kept: docs/oddities.md#tolerances-unchecked
std::optional<double> ReadField(const FieldReader& fieldText, int id) {
    const std::wstring text = fieldText(id);
    if (text.empty()) {
        return std::nullopt;
    }
    double value = 0.0;
    Scanner(std::wstring_view(text).substr(0, kMaxFieldLength)).Double(value);
    return value;
}

template <class Channel>
bool TakeTolerance(const FieldReader& fieldText, const FieldPair& pair, Channel& channel) {
    const auto below = ReadField(fieldText, pair.below);
    if (!below) {
        return false;
    }
    Put(channel.m_dToleranceBelow, *below);
    const auto above = ReadField(fieldText, pair.above);
    if (!above) {
        return false;
    }
    Put(channel.m_dToleranceAbove, *above);
    return true;
}

/// Takes all fields in the dialog's order, up to the first that is empty.
bool TakeTolerances(CDevApiInterface_Impl& device, const FieldReader& fieldText) {
    if (auto* const temperature = device.m_pTemperature[0].Get();
        temperature != nullptr && !TakeTolerance(fieldText, kTemperatureFields, *temperature)) {
        return false;
    }
    for (std::size_t i = 0; i < kDialogGasChannels; ++i) {
        auto* const gas = device.m_pGasConcentration[i].Get();
        const auto fields = gas != nullptr ? FieldsOf(*gas) : std::nullopt;
        if (fields && !TakeTolerance(fieldText, *fields, *gas)) {
            return false;
        }
    }
    auto* const humidifier = device.m_pHumidifier[0].Get();
    // kept: docs/oddities.md#humidity-that-keeps-ok-out
    return humidifier == nullptr || ThroughSlots<CDevApiInterface>(device).GetHumidifierCount() < 1 ||
           TakeTolerance(fieldText, kHumidityFields, *humidifier);
}

void WriteAirMode(CDevApiInterface_Impl& device) noexcept {
    const LinkOperation operation = LinkOperation::OverThisLink(device);
    for (std::size_t i = 0; const auto product = ProductAt(device, i); ++i) {
        if (HasAirMode(*product) && ListsParameter(device, i, parameter::kAirModeSwitch)) {
            Tell(operation,
                 FormatCommand(command::kWriteParam, {*product, parameter::kAirModeSwitch, int{device.m_bAirMode}}));
        }
    }
}

}  // namespace

ConfigurationView DescribeConfiguration(CDevApiInterface_Impl& device) {
    const bool temperature = AnyProduct(device, IsTemperatureProduct);
    const bool co2 = AnyProduct(device, HasCo2);
    const bool o2 = AnyProduct(device, HasO2);
    const bool airMode = AnyProduct(device, HasAirMode);
    const bool humidity = IsHumidityPresent(device);
    ConfigurationView view{{{
                               {kTemperatureFields.below, temperature, {}},
                               {kTemperatureFields.above, temperature, {}},
                               {kCo2Fields.below, co2, {}},
                               {kCo2Fields.above, co2, {}},
                               {kO2Fields.below, o2, {}},
                               {kO2Fields.above, o2, {}},
                               {kHumidityFields.below, humidity, {}},
                               {kHumidityFields.above, humidity, {}},
                           }},
                           airMode && !device.m_bWatchOnly,
                           airMode && device.m_bAirMode != 0,
                           AnyParameter(device)};

    // kept: docs/oddities.md#filled-though-disabled
    if (const auto* const channel = device.m_pTemperature[0].Get()) {
        ShowTolerance(view, kTemperatureFields, *channel);
    }
    for (std::size_t i = 0; i < kDialogGasChannels; ++i) {
        const auto* const channel = device.m_pGasConcentration[i].Get();
        if (const auto fields = channel != nullptr ? FieldsOf(*channel) : std::nullopt) {
            ShowTolerance(view, *fields, *channel);
        }
    }
    if (const auto* const channel = device.m_pHumidifier[0].Get(); channel != nullptr && humidity) {
        ShowTolerance(view, kHumidityFields, *channel);
    }
    return view;
}

// kept: docs/oddities.md#empty-field-stays-busy
bool TakeConfiguration(CDevApiInterface_Impl& device, const FieldReader& fieldText, bool airModeChecked) {
    device.m_bBusy = true;
    if (!TakeTolerances(device, fieldText)) {
        return false;
    }
    // A device that only watches cannot write another air mode. Its check box is disabled.
    const bool writable = !device.m_bWatchOnly || airModeChecked == (device.m_bAirMode != 0);
    if (writable) {
        device.m_bAirMode = airModeChecked ? 1 : 0;
        WriteAirMode(device);
    }
    device.m_bBusy = false;
    return writable;
}
