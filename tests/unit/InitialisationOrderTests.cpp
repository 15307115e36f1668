// What Init has done, and what not yet, when it shows a percentage, sends a command or starts its thread.

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "Journal.h"
#include "RegistryNames.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/Result.h"

namespace {

class InitialisationOrderTests : public DeviceTest {
 protected:
    CDevApiInterface_Impl& WithProgressWindow(CDevApiInterface_Impl& device) {
        device.m_hProgressWnd = &m_window;
        return device;
    }

    static void ExpectBusyFromTheSecondEntryOn(const Journal& journal) {
        const std::vector<Journal::Entry>& entries = journal.Entries();
        for (std::size_t i = 0; i < entries.size(); ++i) {
            EXPECT_EQ(entries[i].busy, i > 0) << entries[i].what;
        }
    }

    int m_window = 0;
};

TEST_F(InitialisationOrderTests, RealDevice_EachPercentageStandsBetweenItsSteps) {
    CDevApiInterface_Impl& device = WithProgressWindow(RealDevice());
    device.m_iComPort = 4;
    const Journal journal(platform, device, [](std::string_view command) -> ServerReply {
        return command == "listconprod" ? "0_listconprod_11\r" : ScriptedServer::BuiltInReply(command);
    });
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);

    std::vector<std::string> expected{"15 %", "17 %", "25 %", "listprod", "30 %"};
    const auto addForEachProduct = [&expected](const std::string& command, const std::string& rest) {
        for (int product = 7; product <= 17; ++product) {
            expected.push_back(command + std::to_string(product) + rest);
        }
    };
    addForEachProduct("mode ", " 0");
    expected.emplace_back("40 %");
    addForEachProduct("comport ", " 0 4");
    expected.insert(expected.end(), {"comport 12 1 4", "comport 13 1 4"});
    addForEachProduct("checkcon ", "");
    expected.insert(expected.end(), {"listconprod", "comport 11 0", "listdev 11", "bl-param-list 11", "52 %", "start 1",
                                     "status", "readmin 11 0", "readmax 11 0", "70 %"});
    EXPECT_EQ(journal.Events(), expected);
    ExpectBusyFromTheSecondEntryOn(journal);
    EXPECT_FALSE(device.m_bBusy);
}

TEST_F(InitialisationOrderTests, Simulator_StartsItsThreadAfter70AndWhileBusy) {
    CDevApiInterface_Impl& device = WithProgressWindow(Simulator());
    const Journal journal(platform, device);
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(journal.Events(),
              (std::vector<std::string>{"15 %", "17 %", "25 %", "30 %", "40 %", "52 %", "70 %", "start thread"}));
    ExpectBusyFromTheSecondEntryOn(journal);
    EXPECT_FALSE(device.m_bBusy);
    device.Close();
}

TEST_F(InitialisationOrderTests, Simulator_LoadsItsAnswerBetween17And25) {
    platform.registry.Set(kSimulatorsKey, kSimulatorAnswerValue, RegistryValue::Text(L"0_listconprod_8"));
    CDevApiInterface_Impl& device = WithProgressWindow(Simulator());
    std::map<std::string, std::string> answers;
    platform.windows.onEvent = [&](const std::string& event) { answers[event] = device.m_szSimListconprod.data(); };
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    platform.windows.onEvent = {};
    EXPECT_EQ(answers["17 %"], "0_listconprod_9 12 15");
    EXPECT_EQ(answers["25 %"], "0_listconprod_8");
    device.Close();
}

TEST_F(InitialisationOrderTests, FindRequest_IsForgottenBeforeTheEnumeration) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_bFindRequested = true;
    std::map<std::string, bool> requested;
    platform.server.SetDefault([&](std::string_view command) -> ServerReply {
        requested[std::string(command)] = device.m_bFindRequested;
        return ScriptedServer::BuiltInReply(command);
    });
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    platform.server.SetDefault({});
    EXPECT_TRUE(requested.at("checkcon 17"));
    EXPECT_FALSE(requested.at("listconprod"));
}

}  // namespace
