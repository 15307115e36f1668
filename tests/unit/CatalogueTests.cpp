// The catalogue while others rebuild it: another thread's Init or search, or the host from its callback.

#include "catalogue/Catalogue.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Fixture.h"
#include "Patience.h"
#include "ProductSets.h"
#include "RegistryNames.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "link/LinkOperation.h"
#include "oko/Settings.h"
#include "ui/DialogEnd.h"
#include "ui/StatusReport.h"

namespace {

constexpr const wchar_t* kReadAirModeLine = L"OKO-Lab bold line CommandSend: bl-param-read 11 237";

class CatalogueTests : public DeviceTest {
 protected:
    /// An initialised device with these products, the communication log on.
    CDevApiInterface_Impl& Initialised(const std::vector<int>& products) {
        CDevApiInterface_Impl& device = RealDevice();
        ConnectProducts(platform, products);
        platform.server.AnswerPayload("findstat", "-1");
        platform.registry.Set(kMiscKey, kLogValue, RegistryValue::Dword(1));
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
        ScriptedDialogs::Current().onConnection = [](CDevApiInterface_Impl&) { return DialogEnd::FindAndConnect; };
        return device;
    }

    /// Calls `inner` once, from the host's callback, at the first log line that begins like this.
    void OnLine(std::wstring_view start, std::function<void()> inner) {
        HostLog::SetHook(
            [start, inner = std::move(inner), done = std::make_shared<bool>(false)](std::int32_t, const wchar_t* text) {
                if (!*done && text != nullptr && std::wstring_view(text).starts_with(start)) {
                    *done = true;
                    inner();
                }
            });
    }

    std::int32_t Search() {
        std::array<wchar_t, oko::kConnectionTextLength> text{};
        return m_pDevice->ShowConnection(text.data(), 0, nullptr);
    }

    /// An Init or a search of the host's own, from within its callback.
    std::vector<std::function<std::int32_t()>> InnerCalls() {
        return {[this] { return m_pDevice->Init(HostLog::Callback, nullptr); }, [this] { return Search(); }};
    }

