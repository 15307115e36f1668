// Slots 3 and 6 and the search for the incubator, without a window.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "Journal.h"
#include "ResultTexts.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/Settings.h"
#include "oko/WindowHandle.h"
#include "ui/DialogEnd.h"

namespace {

class ConnectionTests : public DeviceTest {
 protected:
    /// Runs slot 6 with a dialog that ends like this.
    std::int32_t Show(CDevApiInterface_Impl& device, DialogEnd end, std::int32_t port = 5) {
        ScriptedDialogs::Current().onConnection = [end, port](CDevApiInterface_Impl& shown) {
            shown.m_iComPort = port;
            return end;
        };
        platform.server.ClearCommands();
        return device.ShowConnection(m_text.data(), static_cast<std::int32_t>(std::wcslen(m_text.data())), &m_parent);
    }

    void SetText(const wchar_t* text) { std::wcscpy(m_text.data(), text); }

    /// The server needs this many "findstat" for each search.
    void SearchTakes(int polls) {
        platform.server.SetDefault([polls, left = std::make_shared<int>(0)](std::string_view command) -> ServerReply {
            if (command.starts_with("find ")) {
                *left = polls;
            }
            if (command == "findstat") {
                return --*left > 0 ? "0_findstat_50\r" : "0_findstat_-1\r";
            }
            return ScriptedServer::BuiltInReply(command);
        });
        platform.server.AnswerPayload("listconprod", "");
    }

    std::array<wchar_t, oko::kConnectionTextLength> m_text{};
    int m_parent = 0;
};

TEST_F(ConnectionTests, Simulator_HasNoDialog) {
    CDevApiInterface_Impl& device = Simulator();
    EXPECT_EQ(Show(device, DialogEnd::Ok), 0);
    EXPECT_TRUE(ScriptedDialogs::Current().connectionParents.empty());
    EXPECT_EQ(device.m_iComPort, 1);
}

TEST_F(ConnectionTests, Ok_WritesThePort) {
    CDevApiInterface_Impl& device = RealDevice();
    SetText(L"m_iComPort 3");
    EXPECT_EQ(Show(device, DialogEnd::Ok, 12), 0);
    EXPECT_STREQ(m_text.data(), L"m_iComPort 12");
    EXPECT_EQ(device.m_nConnectionTextLen, 13);
    EXPECT_EQ(ScriptedDialogs::Current().connectionParents, std::vector<oko::WindowHandle>{&m_parent});
    EXPECT_TRUE(platform.server.Calls().empty());
}

TEST_F(ConnectionTests, WrittenText_EndsInAZeroAndTouchesNothingBehindIt) {
    for (const DialogEnd end : {DialogEnd::Ok, DialogEnd::FindAndConnect}) {
        SCOPED_TRACE(testing::Message() << "end " << static_cast<int>(end));
        CDevApiInterface_Impl& device = MakeDevice(0);
        SearchTakes(1);
        m_text.fill(L'#');
        ScriptedDialogs::Current().onConnection = [end](CDevApiInterface_Impl&) { return end; };
        device.m_iComPort = 12;
        EXPECT_EQ(device.ShowConnection(m_text.data(), 0, nullptr), 0);
        EXPECT_EQ(std::wstring_view(m_text.data(), m_text.size()),
                  L"m_iComPort 12" + std::wstring(1, L'\0') + std::wstring(m_text.size() - 14, L'#'));
        EXPECT_EQ(device.m_nConnectionTextLen, 13);
    }
}

TEST_F(ConnectionTests, TextOfLengthZero_IsNotRead) {
    CDevApiInterface_Impl& device = RealDevice();
    device.m_iComPort = 9;
    std::int32_t seen = 0;
    ScriptedDialogs::Current().onConnection = [&seen](CDevApiInterface_Impl& shown) {
        seen = shown.m_iComPort;
        return DialogEnd::CloseBox;
    };
    SetText(L"m_iComPort 3");
    EXPECT_EQ(device.ShowConnection(m_text.data(), 0, nullptr), -1);
    EXPECT_EQ(seen, 9);
    EXPECT_EQ(device.ShowConnection(m_text.data(), 12, nullptr), -1);
    EXPECT_EQ(seen, 3);
    EXPECT_EQ(device.ShowConnection(nullptr, 12, nullptr), -1);
}

TEST_F(ConnectionTests, TextThatDoesNotMatch_KeepsThePort) {
    for (const wchar_t* const text : {L"COM3", L"m_iComPort x", L"M_ICOMPORT 3", L" m_iComPort 3", L""}) {
        SCOPED_TRACE(testing::PrintToString(text));
        CDevApiInterface_Impl& device = RealDevice();
        device.m_iComPort = 9;
        SetText(text);
        std::int32_t seen = 0;
        ScriptedDialogs::Current().onConnection = [&seen](CDevApiInterface_Impl& shown) {
            seen = shown.m_iComPort;
            return DialogEnd::CloseBox;
        };
        EXPECT_EQ(device.ShowConnection(m_text.data(), 12, nullptr), -1);
        EXPECT_EQ(seen, 9);
        EXPECT_EQ(device.m_iComPort, 9);
    }
}

TEST_F(ConnectionTests, TextAndLength_AreKeptAsTheHostPassesThem) {
    CDevApiInterface_Impl& device = RealDevice();
    SetText(L"m_iComPort 3");
    for (const std::int32_t length : {-1, 0, 5, 64}) {
        SCOPED_TRACE(length);
        const wchar_t* seenText = nullptr;
        std::int32_t seenLength = 99;
        ScriptedDialogs::Current().onConnection = [&](CDevApiInterface_Impl& shown) {
            seenText = shown.m_pszConnectionText;
            seenLength = shown.m_nConnectionTextLen;
            return DialogEnd::CloseBox;
        };
        EXPECT_EQ(device.ShowConnection(m_text.data(), length, nullptr), -1);
        EXPECT_EQ(seenText, m_text.data());
        EXPECT_EQ(seenLength, length);
        EXPECT_EQ(device.m_nConnectionTextLen, length);  // nothing was written
    }
}

TEST_F(ConnectionTests, CloseBoxAndFailures_LeaveTheTextAlone) {
    CDevApiInterface_Impl& device = RealDevice();
    SetText(L"before");
    EXPECT_EQ(Show(device, DialogEnd::CloseBox), -1);
    EXPECT_EQ(Show(device, DialogEnd::Cancelled), 0);
    EXPECT_EQ(Show(device, DialogEnd::Failed), 0);
    EXPECT_STREQ(m_text.data(), L"before");
}

TEST_F(ConnectionTests, FindAndConnect_SearchesEveryProduct) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    SearchTakes(2);
    EXPECT_EQ(Show(device, DialogEnd::FindAndConnect), 0);
    std::vector<std::string> expected{"listprod"};
    for (int product = 7; product <= 17; ++product) {
        expected.push_back("mode " + std::to_string(product) + " 0");
    }
    for (int product = 7; product <= 17; ++product) {
        expected.push_back("find " + std::to_string(product));
        expected.insert(expected.end(), {"findstat", "findstat"});
    }
    expected.emplace_back("listconprod");
    EXPECT_EQ(platform.server.Commands(), expected);
    EXPECT_EQ(platform.clock.Sleeps(), std::vector<std::uint32_t>(22, 500));
    EXPECT_EQ(platform.windows.looksAtMessages, 22);  // or Windows takes the host for hung
    EXPECT_STREQ(m_text.data(), L"m_iComPort 5");
    EXPECT_EQ(platform.server.OpenSockets(), 0U);
}

