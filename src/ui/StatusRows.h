#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "link/Products.h"

/// The rows of the status report. Labels and units are printed as they stand.
// kept: docs/oddities.md#labels-as-they-stand, docs/oddities.md#english-everywhere

/// How a row's parameter is read.
enum class RowClass {
    Identity,  // as the catalogue keeps it; never changes
    Measured,  // only when there is a value other than 0
    State      // whatever it says
};

struct StatusRow {
    std::uint32_t parameter;
    RowClass rowClass;
    std::wstring_view label;
    std::wstring_view unit;
};

inline constexpr std::array<StatusRow, 14> kH201Rows{{
    {64, RowClass::Identity, L"H201 Product Code", L""},
    {65, RowClass::Identity, L"H201 Production Date", L""},
    {66, RowClass::Identity, L"H201 Service Date", L""},
    {67, RowClass::Identity, L"H201 Serial Number", L""},
    {68, RowClass::Identity, L"H201 Software Version", L""},
    {73, RowClass::Measured, L"H201 Time when Air Heater Relay is Active", L"%"},
    {83, RowClass::State, L"H201 Control Mode", L""},
    {85, RowClass::State, L"H201 Fast Heating", L""},
    {97, RowClass::Measured, L"H201 Thermal Power of Air Heater", L"W"},
    {98, RowClass::Measured, L"H201 Fan Speed", L"rpm"},
    {128, RowClass::State, L"H201 Status", L""},
    {184, RowClass::Measured, L"H201 Prefilter Last Time Change", L"days"},
    {185, RowClass::Measured, L"H201 HEPA Filter Last Time Change", L"days"},
    {186, RowClass::State, L"H201 Filter Replacement Alert", L""},
}};

inline constexpr std::array<StatusRow, 16> kH301Rows{{
    {64, RowClass::Identity, L"H301 Product Code", L""},
    {65, RowClass::Identity, L"H301 Production Date", L""},
    {66, RowClass::Identity, L"H301 Service Date", L""},
    {67, RowClass::Identity, L"H301 Serial Number", L""},
    {68, RowClass::Identity, L"H301 Software Version", L""},
    {103, RowClass::Measured, L"H301 Time when Base Ralay is Active", L"%"},
    {104, RowClass::Measured, L"H301 Time when Lid Relay is Active", L"%"},
    {105, RowClass::Measured, L"H301 Time when Humidity #1 Relay is Active", L"%"},
    {106, RowClass::Measured, L"H301 Time when Humidity #2 Relay is Active", L"%"},
    {115, RowClass::Measured, L"H301 Base Offset Temperature", L"\u00B0C"},
    {116, RowClass::Measured, L"H301 Lid Offset Temperature", L"\u00B0C"},
    {117, RowClass::Measured, L"H301 Humidity #1 Offset Temperature", L"\u00B0C"},
    {118, RowClass::Measured, L"H301 Humidity #2 Offset Temperature", L"\u00B0C"},
    {128, RowClass::State, L"H301 Status", L""},
    {190, RowClass::Measured, L"H301 Time when Objective Heater Relay is Active", L"%"},
    {192, RowClass::Measured, L"H301 Objective Heater Offset Temperature", L"\u00B0C"},
}};

