#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

#include "channels/CDevApiInterface_GasConcentration_Impl.h"
#include "channels/CDevApiInterface_Humidifier_Impl.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/Dialogs.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/LibQuery.h"

/// Makes a channel stand for a sensor of a product.
template <class Channel>
void Assign(Channel& channel, int product, int number) {
    Put(channel.m_address, {product, number});
}

/// The same for one that takes targets, with their range.
template <class Channel>
void Assign(Channel& channel, int product, int number, double min, double max) {
    Assign(channel, product, number);
    channel.m_dMin = min;
    channel.m_dMax = max;
}

/// Makes the first channels stand for a heater, a CO2 and an O2 controller and a humidifier.
inline void AssignOneOfEach(CDevApiInterface_Impl& device) {
    Assign(*device.m_pTemperature[0], 8, 0);
    Assign(*device.m_pGasConcentration[0], 10, 0);
    Assign(*device.m_pGasConcentration[1], 11, 0);
    Assign(*device.m_pHumidifier[0], 15, 0);
}

/// A fresh scripted platform and host log for each test, and device objects on it.
class DeviceTest : public ::testing::Test {
 protected:
    DeviceTest() {
        HostLog::Reset();
        ScriptedDialogs::Reset();
    }

    /// A device must not go while its value thread runs; a host's process would end here.
    ~DeviceTest() override {
        if (m_pDevice) {
            m_pDevice->StopValueThread();
        }
        m_pDevice.reset();
        HostLog::Reset();
    }

    /// The real device with an open socket, the host's log set and nothing sent yet.
    CDevApiInterface_Impl& RealDevice() {
        CDevApiInterface_Impl& device = MakeDevice(oko::kRealDevice);
        device.ConnectSocket();
        device.HostCallback = HostLog::Callback;
        return device;
    }

    /// The simulator, with the host's log set; not initialised.
    CDevApiInterface_Impl& Simulator() {
        CDevApiInterface_Impl& device = MakeDevice(oko::kSimulatorDevice);
        device.HostCallback = HostLog::Callback;
        return device;
    }

    /// A channel, made to stand for a sensor of a product, with nothing sent yet.
    template <class Channel, class... Range>
    Channel& Ready(Channel& channel, int product, int number, Range... range) {
        Assign(channel, product, number, range...);
        platform.server.ClearCommands();
        return channel;
    }

    CDevApiInterface_Impl& MakeDevice(std::uint32_t index) {
        m_pDevice = std::make_unique<CDevApiInterface_Impl>(index);
        return *m_pDevice;
    }

    ScriptedPlatform platform;
    std::unique_ptr<CDevApiInterface_Impl> m_pDevice;
};
