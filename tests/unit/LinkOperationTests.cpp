// Close, slot 7 and a search on any thread while another call is under way: that call fails, sends nothing more, and
// leaves alone a link that is not its own.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "Patience.h"
#include "ProductSets.h"
#include "core/CommandText.h"
#include "fakes/Dialogs.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/Exchange.h"
#include "link/Products.h"
#include "link/Reply.h"
#include "oko/LibQuery.h"
#include "oko/Settings.h"
#include "ui/ConfigurationFields.h"
#include "ui/DialogEnd.h"
#include "ui/StatusReport.h"

namespace {

constexpr auto kReady = std::future_status::ready;

constexpr const wchar_t* kLostLinkLine =
    L"CDevApiInterface_Impl::Init The link was closed or opened anew meanwhile; Init failed.";

class LinkOperationTests : public DeviceTest {
 protected:
    LinkOperationTests() {
        platform.server.AnswerPayload("listconprod", "9");
        platform.server.AnswerPayload("bl-param-list 9", "107 115");
    }
    ~LinkOperationTests() override {
        platform.server.onCall = {};
        platform.locks.onWait = {};
    }

    /// Opens the link anew on another thread when `command` is to be sent for the first time; that thread then waits
    /// for its turn.
    void OpenAnewWhenSending(CDevApiInterface_Impl& device, const std::string& command) {
        platform.locks.onWait = [this] { m_waits = true; };
        platform.server.onCall = [this, &device, call = "send " + command,
                                  done = false](const std::string& made) mutable {
            if (made == call && !done) {
                done = true;  // not for a later Init or Close of the test
                m_other = std::async(std::launch::async, [&device] { device.ApplyConnection(L"m_iComPort 4"); });
                EXPECT_TRUE(Await([this] { return m_waits || m_other.wait_for(std::chrono::seconds(0)) == kReady; }));
                EXPECT_TRUE(m_waits);
            }
        };
    }

    void InstallServer() {
        const std::wstring program = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\OKO";
        platform.registry.Set(program, L"DisplayName", RegistryValue::Text(L"OKO-Control Server"));
        platform.registry.Set(program, L"InstallLocation", RegistryValue::Text(L"C:\\OKO\\"));
        platform.files.Answer(L"C:\\OKO\\*", {{L"OKO-Control.exe"}});
    }

    /// The commands that were sent after `command`.
    std::vector<std::string> SentAfter(std::string_view command) const {
        const auto commands = platform.server.Commands();
        const auto found = std::ranges::find(commands, command);
        return found == commands.end() ? commands : std::vector<std::string>(found + 1, commands.end());
    }

    static std::int32_t Search(CDevApiInterface_Impl& device) {
        ScriptedDialogs::Current().onConnection = [](CDevApiInterface_Impl&) { return DialogEnd::FindAndConnect; };
        std::wstring text(oko::kConnectionTextLength, L'\0');
        return device.ShowConnection(text.data(), 0, nullptr);
    }

    std::future<void> m_other;
    std::atomic<bool> m_waits = false;
};

/// Init's commands, from its first to its last.
constexpr std::array kCommandsOfInit{"listprod",  "mode 7 0", "mode 17 0",       "comport 9 0 0", "checkcon 17",
                                     "listdev 9", "start 1",  "bl-param-list 9", "status",        "readmin 9 0"};

TEST_F(LinkOperationTests, Init_DuringWhichTheHostCloses_FailsAndSendsNothingMore) {
    for (const char* const command : kCommandsOfInit) {
        SCOPED_TRACE(command);
        platform.server.ClearCommands();
        CDevApiInterface_Impl& device = RealDevice();
        m_other = {};
        m_waits = false;
        platform.locks.onWait = [this] { m_waits = true; };
        platform.server.onCall = [&](const std::string& call) {
            if (call == std::string("send ") + command && !m_other.valid()) {
                m_other = std::async(std::launch::async, [&device] { device.Close(); });
                EXPECT_TRUE(Await([this] { return m_waits.load(); }));  // Close, for this exchange to end
                EXPECT_EQ(device.m_nLink, 2U);                          // and has claimed the link before
            }
        };
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), -1);
        m_other.get();
        auto after = SentAfter(command);
        std::erase_if(after, [](const std::string& one) { return one == "start 0" || one.ends_with(" 0"); });
        EXPECT_EQ(after, std::vector<std::string>{});
        EXPECT_EQ(device.GetTemperatureCount(), 0);
        EXPECT_EQ(HostLog::Lines().back(), kLostLinkLine);
        EXPECT_EQ(platform.server.OpenSockets(), 0U);
        EXPECT_TRUE(platform.windows.ErrorBoxes().empty());
        platform.server.onCall = {};
        m_pDevice.reset();
    }
}

