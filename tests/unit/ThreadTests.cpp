// Several threads of a host on one device. The thread sanitizer's build is what these tests are for.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Channels.h"
#include "Fixture.h"
#include "ProductSets.h"
#include "channels/SharedValues.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/Products.h"
#include "oko/CDevApiInterface_GasConcentration.h"
#include "oko/CDevApiInterface_Humidifier.h"
#include "oko/CDevApiInterface_Temperature.h"
#include "oko/INotify.h"
#include "oko/Settings.h"
#include "ui/DialogEnd.h"
#include "ui/StatusReport.h"

namespace {

/// Calls everything that a host may call of a device's channels.
void UseChannels(CDevApiInterface_Impl& device) {
    double value = 0.0;
    double other = 0.0;
    std::uint32_t state = 0;
    std::array<wchar_t, oko::kChannelNameLength> name{};
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(device.GetTemperatureCount()); ++i) {
        CDevApiInterface_Temperature& channel = TemperatureOf(device, i);
        channel.GetName(name.data(), oko::kChannelNameLength);
        channel.SetTargetTemperature(30.0);
        channel.GetTargetTemperature(&value);
        channel.GetCurrentTemperature(&value);
        channel.GetTemperatureState(&state);
        channel.SetTemperatureRate(1.0);
        channel.SetTolerance(0.1, 0.2);
        channel.GetTolerance(&value, &other);
        channel.GetTemperatureLimits(&value, &other);
        channel.HasFeature(oko::kFeatureSensorOnly);
    }
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(device.GetGasConcentrationCount()); ++i) {
        CDevApiInterface_GasConcentration& channel = GasConcentrationOf(device, i);
        channel.GetName(name.data(), oko::kChannelNameLength);
        channel.SetTargetGasConcentration(5.0);
        channel.GetTargetGasConcentration(&value);
        channel.GetCurrentGasConcentration(&value);
        channel.GetGasConcentrationState(&state);
        channel.HasFeature(oko::kFeatureAirMode);
    }
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(device.GetHumidifierCount()); ++i) {
        CDevApiInterface_Humidifier& channel = HumidifierOf(device, i);
        channel.SetEnabled(1);
        channel.SetTargetHumidity(60.0);
        channel.GetTargetHumidity(&value);
        channel.GetCurrentHumidity(&value);
        channel.GetHumidityState(&state);
    }
}

class ThreadTests : public DeviceTest {
 protected:
    static constexpr int kRounds = 10;

    /// Two threads use the channels while `life` runs.
    template <class Life>
    void WhileChannelsAreUsed(CDevApiInterface_Impl& device, Life life) {
        std::atomic<bool> ended = false;
        const auto use = [&] {
            while (!ended) {
                UseChannels(device);
            }
        };
        std::thread first(use);
        std::thread second(use);
        life();
        ended = true;
        first.join();
        second.join();
    }
};

TEST_F(ThreadTests, ChannelsInUse_WhileTheRealDeviceLivesItsLife) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.AnswerPayload("findstat", "-1");
    ScriptedDialogs::Current().onConnection = [](CDevApiInterface_Impl&) { return DialogEnd::FindAndConnect; };
    std::array<wchar_t, oko::kConnectionTextLength> text{};
    WhileChannelsAreUsed(device, [&] {
        for (int i = 0; i < kRounds; ++i) {
            ConnectProducts(platform, i % 2 == 0 ? std::vector<int>{9, 12, 15} : std::vector<int>{11, 16, 7});
            device.ApplyConnection(L"m_iComPort 3");
            EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0) << i;
            device.ApplyConfiguration(L"dIncubatorBelow 0.3");
            CollectStatusReport(device);
            device.ShowConnection(text.data(), 0, nullptr);
            device.Close();
        }
    });
}

TEST_F(ThreadTests, ChannelsInUse_WhileTheSimulatorLivesItsLife) {
    CDevApiInterface_Impl& device = Simulator();
    WhileChannelsAreUsed(device, [&] {
        for (int i = 0; i < kRounds; ++i) {
            EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0) << i;
            device.ApplyConfiguration(L"dIncubatorBelow 0.3");
            device.Close();
        }
    });
}

TEST_F(ThreadTests, ChannelsThatAreDealtOutAnew_NeverMixTwoAddresses) {
    CDevApiInterface_Impl& device = RealDevice();
    std::mutex mutex;
    std::set<std::string> reads;
    platform.server.SetDefault([&](std::string_view command) -> ServerReply {
        if (command.starts_with("readcurval") || command.starts_with("bl-param-read")) {
            const std::scoped_lock lock(mutex);
            reads.emplace(command);
        }
        return ScriptedServer::BuiltInReply(command);
    });
    auto& channel = *device.m_pTemperature[1];
    std::atomic<bool> ended = false;
    std::thread poller([&] {
        while (!ended) {
            double value = 0.0;
            channel.GetCurrentTemperature(&value);
        }
    });
    for (int i = 0; i < 20'000; ++i) {
        Put(channel.m_address, i % 2 == 0 ? ChannelAddress{16, 1} : ChannelAddress{9, 107});
    }
    ended = true;
    poller.join();
    for (const std::string& read : reads) {
        EXPECT_TRUE(read == "readcurval 0" || read == "readcurval 16(1)" || read == "bl-param-read 9 107") << read;
    }
}

}  // namespace