    std::vector<int> Products() const {
        std::vector<int> products;
        for (std::size_t i = 0; const auto product = ProductAt(*m_pDevice, i); ++i) {
            products.push_back(*product);
        }
        return products;
    }
};

/// What a host can be in when it calls Init or the search from its callback, and the log line that it hears there.
struct Outer {
    const char* name;
    const wchar_t* line;
    std::int32_t (*call)(CDevApiInterface_Impl& device);
};

std::int32_t ReadGasTarget(CDevApiInterface_Impl& device) {
    double value = 0.0;
    return device.m_pGasConcentration[0]->GetTargetGasConcentration(&value);
}

std::int32_t ApplySettings(CDevApiInterface_Impl& device) { return device.ApplyConfiguration(L""); }

std::int32_t CollectReport(CDevApiInterface_Impl& device) {
    CollectStatusReport(device);
    return 0;
}

std::int32_t Configure(CDevApiInterface_Impl& device) {
    std::array<wchar_t, oko::kConfigurationTextLength> text{};
    ScriptedDialogs::Current().onConfiguration = [](CDevApiInterface_Impl& shown) {
        CollectStatusReport(shown);
        return DialogEnd::Ok;
    };
    return device.ShowConfiguration(text.data(), static_cast<std::int32_t>(text.size()), nullptr);
}

std::int32_t CloseDevice(CDevApiInterface_Impl& device) {
    device.Close();
    return 0;
}

constexpr std::array<Outer, 5> kOuterCalls{{
    {"gas target read", kReadAirModeLine, ReadGasTarget},
    {"settings", kReadAirModeLine, ApplySettings},
    {"status report", L"OKO-Lab bold line CommandSend: bl-param-read 11 130", CollectReport},
    {"configuration", kReadAirModeLine, Configure},
    {"close", L"OKO-Lab bold line CommandSend: connect 11 0", CloseDevice},
}};

TEST_F(CatalogueTests, InitOrSearchFromTheCallbackOfAnotherCall_IsCarriedOut) {
    for (const Outer& outer : kOuterCalls) {
        for (std::size_t i = 0; i < InnerCalls().size(); ++i) {
            SCOPED_TRACE(testing::Message() << outer.name << ", inner call " << i);
            CDevApiInterface_Impl& device = Initialised({11, 8});
            platform.server.AnswerPayload("bl-param-list 11", "31 130 237 238");
            ASSERT_EQ(device.Init(HostLog::Callback, nullptr), 0);
            std::int32_t inner = 99;
            OnLine(outer.line, [&] {
                ConnectProducts(platform, {9, 11, 12});
                inner = InnerCalls()[i]();
            });
            // A search opens a link of its own and closes it in the end.
            const bool losesItsLink = i == 1 && (outer.call == ReadGasTarget || outer.call == ApplySettings);
            EXPECT_EQ(outer.call(device), losesItsLink ? -1 : 0);
            EXPECT_EQ(inner, 0);
            EXPECT_EQ(Products(), (std::vector<int>{9, 11, 12}));
            m_pDevice.reset();
        }
    }
}

TEST_F(CatalogueTests, InitOrSearchFromTheCallbackOfInit_IsRefused) {
    for (const wchar_t* const line :
         {L"OKO-Lab bold line Init()", L"OKO-Lab bold line CommandSend: listprod",
          L"OKO-Lab bold line CommandSend: listdev 9", L"OKO-Lab bold line CommandSend: bl-param-list 9",
          L"OKO-Lab bold line CommandSend: readmin 9 0", L"OKO-Lab bold line status error"}) {
        for (std::size_t i = 0; i < InnerCalls().size(); ++i) {
            SCOPED_TRACE(testing::Message() << line << ", inner call " << i);
            CDevApiInterface_Impl& device = Initialised({11});
            ConnectProducts(platform, {9, 7});
            platform.server.AnswerPayload("status", "9 5 1 ");
            std::int32_t inner = 99;
            std::int32_t again = 99;
            std::size_t sentByInner = 99;
            OnLine(line, [&] {
                const std::size_t before = platform.server.Calls().size();
                inner = InnerCalls()[i]();
                again = InnerCalls()[i]();
                sentByInner = platform.server.Calls().size() - before;
            });
            EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
            EXPECT_EQ(inner, -1);
            EXPECT_EQ(again, -1);
            EXPECT_EQ(sentByInner, 0U);
            EXPECT_TRUE(ScriptedDialogs::Current().connectionParents.empty());  // no dialog for nothing
            EXPECT_EQ(device.GetTemperatureCount(), 9);
            EXPECT_EQ(device.GetGasConcentrationCount(), 0);
            HostLog::SetHook({});
            EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);  // refused only meanwhile
            m_pDevice.reset();
        }
    }
}

TEST_F(CatalogueTests, InitOrSearchFromTheCallbackOfASearch_IsRefused) {
    for (std::size_t i = 0; i < InnerCalls().size(); ++i) {
        SCOPED_TRACE(i);
        Initialised({11});
        ConnectProducts(platform, {9, 7});
        std::int32_t inner = 99;
        OnLine(L"OKO-Lab bold line CommandSend: listdev 9", [&] { inner = InnerCalls()[i](); });
        EXPECT_EQ(Search(), 0);
        EXPECT_EQ(inner, -1);
        EXPECT_EQ(Products(), (std::vector<int>{9, 7}));
        HostLog::SetHook({});
        EXPECT_EQ(Search(), 0);
        m_pDevice.reset();
    }
}

TEST_F(CatalogueTests, FailedInit_DoesNotKeepTheNextOneOut) {
    CDevApiInterface_Impl& device = RealDevice();
    platform.server.Answer("listprod", kReceiveFails);
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), -1);
    platform.server.AnswerPayload("listprod", "1");
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
}