TEST_F(LinkOperationTests, Init_ThatClosesFromItsOwnCallback_Fails) {
    CDevApiInterface_Impl& device = RealDevice();
    static CDevApiInterface_Impl* s_pDevice;
    s_pDevice = &device;
    EXPECT_EQ(device.Init([](std::int32_t, const wchar_t*) { s_pDevice->Close(); }, nullptr), -1);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"start 0"});
    EXPECT_EQ(platform.server.OpenSockets(), 0U);
}

TEST_F(LinkOperationTests, Init_ThatOpensTheLinkAnewFromItsOwnCallback_FailsAndSendsNothing) {
    CDevApiInterface_Impl& device = RealDevice();
    static CDevApiInterface_Impl* s_pDevice;
    s_pDevice = &device;
    EXPECT_EQ(device.Init([](std::int32_t, const wchar_t*) { s_pDevice->ApplyConnection(L"m_iComPort 4"); }, nullptr),
              -1);
    EXPECT_TRUE(platform.server.Commands().empty());
    EXPECT_EQ(platform.server.OpenSockets(), 1U);
}

TEST_F(LinkOperationTests, SimulatorsInit_DuringWhichTheHostCloses_FailsAndStartsNoThread) {
    CDevApiInterface_Impl& device = Simulator();
    platform.windows.onEvent = [&](const std::string& event) {
        if (event == "70 %") {
            device.Close();
        }
    };
    int window = 0;
    device.m_hProgressWnd = &window;
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), -1);
    EXPECT_EQ(platform.threads.Started(), 0U);
    EXPECT_EQ(device.GetTemperatureCount(), 0);
    platform.windows.onEvent = {};
}

TEST_F(LinkOperationTests, Init_DuringWhichTheLinkIsOpenedAnew_FailsAndLeavesThatLinkOpen) {
    CDevApiInterface_Impl& device = RealDevice();
    OpenAnewWhenSending(device, "start 1");
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), -1);
    m_other.get();
    EXPECT_EQ(platform.server.Commands().back(), "start 1");
    EXPECT_EQ(platform.server.OpenSockets(), 1U);
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
}

TEST_F(LinkOperationTests, Init_ThatWaitsForAServerToStart_EndsWithTheClose) {
    InstallServer();
    platform.server.Answer("listprod", kReceiveFails);
    CDevApiInterface_Impl& device = RealDevice();
    platform.clock.onSleep = [&device, polls = 0](std::uint32_t) mutable {
        if (++polls == 3) {
            device.Close();
        }
    };
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), -1);
    EXPECT_EQ(platform.clock.Sleeps().size(), 3U);
    EXPECT_TRUE(platform.windows.ErrorBoxes().empty());
    EXPECT_EQ(HostLog::Lines().back(), kLostLinkLine);
    EXPECT_FALSE(device.m_bServerErrorShown);
    platform.clock.onSleep = {};
}

TEST_F(LinkOperationTests, Init_ThatIsClosedDuringAProbeInVain_StartsNoServer) {
    InstallServer();
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.SetDefault([&device](std::string_view) {
        ++device.m_nLink;  // Close's first step
        return kReceiveFails;
    });
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), -1);
    EXPECT_TRUE(platform.shell.Launches().empty());
    EXPECT_EQ(HostLog::Lines(), (std::vector<std::wstring>{L"OKO-Lab bold line Init()", kLostLinkLine}));
}

