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

// kept: docs/oddities.md#server-called-by-name
constexpr const wchar_t* kStartParameters = L"server address=localhost port=60000";
constexpr int kMaxPolls = 20;

constexpr const wchar_t* kNoAnswerText = L"No Answer from server.";
constexpr const wchar_t* kNoAnswerCaption = L"OKO-Control server error.";
constexpr const wchar_t* kRefusedCaption = L"OC Status error.";
constexpr const wchar_t* kNobodyToWatchText =
    L"CDevApiInterface_Impl::Init No answer from the server, and a device that only watches starts none.";

Reply Probe(const LinkOperation& operation) noexcept { return Ask(operation, FormatCommand(command::kListProd)); }

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
Reply WaitForServer(const LinkOperation& operation, std::uint32_t pollDelayMs) noexcept {
    Reply reply = Probe(operation);
    int loops = 0;
    while (!reply.IsAnswer() && loops < kMaxPolls && !operation.HasEnded()) {
        KeepWindowsResponding();
        SleepMilliseconds(pollDelayMs);
        reply = Probe(operation);
        ++loops;
    }
    if (operation.HasEnded()) {
        return reply;
    }
    // kept: docs/oddities.md#empty-reply-means-started
    if (reply.m_nLength < 0) {
        operation.Device().Log(L"Server not started.");
    } else {
        LogStarted(operation.Device(), loops);
    }
    return reply;
}

Reply ProbeOrStartServer(const LinkOperation& operation, std::uint32_t pollDelayMs) noexcept {
    CDevApiInterface_Impl& device = operation.Device();
    Reply reply = Probe(operation);
    if (reply.IsAnswer() || device.m_bWatchOnly || operation.HasEnded()) {
        return reply;
    }
    device.Log(L"Starting server first.");
    return StartServer(device) ? WaitForServer(operation, pollDelayMs) : reply;
}

/// Tells the user that there is no answer, or the host's log where nobody may be there to close a box.
void TellOfNoAnswer(CDevApiInterface_Impl& device) noexcept {
    if (device.m_bWatchOnly) {
        device.Log(kNobodyToWatchText);
        return;
    }
    // kept: docs/oddities.md#one-box-until-close
    if (!device.m_bServerErrorShown) {
        ShowErrorBox(kNoAnswerText, kNoAnswerCaption);
    }
    device.m_bServerErrorShown = true;
}

}  // namespace

CDevApiInterface_Impl::ServerState CDevApiInterface_Impl::EnsureServerRunning(
    const LinkOperation& operation, std::uint32_t pollDelayMs, std::optional<int> progressOnceProbed) noexcept {
    const Reply reply = ProbeOrStartServer(operation, pollDelayMs);
    if (operation.HasEnded()) {
        return ServerState::Interrupted;
    }
    if (progressOnceProbed) {
        ReportProgress(*progressOnceProbed);
    }

    if (!reply.IsAnswer()) {
        TellOfNoAnswer(*this);
        return ServerState::Silent;
    }
    const int code = ResultCodeOf(reply.bytes());
    if (code == kCommandNotExecuted && !m_bWatchOnly) {
        ShowErrorBox(kResultCodeTexts[kCommandNotExecuted].data(), kRefusedCaption);
        return ServerState::Refusing;
    }
    // kept: docs/oddities.md#search-logs-as-init
    LogResultCode(*this, L"CDevApiInterface_Impl::Init", code);
    return code == kCommandNotExecuted ? ServerState::Refusing : ServerState::Running;
}
