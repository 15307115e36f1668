// Which operations wait for the data lock while another thread holds it, and which do not.

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Fixture.h"
#include "Patience.h"
#include "ProductSets.h"
#include "channels/Simulation.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/Exchange.h"
#include "oko/HostCallback.h"
#include "platform/Sync.h"

namespace {

/// What happened, in order, on whichever thread.
class Events {
 public:
    void Add(std::string event) {
        {
            const std::scoped_lock lock(m_mutex);
            m_events.push_back(std::move(event));
        }
        m_changed.notify_all();
    }

    /// Waits for the first event.
    void AwaitFirst() {
        std::unique_lock lock(m_mutex);
        EXPECT_TRUE(m_changed.wait_for(lock, kPatience, [&] { return !m_events.empty(); }));
    }

    std::vector<std::string> Take() {
        const std::scoped_lock lock(m_mutex);
        return std::exchange(m_events, {});
    }

 private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_events;
};

class LockTests : public DeviceTest {
 protected:
    /// A real device whose first channels are product 9, the O2 of product 11 and product 15.
    CDevApiInterface_Impl& Device() {
        CDevApiInterface_Impl& device = RealDevice();
        device.m_products = {ProductWith(11, {237})};
        Assign(*device.m_pTemperature[0], 9, 0);
        Assign(*device.m_pGasConcentration[0], 11, 0);
        Assign(*device.m_pHumidifier[0], 15, 0);
        platform.server.ClearCommands();
        return device;
    }

    /// Runs `use` on another thread while this one holds the data lock, and tells whether it came to its end before the
    /// lock was released.
    bool EndsWhileTheLockIsHeld(CDevApiInterface_Impl& device, const std::function<void()>& use) {
        Events events;
        platform.locks.onWait = [&events] { events.Add("waits"); };
        std::thread other;
        {
            const std::scoped_lock lock(device.m_csData);
            other = std::thread([&] {
                use();
                events.Add("ends");
            });
            events.AwaitFirst();
            m_commandsWhileHeld = platform.server.Commands();
            m_bRunsWhileHeld = device.m_bThreadRun;
            events.Add("released");
        }
        other.join();
        platform.locks.onWait = nullptr;
        const std::vector<std::string> order = events.Take();
        const bool waited = order == std::vector<std::string>{"waits", "released", "ends"};
        EXPECT_TRUE(waited || order == (std::vector<std::string>{"ends", "released"})) << testing::PrintToString(order);
        return !waited;
    }

    /// Runs `use`, which sends `command`, and `other` on another thread while the server has not answered yet. Tells
    /// whether that one waited until then.
    bool WaitsForTheAnswer(std::string_view command, const std::function<void()>& use,
                           const std::function<void()>& other) {
        Events events;
        platform.locks.onWait = [&events] { events.Add("waits"); };
        std::thread thread;
        platform.server.SetDefault([&](std::string_view sent) -> ServerReply {
            if (sent == command) {
                thread = std::thread([&] {
                    other();
                    events.Add("ends");
                });
                events.AwaitFirst();
                events.Add("answered");
            }
            return ScriptedServer::BuiltInReply(sent);
        });
        use();
        thread.join();
        platform.server.SetDefault({});
        platform.locks.onWait = nullptr;
        return events.Take() == std::vector<std::string>{"waits", "answered", "ends"};
    }