TEST_F(LinkOperationTests, Search_DuringWhichTheHostCloses_EndsWithoutAWindow) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.AnswerPayload("findstat", "40");  // it would go on
    platform.clock.onSleep = [&device, polls = 0](std::uint32_t) mutable {
        if (++polls == 5) {
            device.Close();
        }
    };
    EXPECT_EQ(Search(device), -1);
    EXPECT_EQ(platform.clock.Sleeps().size(), 5U);
    EXPECT_EQ(platform.server.Commands().back(), "start 0");
    EXPECT_EQ(platform.server.OpenSockets(), 0U);
    EXPECT_EQ(ScriptedDialogs::Current().opened.size(), 1U);  // no "Connecting"
    EXPECT_EQ(platform.windows.Destroyed().size(), 1U);
    EXPECT_FALSE(device.m_bBusy);
    platform.clock.onSleep = {};
}

TEST_F(LinkOperationTests, Search_DuringWhichTheLinkIsOpenedAnew_LeavesThatLinkOpenAndTheTextAlone) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.AnswerPayload("findstat", "-1");
    OpenAnewWhenSending(device, "find 9");
    ScriptedDialogs::Current().onConnection = [](CDevApiInterface_Impl&) { return DialogEnd::FindAndConnect; };
    std::wstring text(oko::kConnectionTextLength, L'#');
    EXPECT_EQ(device.ShowConnection(text.data(), 0, nullptr), -1);
    m_other.get();
    EXPECT_EQ(platform.server.Commands().back(), "find 9");
    EXPECT_EQ(platform.server.OpenSockets(), 1U);
    EXPECT_EQ(text[0], L'#');
    EXPECT_GT(Ask(device, CommandText("status")).m_nLength, 0);
}

TEST_F(LinkOperationTests, Close_DuringWhichTheLinkIsOpenedAnew_LeavesThatLinkOpen) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_products = {ProductWith(9), ProductWith(12)};
    OpenAnewWhenSending(device, "connect 9 0");
    device.Close();
    m_other.get();
    EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"start 0", "connect 9 0"}));
    EXPECT_EQ(platform.server.OpenSockets(), 1U);
    device.Close();
    EXPECT_EQ(platform.server.OpenSockets(), 0U);
}

TEST_F(LinkOperationTests, Settings_DuringWhichTheHostCloses_FailAndSendNothingMore) {
    CDevApiInterface_Impl& device = RealDevice();
    AssignOneOfEach(device);
    platform.server.SetDefault([&device](std::string_view command) {
        if (command.starts_with("alarm 8")) {
            ++device.m_nLink;  // Close's first step
        }
        return ScriptedServer::BuiltInReply(command);
    });
    EXPECT_EQ(device.ApplyConfiguration(L""), -1);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"alarm 8 0.2"});
    EXPECT_FALSE(device.m_bBusy);
    EXPECT_FALSE(device.m_bSetupComplete);
}

TEST_F(LinkOperationTests, AirMode_DuringWhichTheHostCloses_GoesToNoMoreProducts) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_products = {ProductWith(11, {parameter::kAirModeSwitch}), ProductWith(12, {parameter::kAirModeSwitch})};
    platform.server.SetDefault([&device](std::string_view command) {
        ++device.m_nLink;
        return ScriptedServer::BuiltInReply(command);
    });
    TakeConfiguration(device, [](int) { return L"0.5"; }, true);
    EXPECT_EQ(platform.server.Commands().size(), 1U);
}

TEST_F(LinkOperationTests, Settings_DuringWhichTheHostCloses_KeepTheAirModeAsItWas) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_products = {ProductWith(11, {237})};
    device.m_bAirMode = 1;
    platform.server.SetDefault([&device](std::string_view) {
        ++device.m_nLink;
        return kReceiveFails;
    });
    EXPECT_EQ(device.ApplyConfiguration(L""), -1);
    EXPECT_EQ(device.m_bAirMode, 1);
}

