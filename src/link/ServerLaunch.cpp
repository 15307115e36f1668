// Making sure that the server answers before anything else is asked of it: found, started and waited for when it does
// not.

#include <cstdint>
#include <optional>

#include "base/Numbers.h"
#include "base/Text.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"
#include "link/ResultCode.h"
#include "link/ServerDiscovery.h"
#include "platform/Clock.h"
#include "platform/Shell.h"
#include "platform/Window.h"

namespace {

constexpr const wchar_t* kStartParameters = L"server address=localhost port=60000";
constexpr int kMaxPolls = 20;

constexpr const wchar_t* kNoAnswerText = L"No Answer from server.";
constexpr const wchar_t* kNoAnswerCaption = L"OKO-Control server error.";
constexpr const wchar_t* kRefusedCaption = L"OC Status error.";

Reply Probe(CDevApiInterface_Impl& device) noexcept { return Ask(device, FormatCommand(command::kListProd)); }

/// Starts the installed server. False, after a line in the log, when there is none.
bool StartServer(CDevApiInterface_Impl& device) noexcept {
    FolderText folder{};
    if (!FindServerInstallLocation(&folder)) {
        device.Log(L"System cannot find OKO-Control.");
        return false;
    }
    ExecutableText executable{};
    if (!FindServerExecutable(folder.data(), executable)) {
        device.Log(L"System cannot find OKO-Control application.");
        return false;
    }
    OpenProgram(executable.data(), kStartParameters, folder.data());
    return true;
}

/// "Server started on 5 loops (2.500000 seconds)".
// kept: docs/oddities.md#half-a-second-a-loop
void LogStarted(CDevApiInterface_Impl& device, int loops) noexcept {
    constexpr double kSecondsPerLoop = 0.5;
    LogLine line(L"Server started on ");
    line.AppendBytes(FormatInteger(loops).view()).Append(L" loops (");
    line.AppendBytes(FormatFixed(loops * kSecondsPerLoop, 6).view()).Append(L" seconds)");
    device.Log(line.c_str());
}

/// Probes a server that was just started until it answers or the polls are used up.
Reply WaitForServer(CDevApiInterface_Impl& device, std::uint32_t pollDelayMs) noexcept {
    Reply reply = Probe(device);
    int loops = 0;
    while (!reply.IsAnswer() && loops < kMaxPolls) {
        SleepMilliseconds(pollDelayMs);
        reply = Probe(device);
        ++loops;
    }
    // kept: docs/oddities.md#empty-reply-means-started
    if (reply.m_nLength < 0) {
        device.Log(L"Server not started.");
    } else {
        LogStarted(device, loops);
    }
    return reply;
}

Reply ProbeOrStartServer(CDevApiInterface_Impl& device, std::uint32_t pollDelayMs) noexcept {
    Reply reply = Probe(device);
    if (reply.IsAnswer()) {
        return reply;
    }
    device.Log(L"Starting server first.");
    return StartServer(device) ? WaitForServer(device, pollDelayMs) : reply;
}

}  // namespace

CDevApiInterface_Impl::ServerState CDevApiInterface_Impl::EnsureServerRunning(
    std::uint32_t pollDelayMs, std::optional<int> progressOnceProbed) noexcept {
    const Reply reply = ProbeOrStartServer(*this, pollDelayMs);
    if (progressOnceProbed) {
        ReportProgress(*progressOnceProbed);
    }

    if (!reply.IsAnswer()) {
        // kept: docs/oddities.md#one-box-until-close
        if (!m_bServerErrorShown) {
            ShowErrorBox(kNoAnswerText, kNoAnswerCaption);
        }
        m_bServerErrorShown = true;
        return ServerState::Silent;
    }
    const int code = ResultCodeOf(reply.bytes());
    if (code == kCommandNotExecuted) {
        ShowErrorBox(kResultCodeTexts[kCommandNotExecuted].data(), kRefusedCaption);
        return ServerState::Refusing;
    }
    // kept: docs/oddities.md#search-logs-as-init
    LogResultCode(*this, L"CDevApiInterface_Impl::Init", code);
    return ServerState::Running;
}