TEST_F(ConnectionTests, FindAndConnect_WritesTheTextOnceTheLinkIsClosed) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    SearchTakes(1);
    SetText(L"before");
    std::wstring atClose;
    platform.server.onCall = [&](const std::string& call) {
        if (call == "close") {
            atClose = m_text.data();
        }
    };
    EXPECT_EQ(Show(device, DialogEnd::FindAndConnect), 0);
    EXPECT_EQ(atClose, L"before");
    EXPECT_STREQ(m_text.data(), L"m_iComPort 5");
    platform.server.onCall = {};
}

TEST_F(ConnectionTests, FindAndConnect_ShowsItsPercentagesAndLeavesTheConnectingWindow) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    SearchTakes(3);
    Show(device, DialogEnd::FindAndConnect);
    const auto& opened = ScriptedDialogs::Current().opened;
    ASSERT_EQ(opened.size(), 2U);
    EXPECT_EQ(opened[0].caption, L"");
    EXPECT_EQ(opened[1].caption, L"Connecting");
    EXPECT_EQ(opened[0].parent, &m_parent);
    EXPECT_EQ(platform.windows.Percents(opened[0].window),
              (std::vector<int>{1, 9, 18, 27, 36, 45, 55, 64, 73, 82, 91}));
    EXPECT_EQ(platform.windows.Destroyed(), std::vector<oko::WindowHandle>{opened[0].window});
    EXPECT_EQ(platform.windows.Percents(opened[1].window), std::vector<int>{1});
    EXPECT_EQ(device.m_hProgressWnd, opened[1].window);
    EXPECT_TRUE(device.m_bConnectingShown);
    EXPECT_EQ(device.m_iProgress, 1);

    // The connection sequence that follows ends the window.
    device.ApplyConnection(m_text.data());
    device.Init(HostLog::Callback, nullptr);
    device.ApplyConfiguration(L"");
    EXPECT_EQ(platform.windows.Percents(opened[1].window),
              (std::vector<int>{1, 5, 15, 17, 25, 30, 40, 52, 70, 75, 83, 89}));
    EXPECT_EQ(platform.windows.Destroyed().back(), opened[1].window);
}

