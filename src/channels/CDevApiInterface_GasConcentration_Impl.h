#pragma once

#include <cstdint>

#include "channels/SharedValues.h"
#include "oko/CDevApiInterface_GasConcentration.h"

class CDevApiInterface_Impl;

/// One CO2 or O2 controller. The slots are described in oko/CDevApiInterface_GasConcentration.h.
class CDevApiInterface_GasConcentration_Impl final : public CDevApiInterface_GasConcentration {
 public:
    /// `device` owns the channel, at place `index` of its gas array, and outlives it. Seeds the random numbers.
    CDevApiInterface_GasConcentration_Impl(CDevApiInterface_Impl& device, std::int32_t index) noexcept;

    std::int32_t SetEnabled(std::uint8_t flag) noexcept override;
    std::int32_t GetName(wchar_t* buffer, std::int32_t length) noexcept override;
    std::int32_t NoOperation() noexcept override;
    std::int32_t SetTargetGasConcentration(double value) noexcept override;
    std::int32_t GetTargetGasConcentration(double* value) noexcept override;
    std::int32_t GetCurrentGasConcentration(double* value) noexcept override;
    std::int32_t GetGasConcentrationState(std::uint32_t* state) noexcept override;
    std::int32_t SetTolerance(double below, double above) noexcept override;
    std::int32_t GetTolerance(double* below, double* above) noexcept override;
    bool HasFeature(std::int32_t feature) noexcept override;
    void* DeletingDestructor(unsigned flags) noexcept override;

    /// Reads the product's air-mode state: 1 on, 0 off. Holds the data lock while the server answers. Returns 0, or -1
    /// when the product has no air mode or does not tell.
    std::int32_t ReadAirMode(std::uint8_t* status) noexcept;

    SharedAddress m_address;           // its channel is 0, or 1 for a product's second controller
    std::int32_t m_bLogCommunication;  // kept: docs/oddities.md#log-flag-of-birth
    CDevApiInterface_Impl* m_pDevice;
    std::int32_t m_iIndex;
    SharedDouble m_dCurrent = 5.0;                                      // percent
    SharedDouble m_dTarget = 20.0;                                      // percent
    SharedInt m_iState = static_cast<std::int32_t>(oko::kOutsideBand);  // last found; nothing reads it
    SharedDouble m_dToleranceBelow = 0.5;
    SharedDouble m_dToleranceAbove = 0.5;
    double m_dMin = 0.0;  // both guarded by m_csCatalogue
    double m_dMax = 0.0;
    std::uint32_t m_uStatusCount = 0;  // reads in a row that differed from the device's air mode

 private:
    void WatchAirMode() noexcept;
};
