#pragma once

#include <atomic>
#include <cstdint>

#include "channels/SharedValues.h"
#include "oko/CDevApiInterface_GasConcentration.h"
#include "oko/CDevApiInterface_Humidifier.h"

class CDevApiInterface_Impl;

/// One humidifier. The slots are described in oko/CDevApiInterface_Humidifier.h.
class CDevApiInterface_Humidifier_Impl final : public CDevApiInterface_Humidifier {
 public:
    /// `device` owns the channel, at place `index` of its humidity array, and outlives it. Seeds the random numbers.
    CDevApiInterface_Humidifier_Impl(CDevApiInterface_Impl& device, std::int32_t index) noexcept;

    std::int32_t SetEnabled(std::uint8_t flag) noexcept override;
    std::int32_t GetName(wchar_t* buffer, std::int32_t length) noexcept override;
    std::int32_t NoOperation() noexcept override;
    std::int32_t SetTargetHumidity(double value) noexcept override;
    std::int32_t GetTargetHumidity(double* value) noexcept override;
    std::int32_t GetCurrentHumidity(double* value) noexcept override;
    std::int32_t GetHumidityState(std::uint32_t* state) noexcept override;
    std::int32_t SetTolerance(double below, double above) noexcept override;
    std::int32_t GetTolerance(double* below, double* above) noexcept override;
    bool HasFeature(std::int32_t feature) noexcept override;
    void* DeletingDestructor(unsigned flags) noexcept override;

    SharedAddress m_address;
    std::int32_t m_bLogCommunication;  // kept, but this class sends its lines whatever it says
    CDevApiInterface_Impl* m_pDevice;
    std::int32_t m_iIndex;
    SharedDouble m_dCurrent = 55.0;                                     // percent relative humidity
    SharedDouble m_dTarget = 55.0;                                      // percent relative humidity
    SharedInt m_iState = static_cast<std::int32_t>(oko::kOutsideBand);  // last found; nothing reads it
    SharedDouble m_dToleranceBelow = 0.5;
    SharedDouble m_dToleranceAbove = 2.0;
    double m_dMin = 0.0;  // both guarded by m_csCatalogue
    double m_dMax = 0.0;
    std::atomic<std::uint8_t> m_bEnabled = 1;  // the configuration dialog asks for it
};