TEST_F(CatalogueTests, SearchWhoseDialogWasUpWhenAnInitBegan_IsRefused) {
    CDevApiInterface_Impl& device = Initialised({11});
    std::array<wchar_t, oko::kConnectionTextLength> text{L'#'};
    std::thread initialisation;
    std::promise<void> began;
    std::promise<void> answered;
    std::atomic<bool> first = true;
    ScriptedDialogs::Current().onConnection = [&](CDevApiInterface_Impl& shown) {
        // The other thread's Init is held up at its first command until the dialog has ended.
        platform.server.SetDefault([&](std::string_view command) -> ServerReply {
            if (first.exchange(false)) {
                began.set_value();
                answered.get_future().wait();
            }
            return ScriptedServer::BuiltInReply(command);
        });
        initialisation = std::thread([&shown] { shown.Init(HostLog::Callback, nullptr); });
        began.get_future().wait();
        return DialogEnd::FindAndConnect;
    };
    const std::int32_t search = device.ShowConnection(text.data(), 0, nullptr);
    answered.set_value();
    initialisation.join();
    EXPECT_EQ(search, -1);
    EXPECT_EQ(text[0], L'#');
}

TEST_F(CatalogueTests, GasTargetRead_WhileTheCatalogueIsRebuilt_KeepsTheReplyInTheNewOne) {
    CDevApiInterface_Impl& device = Initialised({11});
    platform.server.AnswerPayload("bl-param-read 11 237", "1");
    platform.server.SetDefault({});
    OnLine(kReadAirModeLine, [&] {
        ConnectProducts(platform, {9, 11});
        device.EnumerateProducts(device);
    });
    double value = 0.0;
    EXPECT_EQ(device.m_pGasConcentration[0]->GetTargetGasConcentration(&value), 0);
    const auto kept = FindKeptReply(device, 11, 237);
    ASSERT_TRUE(kept);
    EXPECT_STREQ(kept->data(), "0_bl-param-read 11 237_1\r");
}

TEST_F(CatalogueTests, GasTargetReads_WhileAnotherThreadInitialisesAgainAndAgain_FindAWholeDevice) {
    CDevApiInterface_Impl& device = Initialised({11});
    device.m_bLogCommunication = false;
    platform.registry.Set(kMiscKey, kLogValue, RegistryValue::Dword(0));
    std::atomic<bool> ended = false;
    std::thread poller([&] {
        while (!ended) {
            double value = 0.0;
            EXPECT_EQ(device.m_pGasConcentration[0]->GetTargetGasConcentration(&value), 0);
        }
    });
    for (int i = 0; i < 50; ++i) {
        ConnectProducts(platform, i % 2 == 0 ? std::vector<int>{11, 8} : std::vector<int>{12, 9, 11});
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0) << i;
    }
    ended = true;
    poller.join();
}

TEST_F(CatalogueTests, Lock_IsFreeDuringExchangesAndCallbacks) {
    CDevApiInterface_Impl& device = Initialised({11});
    // Another thread gets at the catalogue at every line of the log, and so does it at every command.
    const auto reads = [&device] {
        auto read = std::async(std::launch::async, [&device] { return ProductAt(device, 99).has_value(); });
        return read.wait_for(kPatience) == std::future_status::ready;
    };
    HostLog::SetHook([&](std::int32_t, const wchar_t*) { EXPECT_TRUE(reads()); });
    platform.server.SetDefault([&](std::string_view command) -> ServerReply {
        EXPECT_TRUE(reads());
        return ScriptedServer::BuiltInReply(command);
    });
    platform.server.AnswerPayload("status", "11 5 1 ");
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), 0);
    EXPECT_EQ(device.ApplyConfiguration(L""), 0);
    EXPECT_EQ(ReadGasTarget(device), 0);
    device.Close();
}

TEST_F(CatalogueTests, ListsThatComeTooLate_AreNotGivenToAnotherProduct) {
    CDevApiInterface_Impl& device = RealDevice();
    ReplaceProducts(device, {{9, {1}, {}}});
    SetDevices(device, 0, 12, {7});
    SetParameters(device, 0, 12, {{107, {}}});
    SetDevices(device, 1, 9, {7});
    EXPECT_EQ(device.m_products[0].m_devices, std::vector<std::int32_t>{1});
    EXPECT_TRUE(device.m_products[0].m_params.empty());
}

}  // namespace
