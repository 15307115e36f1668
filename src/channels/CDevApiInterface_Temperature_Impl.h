#pragma once

#include <atomic>
#include <cstdint>

#include "channels/SharedValues.h"
#include "oko/CDevApiInterface_Temperature.h"

class CDevApiInterface_Impl;
class LinkOperation;

/// One temperature zone or sensor. The slots are described in oko/CDevApiInterface_Temperature.h.
class CDevApiInterface_Temperature_Impl final : public CDevApiInterface_Temperature {
 public:
    /// `device` owns the channel, at place `index` of its temperature array, and outlives it.
    CDevApiInterface_Temperature_Impl(CDevApiInterface_Impl& device, std::int32_t index) noexcept;

    std::int32_t SetEnabled(std::uint8_t flag) noexcept override;
    std::int32_t GetName(wchar_t* buffer, std::int32_t length) noexcept override;
    std::int32_t NoOperation() noexcept override;
    std::int32_t SetTargetTemperature(double value) noexcept override;
    std::int32_t GetTargetTemperature(double* value) noexcept override;
    std::int32_t GetCurrentTemperature(double* value) noexcept override;
    std::int32_t GetTemperatureState(std::uint32_t* state) noexcept override;
    std::int32_t SetTemperatureRate(double value) noexcept override;
    std::int32_t GetTemperatureStep(double* value) noexcept override;
    std::int32_t SetTolerance(double below, double above) noexcept override;
    std::int32_t GetTolerance(double* below, double* above) noexcept override;
    std::int32_t NotSupported() noexcept override;
    std::int32_t GetTemperatureLimits(double* min, double* max) noexcept override;
    bool HasFeature(std::int32_t feature) noexcept override;
    void* DeletingDestructor(unsigned flags) noexcept override;

    /// Reads the target back after it was sent. False when the server does not confirm it.
    bool ReadTargetBack(const LinkOperation& operation) noexcept;

    SharedAddress m_address;
    std::int32_t m_bLogCommunication;  // kept, but this class sends its lines whatever it says
    CDevApiInterface_Impl* m_pDevice;
    std::int32_t m_iIndex;
    SharedDouble m_dCurrent = 20.0;  // degrees Celsius
    SharedDouble m_dTarget = 37.0;   // degrees Celsius
    double m_dRate = 0.4;            // signed heating rate of the simulation
    SharedDouble m_dToleranceBelow = 0.2;
    SharedDouble m_dToleranceAbove = 0.2;
    double m_dMin = 20.0;  // both guarded by m_csCatalogue
    double m_dMax = 50.0;
    SharedInt m_iState = static_cast<std::int32_t>(oko::kTemperatureNone);  // last found; nothing reads it
    std::int64_t m_llFrequency;                                             // of the performance counter
    std::int64_t m_llLastTick = 0;  // of the simulation's last step; 0 before the first

    std::atomic<bool> m_bTargetTimedOut = false;  // the last read of the target had no answer in time
};

/// The temperature to send for a wanted one. A number that is none becomes the lowest target.
double ClampTemperatureTarget(double value, double min, double max) noexcept;
