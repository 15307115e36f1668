// Slot 0: from a host's callback to live channels.

#include <cstdint>

#include "catalogue/Catalogue.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/Flags.h"
#include "link/Exchange.h"
#include "link/ProductModes.h"
#include "link/Products.h"
#include "platform/Registry.h"

namespace {

constexpr std::uint32_t kServerPollDelayMs = 500;

constexpr const wchar_t* kSwitchesKey = L"Software\\Vellmark\\Misc";
constexpr const wchar_t* kLogValue = L"LogCommunication";
constexpr const wchar_t* kReplyTimeoutValue = L"ReplyTimeout";

/// The machine-wide switches.
struct Switches {
    bool logCommunication = false;
    std::uint32_t replyTimeoutMs = 0;  // 0: wait for ever
};

/// A number of exactly four bytes; anything else counts as 0.
std::uint32_t ReadSwitch(const RegistryKey& key, const wchar_t* value) noexcept {
    const auto info = key.Query(value);
    if (!info || info->type != kRegistryDword || info->sizeBytes != sizeof(std::uint32_t)) {
        return 0;
    }
    return key.ReadDword(value).value_or(0);
}

Switches ReadSwitches() noexcept {
    const auto key = OpenLocalMachine(kSwitchesKey);
    if (!key) {
        return {};
    }
    return {ReadSwitch(*key, kLogValue) == 1U, ReadSwitch(*key, kReplyTimeoutValue)};
}

void ResetLiveCounts(CDevApiInterface_Impl& device) noexcept {
    device.m_nTemperatures = 0;
    device.m_nGasConcentrations = 0;
    device.m_nHumidifiers = 0;
}

/// Tells the server where each product is connected, and has it check.
void SendComPorts(CDevApiInterface_Impl& device) noexcept {
    const std::int32_t port = device.m_iComPort;
    for (int product = device.m_iFirstProduct; product <= device.m_iLastProduct; ++product) {
        Tell(device, FormatCommand(command::kSetComPort, {product, port}));
    }
    for (const ProductTraits& traits : kProducts) {
        if (traits.secondLink) {
            Tell(device, FormatCommand(command::kSetComPortSecondLink, {traits.product, port}));
        }
    }
    for (int product = device.m_iFirstProduct; product <= device.m_iLastProduct; ++product) {
        Tell(device, FormatCommand(command::kCheckConnection, {product}));
    }
}

}  // namespace

std::int32_t CDevApiInterface_Impl::Init(oko::HostCallbackFunction callback, void* hostData) noexcept try {
    const FlagTurn turn(m_bSettingUp);
    // Called from the callback of an Init or a search, or on another thread meanwhile: two of them at once would deal
    // out the channels twice.
    return turn ? Initialise(callback, hostData) : oko::kFailure;
} catch (...) {
    return oko::kFailure;  // out of memory; the device stays busy, as after every failed Init
}

std::int32_t CDevApiInterface_Impl::Initialise(oko::HostCallbackFunction callback, void* hostData) {
    ReportProgress(15);
    m_bBusy = true;
    HostCallback = callback;
    Log(L"OKO-Lab bold line Init()");
    const Switches switches = ReadSwitches();
    m_bLogCommunication = switches.logCommunication;
    SetReplyTimeout(switches.replyTimeoutMs);
    ReportProgress(17);
    if (m_bSimulator) {
        StopValueThread();  // still there when the host left out Close; it must not see the channels change
        LoadSimulatorAnswer();
    }
    ReportProgress(25);
    m_pHostData = hostData;
    ResetLiveCounts(*this);
    CreateChannels();  // those that the host deleted

    // kept: docs/oddities.md#busy-after-failure
    if (EnsureServerRunning(kServerPollDelayMs, 30) != ServerState::Running) {
        return oko::kFailure;
    }
    // kept: docs/oddities.md#later-refusals
    SendModes(*this);
    ReportProgress(40);
    SendComPorts(*this);
    m_bFindRequested = false;
    EnumerateProducts();
    ReportProgress(52);
    Tell(*this, FormatCommand(command::kStart, {1}));
    ResetLiveCounts(*this);
    // kept: docs/oddities.md#status-of-64-bytes
    const Reply status = Ask(*this, FormatCommand(command::kStatus));
    CheckStatus(status.c_str(), status.m_nLength);
    AssignChannels();
    ReportProgress(70);

    if (m_bSimulator) {
        StartValueThread();
    }
    m_bBusy = false;
    return oko::kSuccess;
}