TEST_F(LinkOperationTests, NewTemperature_DuringWhichTheHostCloses_FailsAndIsNeitherReadBackNorRestored) {
    CDevApiInterface_Impl& device = RealDevice();
    auto& channel = Ready(*device.m_pTemperature[0], 9, 0);
    platform.server.SetDefault([&device](std::string_view command) {
        ++device.m_nLink;
        return ScriptedServer::BuiltInReply(command);
    });
    EXPECT_EQ(channel.SetTargetTemperature(30.0), -1);
    EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"writesetpoint 9 0 30.0"});
}

TEST_F(LinkOperationTests, NewTemperature_WhoseLinkGoesDuringTheReadBack_IsNotRestoredOverTheNextOne) {
    CDevApiInterface_Impl& device = RealDevice();
    auto& channel = Ready(*device.m_pTemperature[0], 9, 0);
    platform.server.SetDefault([&device](std::string_view command) -> ServerReply {
        if (command.starts_with("readsetpoint")) {
            ++device.m_nLink;
            return kReceiveFails;
        }
        return ScriptedServer::BuiltInReply(command);
    });
    EXPECT_EQ(channel.SetTargetTemperature(30.0), -1);
    EXPECT_EQ(platform.server.Commands(), (std::vector<std::string>{"writesetpoint 9 0 30.0", "readsetpoint 9 0 -1"}));
}

TEST_F(LinkOperationTests, NewTemperature_WhoseLinkGoesWhileItIsRestored_Fails) {
    CDevApiInterface_Impl& device = RealDevice();
    auto& channel = Ready(*device.m_pTemperature[0], 9, 0);
    platform.server.Answer("readsetpoint 9 0 -1", kReceiveFails);
    platform.server.SetDefault([&device](std::string_view command) {
        device.m_nLink += command == "writesetpoint 9 0 37.0" ? 1 : 0;
        return ScriptedServer::BuiltInReply(command);
    });
    EXPECT_EQ(channel.SetTargetTemperature(30.0), -1);
}

TEST_F(LinkOperationTests, StatusReport_DuringWhichTheHostCloses_AsksNoMore) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_products = {ProductWith(11, {13, 14})};
    int asked = 0;
    platform.server.SetDefault([&](std::string_view command) {
        ++asked;
        ++device.m_nLink;
        return ScriptedServer::BuiltInReply(command);
    });
    CollectStatusReport(device);
    EXPECT_EQ(asked, 1);
}

TEST_F(LinkOperationTests, Exchange_WhoseLinkIsAnotherOneByItsTurn_SendsNothing) {
    CDevApiInterface_Impl& device = RealDevice();
    const std::uint32_t link = device.m_nLink;
    device.ConnectSocket();
    platform.server.ClearCommands();
    std::array<char, kReplySize + 1> reply{};
    EXPECT_EQ(device.SendOverLink("status", {reply.data(), kReplySize}, link).length, -1);
    EXPECT_TRUE(platform.server.Calls().empty());
    EXPECT_GT(device.SendOverLink("status", {reply.data(), kReplySize}, device.m_nLink).length, 0);
}

TEST_F(LinkOperationTests, ClosedLink_IsLost) {
    CDevApiInterface_Impl& device = RealDevice();
    const LinkOperation operation = LinkOperation::OverThisLink(device);
    EXPECT_FALSE(operation.HasEnded());
    device.DisconnectSocket();
    EXPECT_TRUE(operation.HasEnded());
}

TEST_F(LinkOperationTests, SingleReads_TakeWhateverLinkThereIs) {
    CDevApiInterface_Impl& device = RealDevice();
    auto& channel = Ready(*device.m_pTemperature[0], 9, 0);
    double value = 0.0;
    EXPECT_EQ(channel.GetCurrentTemperature(&value), 0);
    device.ConnectSocket();
    EXPECT_EQ(channel.GetCurrentTemperature(&value), 0);
}

}  // namespace