    std::vector<std::string> m_commandsWhileHeld;
    bool m_bRunsWhileHeld = false;
};

TEST_F(LockTests, StatesTargetsAndTolerances_WaitForTheDataLock) {
    CDevApiInterface_Impl& device = Device();
    auto& temperature = *device.m_pTemperature[0];
    auto& gas = *device.m_pGasConcentration[0];
    auto& humidity = *device.m_pHumidifier[0];
    double first = 0.0;
    double second = 0.0;
    std::uint32_t state = 0;
    struct Case {
        const char* name;
        std::function<void()> use;
    };
    for (const Case& row : std::vector<Case>{
             {"temperature: state", [&] { temperature.GetTemperatureState(&state); }},
             {"temperature: target", [&] { temperature.SetTargetTemperature(30.0); }},
             {"temperature: rate", [&] { temperature.SetTemperatureRate(1.0); }},
             {"temperature: step", [&] { temperature.GetTemperatureStep(&first); }},
             {"temperature: limits", [&] { temperature.GetTemperatureLimits(&first, &second); }},
             {"temperature: tolerance", [&] { temperature.SetTolerance(0.1, 0.2); }},
             {"temperature: kept tolerance", [&] { temperature.GetTolerance(&first, &second); }},
             {"temperature: simulation", [&] { SimulateTemperature(temperature); }},
             {"gas: target", [&] { gas.SetTargetGasConcentration(5.0); }},
             {"gas: watched target", [&] { gas.GetTargetGasConcentration(&first); }},
             {"gas: tolerance", [&] { gas.SetTolerance(0.1, 0.2); }},
             {"gas: kept tolerance", [&] { gas.GetTolerance(&first, &second); }},
             {"humidity: target", [&] { humidity.SetTargetHumidity(55.0); }},
             {"humidity: tolerance", [&] { humidity.SetTolerance(0.1, 0.2); }},
             {"humidity: kept tolerance", [&] { humidity.GetTolerance(&first, &second); }},
         }) {
        EXPECT_FALSE(EndsWhileTheLockIsHeld(device, row.use)) << row.name;
    }
}

TEST_F(LockTests, ReadsAndTheStatesOfGasAndHumidity_DoNotWaitForTheDataLock) {
    CDevApiInterface_Impl& device = Device();
    double value = 0.0;
    std::uint32_t state = 0;
    struct Case {
        const char* name;
        std::function<void()> use;
    };
    for (const Case& row : std::vector<Case>{
             {"temperature: current", [&] { device.m_pTemperature[0]->GetCurrentTemperature(&value); }},
             {"temperature: target", [&] { device.m_pTemperature[0]->GetTargetTemperature(&value); }},
             {"gas: current", [&] { device.m_pGasConcentration[0]->GetCurrentGasConcentration(&value); }},
             {"gas: state", [&] { device.m_pGasConcentration[0]->GetGasConcentrationState(&state); }},
             {"gas: simulation", [&] { SimulateGasConcentration(*device.m_pGasConcentration[0]); }},
             {"humidity: current", [&] { device.m_pHumidifier[0]->GetCurrentHumidity(&value); }},
             {"humidity: target", [&] { device.m_pHumidifier[0]->GetTargetHumidity(&value); }},
             {"humidity: state", [&] { device.m_pHumidifier[0]->GetHumidityState(&state); }},
             {"humidity: simulation", [&] { SimulateHumidity(*device.m_pHumidifier[0]); }},
         }) {
        EXPECT_TRUE(EndsWhileTheLockIsHeld(device, row.use)) << row.name;
    }
}

TEST_F(LockTests, NewTargets_AreSentBeforeTheDataLockIsTaken) {
    CDevApiInterface_Impl& device = Device();
    EXPECT_FALSE(EndsWhileTheLockIsHeld(device, [&device] { device.m_pTemperature[0]->SetTargetTemperature(30.0); }));
    EXPECT_EQ(m_commandsWhileHeld, (std::vector<std::string>{"writesetpoint 9 0 30.0", "readsetpoint 9 0 -1"}));
    EXPECT_EQ(device.m_pTemperature[0]->m_dTarget, 30.0);
}

TEST_F(LockTests, AirModeExchange_HoldsTheDataLock) {
    CDevApiInterface_Impl& device = Device();
    std::uint8_t status = 0;
    EXPECT_TRUE(WaitsForTheAnswer(
        "bl-param-read 11 237", [&] { EXPECT_EQ(device.m_pGasConcentration[0]->ReadAirMode(&status), 0); },
        [&] { device.m_pTemperature[0]->SetTemperatureRate(1.0); }));
}

TEST_F(LockTests, AirModeThatWasRead_IsComparedUnderTheDataLock) {
    CDevApiInterface_Impl& device = Device();
    platform.server.AnswerPayload("bl-param-read 11 237", "1");
    Events events;
    std::thread other;
    std::promise<void> held;
    std::atomic<bool> begun = false;
    platform.locks.onWait = [&events] { events.Add("waits"); };
    platform.server.SetDefault([&](std::string_view command) -> ServerReply {
        events.Add(std::string(command));
        return ScriptedServer::BuiltInReply(command);
    });
    // The read has let the lock go. Another thread takes it and stores the same air mode before it lets it go again.
    platform.locks.onRelease = [&](const CriticalSection& lock) {
        if (&lock != &device.m_csData || begun.exchange(true)) {
            return;
        }
        other = std::thread([&] {
            const std::scoped_lock taken(device.m_csData);
            held.set_value();
            events.AwaitFirst();
            device.m_bAirMode = 1;
            events.Add("released");
        });
        held.get_future().wait();
    };
    double value = 0.0;
    EXPECT_EQ(device.m_pGasConcentration[0]->GetTargetGasConcentration(&value), 0);
    if (other.joinable()) {
        other.join();
    }
    platform.locks = {};  // the device's end takes locks too
    EXPECT_EQ(events.Take(), (std::vector<std::string>{"waits", "released", "readsetpoint 11 0 -1"}));
    EXPECT_EQ(device.m_pGasConcentration[0]->m_uStatusCount, 0U);
}

TEST_F(LockTests, RunFlagOfTheValueThread_IsReadAndChangedUnderTheDataLock) {
    CDevApiInterface_Impl& device = Device();
    ASSERT_TRUE(device.m_bThreadRun);
    EXPECT_FALSE(EndsWhileTheLockIsHeld(device, [&device] { device.StopValueThread(); }));
    EXPECT_TRUE(m_bRunsWhileHeld);
    EXPECT_FALSE(device.m_bThreadRun);

    auto start = std::make_unique<ValueThreadStart>(device, device.m_nThreadRun);
    EXPECT_FALSE(EndsWhileTheLockIsHeld(device, [&start] { SimulationThread(start.release()); }));
    EXPECT_TRUE(device.m_hThreadStopped.Wait(0));

    platform.threads.failStart = true;  // a thread of its own would take locks while the watch on them ends
    EXPECT_FALSE(EndsWhileTheLockIsHeld(device, [&device] { device.StartValueThread(device); }));
    EXPECT_FALSE(m_bRunsWhileHeld);
    EXPECT_TRUE(device.m_bThreadRun);
}

TEST_F(LockTests, Exchange_HoldsTheSocketLockFromTheSendToTheReply) {
    CDevApiInterface_Impl& device = Device();
    EXPECT_TRUE(WaitsForTheAnswer(
        "status", [&] { EXPECT_EQ(Ask(device, FormatCommand(command::kStatus)).bytes(), "0_status_1\r"); },
        [&] { EXPECT_EQ(Ask(device, FormatCommand(command::kListProd)).bytes(), "0_listprod_1\r"); }));
}

TEST_F(LockTests, SocketLock_GoesToAThreadThatWaitsBeforeItComesBack) {
    CDevApiInterface_Impl& device = Device();
    for (int round = 0; round < 20; ++round) {
        platform.server.ClearCommands();
        WaitsForTheAnswer(
            "status",
            [&] {
                Ask(device, FormatCommand(command::kStatus));
                Ask(device, FormatCommand(command::kStart, {3}));
            },
            [&] { Ask(device, FormatCommand(command::kListProd)); });
        EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"status", "listprod", "start 3"}));
    }
}

TEST_F(LockTests, AirModeNotice_IsGivenWithoutTheDataLock) {
    CDevApiInterface_Impl& device = Device();
    platform.server.AnswerPayload("bl-param-read 11 237", "1");
    std::future<void> other;
    bool free = false;
    HostLog::SetHook([&](std::int32_t code, const wchar_t*) {
        if (code == oko::kCallbackAirModeChanged) {
            other = std::async(std::launch::async, [&] { device.m_pTemperature[0]->SetTemperatureRate(1.0); });
            free = other.wait_for(kPatience) == std::future_status::ready;
        }
    });
    double value = 0.0;
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(device.m_pGasConcentration[0]->GetTargetGasConcentration(&value), 0) << i;
    }
    EXPECT_TRUE(other.valid());
    EXPECT_TRUE(free);
}

}  // namespace
