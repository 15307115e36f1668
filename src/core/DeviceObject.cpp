// The device object's life and the slots that answer from its fields alone.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "catalogue/ProductRecord.h"  // IWYU pragma: keep (destroying m_products needs it)
#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "channels/CDevApiInterface_Humidifier_Impl.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/ChannelSlot.h"
#include "link/Products.h"
#include "link/SimulatorTables.h"
#include "oko/LibQuery.h"

namespace {

constexpr std::int32_t kSimulatorComPort = 1;

/// Makes a channel for each empty place. The channels own themselves from here on: they are freed through their
/// deleting destructors, as the host's object layout wants it.
template <class Channel, std::size_t Count>
void FillChannels(CDevApiInterface_Impl& device, std::array<ChannelSlot<Channel>, Count>& channels) {
    for (std::size_t i = 0; i < Count; ++i) {
        if (channels[i] == nullptr) {
            channels[i].Set(std::make_unique<Channel>(device, static_cast<std::int32_t>(i)).release());
        }
    }
}

template <class Channel, std::size_t Count>
void DeleteChannels(std::array<ChannelSlot<Channel>, Count>& channels) noexcept {
    constexpr unsigned kFreeMemory = 1;
    for (ChannelSlot<Channel>& slot : channels) {
        if (Channel* const channel = slot.Take()) {
            channel->DeletingDestructor(kFreeMemory);
        }
    }
}

/// The get-channel slots: the bounds are the arrays', not the live counts.
// kept: docs/oddities.md#missing-channel-succeeds
template <class Channel, std::size_t Count, class Interface>
std::int32_t GetChannel(const std::array<ChannelSlot<Channel>, Count>& channels, std::uint32_t index,
                        Interface** out) noexcept {
    Channel* const channel = index < Count ? channels[index].Get() : nullptr;
    if (channel != nullptr && out != nullptr) {
        *out = channel;
    }
    return oko::kSuccess;
}

}  // namespace

CDevApiInterface_Impl::CDevApiInterface_Impl(std::uint32_t index)
    : m_iDeviceIndex(index),
      m_iComPort(index == oko::kSimulatorDevice ? kSimulatorComPort : 0),
      m_bSimulator(index == oko::kSimulatorDevice),
      m_iFirstProduct(kFirstProduct),
      m_iLastProduct(kLastProduct) {
    std::ranges::copy(kDefaultListConProdReply, m_szSimListconprod.begin());
    try {
        CreateChannels();
    } catch (...) {
        DestroyChannels();
        throw;
    }
}

// kept: docs/oddities.md#socket-outlives-the-device
CDevApiInterface_Impl::~CDevApiInterface_Impl() { DestroyChannels(); }

/// Fills every empty place.
void CDevApiInterface_Impl::CreateChannels() {
    FillChannels(*this, m_pTemperature);
    FillChannels(*this, m_pGasConcentration);
    FillChannels(*this, m_pHumidifier);
}

void CDevApiInterface_Impl::DestroyChannels() noexcept {
    DeleteChannels(m_pTemperature);
    DeleteChannels(m_pGasConcentration);
    DeleteChannels(m_pHumidifier);
    m_nTemperatures = 0;
    m_nGasConcentrations = 0;
    m_nHumidifiers = 0;
}

std::int32_t CDevApiInterface_Impl::GetTemperatureCount() noexcept { return m_nTemperatures; }

std::int32_t CDevApiInterface_Impl::GetTemperature(std::uint32_t index,
                                                   CDevApiInterface_Temperature** channel) noexcept {
    return GetChannel(m_pTemperature, index, channel);
}

std::int32_t CDevApiInterface_Impl::GetGasConcentrationCount() noexcept { return m_nGasConcentrations; }

std::int32_t CDevApiInterface_Impl::GetGasConcentration(std::uint32_t index,
                                                        CDevApiInterface_GasConcentration** channel) noexcept {
    return GetChannel(m_pGasConcentration, index, channel);
}

std::int32_t CDevApiInterface_Impl::GetHumidifierCount() noexcept { return m_nHumidifiers; }

std::int32_t CDevApiInterface_Impl::GetHumidifier(std::uint32_t index, CDevApiInterface_Humidifier** channel) noexcept {
    return GetChannel(m_pHumidifier, index, channel);
}
