#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OpenDialog.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "oko/Settings.h"
#include "windows/LoopbackServer.h"

/// A host's main window, the dialogs' parent.
class HostWindow {
 public:
    HostWindow()
        : m_hWindow(CreateWindowExW(0, L"Static", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 10, 10, 600, 400, nullptr,
                                    nullptr, GetModuleHandleW(nullptr), nullptr)) {}
    ~HostWindow() { DestroyWindow(m_hWindow); }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    HWND Get() const { return m_hWindow; }

 private:
    HWND m_hWindow;
};

/// A server with the products that a test wants. Every product has device 0 and the listed parameters; all that is not
/// said otherwise is answered with the payload "1".
class IncubatorServer {
 public:
    IncubatorServer() = default;

    /// Answers this command with "0_<command>_<payload>" and a carriage return.
    void Answer(const std::string& command, const std::string& payload) {
        const std::scoped_lock lock(m_mutex);
        m_payloads[command] = payload;
    }

    /// Answers every command with these bytes; none is an empty datagram, which counts as no answer.
    void AnswerAll(const std::string& bytes) {
        const std::scoped_lock lock(m_mutex);
        m_all = bytes;
    }

    void Connect(const std::vector<int>& products, const std::string& parameters) {
        std::string list;
        for (const int product : products) {
            const std::string number = std::to_string(product);
            list.append(list.empty() ? "" : " ").append(number);
            Answer("listdev " + number, "0");
            Answer("bl-param-list " + number, parameters);
        }
        Answer("listconprod", list);
    }

    std::vector<std::string> Commands() { return m_server.Commands(); }

    /// What came since the last call.
    std::vector<std::string> NewCommands() {
        const std::vector<std::string> all = m_server.Commands();
        const auto seen = static_cast<std::ptrdiff_t>(std::exchange(m_nSeen, all.size()));
        return {all.begin() + seen, all.end()};
    }

 private:
    std::string Reply(std::string_view command) {
        const std::scoped_lock lock(m_mutex);
        if (m_all) {
            return *m_all;
        }
        const auto payload = m_payloads.find(std::string(command));
        return LoopbackServer::Reply(command, payload != m_payloads.end() ? payload->second : "1");
    }

    std::mutex m_mutex;
    std::map<std::string, std::string> m_payloads;
    std::optional<std::string> m_all;
    std::size_t m_nSeen = 0;
    LoopbackServer m_server{[this](std::string_view command) { return Reply(command); }};
};

/// The real device, with a parent for its dialogs.
class DialogTest : public testing::Test {
 protected:
    DialogTest() { HostRecord::Current() = {}; }
    ~DialogTest() override { Device().Close(); }

    CDevApiInterface& Device() const { return m_library.Device(oko::kRealDevice); }

    /// Shows the configuration dialog while `drive` works it.
    template <class Drive>
    std::int32_t ShowConfiguration(Drive drive) {
        return WithDialog(
            [this] {
                return Device().ShowConfiguration(text.data(), static_cast<std::int32_t>(text.size()), parent.Get());
            },
            drive);
    }

    /// Shows the connection dialog while `drive` works it.
    template <class Drive>
    std::int32_t ShowConnection(Drive drive) {
        return WithDialog(
            [this] {
                return Device().ShowConnection(text.data(), static_cast<std::int32_t>(std::wcslen(text.data())),
                                               parent.Get());
            },
            drive);
    }

    void SetText(std::wstring_view settings) {
        text = {};
        settings.copy(text.data(), text.size() - 1);
    }

    LoadedLibrary m_library;
    HostWindow parent;
    std::array<wchar_t, oko::kConfigurationTextLength> text{};  // the host's buffer, for either dialog
};

/// The same against a server of the test's own.
class IncubatorDialogTest : public DialogTest {
 protected:
    /// Brings the device up as a host does, with the usual alarm settings.
    void Start(const std::vector<int>& products,
               const std::string& parameters = "74 87 88 107 119 189 206 209 237 238") {
        server.Connect(products, parameters);
        Device().ApplyConnection(L"m_iComPort 3");
        ASSERT_EQ(Device().Init(HostRecord::Callback, nullptr), oko::kSuccess);
        ASSERT_EQ(Device().ApplyConfiguration(L"dIncubatorBelow 0.2"), oko::kSuccess);
        HostRecord::Current() = {};
        server.NewCommands();
    }

    /// Before the server goes: Close still talks to it.
    void TearDown() override { Device().Close(); }

    IncubatorServer server;
};