inline constexpr std::array<StatusRow, 23> kCo2Rows{{
    {31, RowClass::Identity, L"CO2 Product Name #1", L""},
    {32, RowClass::Identity, L"CO2 Production Date #1", L""},
    {33, RowClass::Identity, L"CO2 Service Date #1", L""},
    {34, RowClass::Identity, L"CO2 Serial Number #1", L""},
    {35, RowClass::Identity, L"CO2 Software Version #1", L""},
    {58, RowClass::Identity, L"CO2 Product Name #2", L""},
    {59, RowClass::Identity, L"CO2 Production Date #2", L""},
    {60, RowClass::Identity, L"CO2 Service Date #2", L""},
    {61, RowClass::Identity, L"CO2 Serial Number #2", L""},
    {62, RowClass::Identity, L"CO2 Software Version", L""},
    {13, RowClass::Measured, L"CO2 The Duty Cycle of The Air Valve", L"%"},
    {15, RowClass::Measured, L"CO2 The Duty Cycle of The CO2 Valve", L"%"},
    {18, RowClass::Measured, L"CO2 Current Measured by Air Valve", L"mA"},
    {20, RowClass::Measured, L"CO2 Current Measured by CO2 Valve", L"mA"},
    {23, RowClass::Measured, L"CO2 Air Valve Opening", L"%"},
    {25, RowClass::Measured, L"CO2 CO2 Valve Opening", L"%"},
    {28, RowClass::Measured, L"CO2 Air flow rate", L"l/m"},
    {30, RowClass::Measured, L"CO2 CO2 flow rate", L"l/m"},
    {129, RowClass::State, L"CO2 Status", L""},
    {138, RowClass::Measured, L"CO2 Total flow rate", L"l/m"},
    {153, RowClass::Measured, L"CO2 Total flow rate Set Point", L"l/m"},
    {215, RowClass::Measured, L"CO2 Time when Sensing Cell Relay is Active", L"%"},
    {233, RowClass::State, L"CO2 Humidity Status", L""},
}};

inline constexpr std::array<StatusRow, 16> kO2Rows{{
    {31, RowClass::Identity, L"O2 Product Name", L""},
    {32, RowClass::Identity, L"O2 Production Date", L""},
    {33, RowClass::Identity, L"O2 Service Date", L""},
    {34, RowClass::Identity, L"O2 Serial Number", L""},
    {35, RowClass::Identity, L"O2 Software Version", L""},
    {13, RowClass::Measured, L"O2 The Duty Cycle of The Air Valve", L"%"},
    {14, RowClass::Measured, L"O2 The Duty Cycle of The Nitrogen Valve", L"%"},
    {18, RowClass::Measured, L"O2 Current Measured by Air Valve", L"mA"},
    {19, RowClass::Measured, L"O2 Current Measured by Nitrogen Valve", L"mA"},
    {23, RowClass::Measured, L"O2 Air Valve Opening", L"%"},
    {24, RowClass::Measured, L"O2 Nitrogen Valve Opening", L"%"},
    {28, RowClass::Measured, L"O2 Air flow rate", L"l/m"},
    {29, RowClass::Measured, L"O2 N2 flow rate", L"l/m"},
    {130, RowClass::State, L"O2 Status", L""},
    {138, RowClass::Measured, L"O2 Total flow rate", L"l/m"},
    {153, RowClass::Measured, L"O2 Total flow rate Set Point", L"l/m"},
}};

