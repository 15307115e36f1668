#pragma once

#include <cstdint>

#include "oko/CDevApiInterface.h"

/// A live channel of a device, got as a host gets it.

inline CDevApiInterface_Temperature& TemperatureOf(CDevApiInterface& device, std::uint32_t index) {
    CDevApiInterface_Temperature* channel = nullptr;
    device.GetTemperature(index, &channel);
    return *channel;
}

inline CDevApiInterface_GasConcentration& GasConcentrationOf(CDevApiInterface& device, std::uint32_t index) {
    CDevApiInterface_GasConcentration* channel = nullptr;
    device.GetGasConcentration(index, &channel);
    return *channel;
}

inline CDevApiInterface_Humidifier& HumidifierOf(CDevApiInterface& device, std::uint32_t index) {
    CDevApiInterface_Humidifier* channel = nullptr;
    device.GetHumidifier(index, &channel);
    return *channel;
}