TEST_F(ConnectionTests, FindAndConnect_StepsAreInOrder) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    device.m_iProgress = 42;
    std::size_t polls = 0;
    const Journal journal(platform, device, [&](std::string_view command) -> ServerReply {
        if (command == "findstat") {
            EXPECT_EQ(platform.clock.Sleeps().size(), ++polls);  // the pause comes first
            return "0_findstat_-1\r";
        }
        return command == "listconprod" ? "0_listconprod_\r" : ScriptedServer::BuiltInReply(command);
    });
    Show(device, DialogEnd::FindAndConnect);

    std::vector<std::string> expected{"listprod", "open"};
    for (int product = 7; product <= 17; ++product) {
        expected.push_back("mode " + std::to_string(product) + " 0");
    }
    int product = 7;
    for (const char* const percent :
         {"1 %", "9 %", "18 %", "27 %", "36 %", "45 %", "55 %", "64 %", "73 %", "82 %", "91 %"}) {
        expected.insert(expected.end(), {"find " + std::to_string(product++), percent, "findstat"});
    }
    expected.insert(expected.end(), {"destroy", "listconprod", "open Connecting", "1 %"});
    EXPECT_EQ(journal.Events(), expected);
    // The search's own percentage is not the sequence's.
    for (const Journal::Entry& entry : journal.Entries()) {
        EXPECT_EQ(entry.progress, &entry == &journal.Entries().back() ? 1 : 42) << entry.what;
    }
}

TEST_F(ConnectionTests, FindAndConnect_DeviceAlreadyRunning_OpensNoSecondWindow) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    device.m_bSetupComplete = true;
    SearchTakes(1);
    Show(device, DialogEnd::FindAndConnect);
    EXPECT_EQ(ScriptedDialogs::Current().opened.size(), 1U);
    EXPECT_FALSE(device.m_bConnectingShown);
}

TEST_F(ConnectionTests, FindAndConnect_SilentOrRefusingServer_StopsAndStillWritesTheText) {
    for (const ServerReply& reply : {ServerReply(kReceiveFails), ServerReply("3_listprod_\r")}) {
        SCOPED_TRACE(testing::PrintToString(reply));
        CDevApiInterface_Impl& device = MakeDevice(0);
        platform.server.Answer("listprod", reply);
        m_text = {};
        EXPECT_EQ(Show(device, DialogEnd::FindAndConnect), 0);
        EXPECT_EQ(platform.server.Commands(), std::vector<std::string>{"listprod"});
        EXPECT_STREQ(m_text.data(), L"m_iComPort 5");
        EXPECT_TRUE(ScriptedDialogs::Current().opened.empty());
    }
    EXPECT_EQ(platform.windows.ErrorBoxes().size(), 2U);
}

TEST_F(ConnectionTests, FindAndConnect_ListProdCodes1And2_AreLoggedUnderTheNameOfInit) {
    for (const int code : {1, 2}) {
        SCOPED_TRACE(code);
        HostLog::Reset();
        CDevApiInterface_Impl& device = RealDevice();
        SearchTakes(1);
        platform.server.Answer("listprod", std::to_string(code) + "_listprod_7\r");
        EXPECT_EQ(Show(device, DialogEnd::FindAndConnect), 0);
        EXPECT_EQ(HostLog::Lines(), std::vector<std::wstring>{ResultLine(L"CDevApiInterface_Impl::Init", code)});
    }
}

TEST_F(ConnectionTests, FindAndConnect_LooksAtTheMessagesThatWaitBeforeEachPause) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    SearchTakes(2);
    platform.clock.onSleep = [this, sleeps = 0](std::uint32_t) mutable {
        EXPECT_EQ(platform.windows.looksAtMessages, ++sleeps);
    };
    Show(device, DialogEnd::FindAndConnect);
    EXPECT_EQ(platform.windows.looksAtMessages, 22);
    platform.clock.onSleep = {};
}

TEST_F(ConnectionTests, FindAndConnect_FailingPolls_AreRepeated) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    SearchTakes(1);
    platform.server.AnswerInTurn("findstat",
                                 {kReceiveFails, "", "0_findstat_-1" + std::string(60, ' '), "0_findstat_-1\r"});
    Show(device, DialogEnd::FindAndConnect);
    EXPECT_EQ(platform.clock.Sleeps().size(), 14U);
}