inline constexpr std::array<StatusRow, 26> kCo2O2Rows{{
    {31, RowClass::Identity, L"CO2/O2 Product Name", L""},
    {32, RowClass::Identity, L"CO2/O2 Production Date", L""},
    {33, RowClass::Identity, L"CO2/O2 Service Date", L""},
    {34, RowClass::Identity, L"CO2/O2 Serial Number", L""},
    {35, RowClass::Identity, L"CO2/O2 Software Version", L""},
    {13, RowClass::Measured, L"CO2/O2 The Duty Cycle of The Air Valve", L"%"},
    {14, RowClass::Measured, L"CO2/O2 The Duty Cycle of The Nitrogen Valve", L"%"},
    {15, RowClass::Measured, L"CO2/O2 The Duty Cycle of The CO2 Valve", L"%"},
    {18, RowClass::Measured, L"CO2/O2 Current Measured by Air Valve", L"mA"},
    {19, RowClass::Measured, L"CO2/O2 Current Measured by Nitrogen Valve", L"mA"},
    {20, RowClass::Measured, L"CO2/O2 Current Measured by CO2 Valve", L"mA"},
    {23, RowClass::Measured, L"CO2/O2 Air Valve Opening", L"%"},
    {24, RowClass::Measured, L"CO2/O2 Nitrogen Valve Opening", L"%"},
    {25, RowClass::Measured, L"CO2/O2 CO2 Valve Opening", L"%"},
    {28, RowClass::Measured, L"CO2/O2 Air flow rate", L"l/m"},
    {29, RowClass::Measured, L"CO2/O2 N2 flow rate", L"l/m"},
    {30, RowClass::Measured, L"CO2/O2 CO2 flow rate", L"l/m"},
    {129, RowClass::State, L"CO2/O2 CO2 Status", L""},
    {130, RowClass::State, L"CO2/O2 O2 Status", L""},
    {138, RowClass::Measured, L"CO2/O2 Total flow rate", L"l/m"},
    {150, RowClass::Measured, L"CO2/O2 O2 flow rate", L"l/m"},
    {151, RowClass::Measured, L"CO2/O2 The Duty Cycle of The O2 Valve", L"%"},
    {153, RowClass::Measured, L"CO2/O2 Total flow rate Set Point", L"l/m"},
    {214, RowClass::Measured, L"CO2/O2 Time when Humidifier Relay is Active", L"%"},
    {215, RowClass::Measured, L"CO2/O2 Time when Sensing Cell Relay is Active", L"%"},
    {233, RowClass::State, L"CO2/O2 Humidity Status", L""},
}};

inline constexpr std::array<StatusRow, 10> kH301HmRows{{
    {362, RowClass::Identity, L"H301-HM Product Name", L""},
    {363, RowClass::Identity, L"H301-HM Production Date", L""},
    {364, RowClass::Identity, L"H301-HM Service Date", L""},
    {365, RowClass::Identity, L"H301-HM Serial Number", L""},
    {366, RowClass::Identity, L"H301-HM Software Version", L""},
    {138, RowClass::Measured, L"H301-HM Total flow rate", L"l/m"},
    {214, RowClass::Measured, L"H301-HM Time when Humidifier Relay is Active", L"%"},
    {215, RowClass::Measured, L"H301-HM Time when Sensing Cell Relay is Active", L"%"},
    {233, RowClass::State, L"H301-HM Humidity Status", L""},
    {367, RowClass::Measured, L"H301-HM The Duty Cycle of The Total Flow Valve", L"%"},
}};

inline constexpr std::array<StatusRow, 10> kH101Rows{{
    {64, RowClass::Identity, L"H101 Product Code", L""},
    {65, RowClass::Identity, L"H101 Production Date", L""},
    {66, RowClass::Identity, L"H101 Service Date", L""},
    {67, RowClass::Identity, L"H101 Serial Number", L""},
    {68, RowClass::Identity, L"H101 Software Version", L""},
    {115, RowClass::Measured, L"H101 Base Offset Temperature", L"\u00B0C"},
    {118, RowClass::Measured, L"H101 Humidity #2 Offset Temperature", L"\u00B0C"},
    {128, RowClass::State, L"H101 Status", L""},
    {190, RowClass::Measured, L"H101 Time when Objective Heater Relay is Active", L"%"},
    {192, RowClass::Measured, L"H101 Objective Heater Offset Temperature", L"\u00B0C"},
}};

/// The rows of one product; none for the products without a report.
struct ProductRows {
    std::int32_t product;
    std::span<const StatusRow> rows;
};

inline constexpr std::array<ProductRows, 8> kProductRows{{
    {product::kH201, kH201Rows},
    {product::kH301, kH301Rows},
    {product::kCo2, kCo2Rows},
    {product::kO2, kO2Rows},
    {product::kMixer12, kCo2O2Rows},
    {product::kMixer13, kCo2O2Rows},
    {product::kH101, kH101Rows},
    {product::kActiveHumidifier, kH301HmRows},
}};
