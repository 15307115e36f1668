// Slot 0: from a host's callback to live channels.

#include <cstdint>

#include "catalogue/Catalogue.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/Flags.h"
#include "link/Exchange.h"
#include "link/ProductModes.h"
#include "link/Products.h"
#include "link/Switches.h"

namespace {

constexpr std::uint32_t kServerPollDelayMs = 500;

constexpr const wchar_t* kLostLinkText =
    L"CDevApiInterface_Impl::Init The link was closed or opened anew meanwhile; Init failed.";
constexpr const wchar_t* kTimedOutText =
    L"CDevApiInterface_Impl::Init No answer within the time of ReplyTimeout; Init failed.";

void ResetLiveCounts(CDevApiInterface_Impl& device) noexcept {
    device.m_nTemperatures = 0;
    device.m_nGasConcentrations = 0;
    device.m_nHumidifiers = 0;
}

/// Tells the server where each product is connected, and has it check.
void SendComPorts(const LinkOperation& operation) noexcept {
    const CDevApiInterface_Impl& device = operation.Device();
    const std::int32_t port = device.m_iComPort;
    for (int product = device.m_iFirstProduct; product <= device.m_iLastProduct; ++product) {
        Tell(operation, FormatCommand(command::kSetComPort, {product, port}));
    }
    for (const ProductTraits& traits : kProducts) {
        if (traits.secondLink) {
            Tell(operation, FormatCommand(command::kSetComPortSecondLink, {traits.product, port}));
        }
    }
    for (int product = device.m_iFirstProduct; product <= device.m_iLastProduct; ++product) {
        Tell(operation, FormatCommand(command::kCheckConnection, {product}));
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
    const std::uint32_t link = m_nLink;
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
    switch (EnsureServerRunning({*this, link}, kServerPollDelayMs, 30)) {
        case ServerState::Running:
            return SetUpProducts(link);
        case ServerState::Interrupted:
            Log(kLostLinkText);
            [[fallthrough]];
        default:
            return oko::kFailure;
    }
}

/// The rest of Init, once the server answers. A reply that does not come in time would leave a channel out, or give it
/// a range that the server never told: Init fails instead.
std::int32_t CDevApiInterface_Impl::SetUpProducts(std::uint32_t link) {
    const LinkOperation operation(*this, link, LinkOperation::OnTimeout::End);
    // kept: docs/oddities.md#later-refusals
    SendModes(operation);
    ReportProgress(40);
    SendComPorts(operation);
    m_bFindRequested = false;
    EnumerateProducts(operation);
    ReportProgress(52);
    Tell(operation, FormatCommand(command::kStart, {1}));
    ResetLiveCounts(*this);
    // kept: docs/oddities.md#status-of-64-bytes
    const Reply status = Ask(operation, FormatCommand(command::kStatus));
    CheckStatus(status.c_str(), status.m_nLength);
    AssignChannels(operation);
    ReportProgress(70);
    if (m_bSimulator) {
        StartValueThread(operation);
    }
    if (operation.HasEnded()) {
        ResetLiveCounts(*this);
        Log(operation.HasLostLink() ? kLostLinkText : kTimedOutText);
        return oko::kFailure;
    }
    m_bBusy = false;
    return oko::kSuccess;
}