TEST_F(ConnectionTests, FindAndConnect_Minus1AnywhereInTheReply_EndsTheSearch) {
    for (const char* const reply :
         {"0_findstat_-1\r", "0_findstat_-1 7\r", "0_findstat_7 -1\r", "-1_findstat_50\r", "-1", "0_findstat_x-12\r"}) {
        CDevApiInterface_Impl& device = MakeDevice(0);
        SearchTakes(1);
        platform.server.AnswerInTurn(
            "findstat", {"0_findstat_1\r", "0_findstat_- 1\r", "0_findstat_99\r", reply, "0_findstat_-1\r"});
        Show(device, DialogEnd::FindAndConnect);
        EXPECT_EQ(std::ranges::count(platform.server.Commands(), "findstat"), 4 + 10) << reply;
    }
}

TEST_F(ConnectionTests, FindAndConnect_StartedServer_IsPolledEverySecond) {
    constexpr const wchar_t* kKey = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\OKO";
    platform.registry.Set(kKey, L"DisplayName", RegistryValue::Text(L"OKO-Control Server"));
    platform.registry.Set(kKey, L"InstallLocation", RegistryValue::Text(L"C:\\Okolab\\"));
    platform.files.Answer(L"C:\\Okolab\\*", {{L"OKO-Control.exe"}});
    CDevApiInterface_Impl& device = MakeDevice(0);
    SearchTakes(1);
    platform.server.AnswerInTurn("listprod",
                                 {kReceiveFails, kReceiveFails, kReceiveFails, kReceiveFails, "0_listprod_\r"});
    Show(device, DialogEnd::FindAndConnect);
    std::vector<std::uint32_t> expected(3, 1000);  // without one between the start and the first look
    expected.insert(expected.end(), 11, 500);      // the search
    EXPECT_EQ(platform.clock.Sleeps(), expected);
}

TEST_F(ConnectionTests, ValuePanel_IsOpenedInItsParent) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    oko::DialogProcedure procedure = nullptr;
    const oko::WindowHandle panel = device.CreateValuePanel(&m_parent, &procedure);
    ASSERT_EQ(ScriptedDialogs::Current().opened.size(), 1U);
    EXPECT_EQ(ScriptedDialogs::Current().opened[0].window, panel);
    EXPECT_EQ(ScriptedDialogs::Current().opened[0].parent, &m_parent);
    EXPECT_NE(procedure, nullptr);
    EXPECT_NE(device.CreateValuePanel(&m_parent, nullptr), nullptr);
}

TEST_F(ConnectionTests, FindAndConnect_HoldsTheLinkForItsWholeRunAndRestoresTheFlag) {
    for (const bool before : {false, true}) {
        SCOPED_TRACE(testing::Message() << "busy before: " << before);
        CDevApiInterface_Impl& device = RealDevice();
        platform.server.AnswerPayload("listconprod", "9");
        device.m_bBusy = before;
        std::size_t idle = 0;
        platform.server.SetDefault([&](std::string_view command) -> ServerReply {
            idle += device.m_bBusy ? 0U : 1U;
            return "0_" + std::string(command) + "_-1\r";
        });
        EXPECT_EQ(Show(device, DialogEnd::FindAndConnect), 0);
        EXPECT_EQ(idle, 0U);
        EXPECT_EQ(device.m_bBusy, before);

        platform.server.SetDefault([](std::string_view) -> ServerReply { return std::nullopt; });
        EXPECT_EQ(Show(device, DialogEnd::FindAndConnect), 0);  // the server is gone
        EXPECT_EQ(device.m_bBusy, before);
        m_pDevice.reset();
    }
}

TEST_F(ConnectionTests, SecondSearch_ClosesTheWindowThatTheFirstOneLeftUp) {
    CDevApiInterface_Impl& device = RealDevice();
    SearchTakes(1);
    EXPECT_EQ(Show(device, DialogEnd::FindAndConnect), 0);
    ASSERT_EQ(ScriptedDialogs::Current().opened.size(), 2U);
    const auto handle = [](std::size_t i) { return ScriptedDialogs::Current().opened[i].window; };
    EXPECT_EQ(platform.windows.Destroyed(), std::vector<oko::WindowHandle>{handle(0)});

    EXPECT_EQ(Show(device, DialogEnd::FindAndConnect), 0);
    ASSERT_EQ(ScriptedDialogs::Current().opened.size(), 4U);
    EXPECT_EQ(platform.windows.Destroyed(), (std::vector<oko::WindowHandle>{handle(0), handle(1), handle(2)}));

    EXPECT_EQ(device.ApplyConfiguration(L""), 0);
    EXPECT_EQ(platform.windows.Destroyed().size(), 4U);
    device.Close();
    EXPECT_EQ(Show(device, DialogEnd::FindAndConnect), 0);  // the settings closed the last one already
    EXPECT_EQ(platform.windows.Destroyed().size(), 5U);
}

}  // namespace
