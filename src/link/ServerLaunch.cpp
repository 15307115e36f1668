// Making sure that the server answers before anything else is asked of it.

#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"
#include "link/ResultCode.h"

namespace {

constexpr const wchar_t* kNoAnswerText = L"No Answer from server.";
constexpr const wchar_t* kNoAnswerCaption = L"OKO-Control server error.";
constexpr const wchar_t* kRefusedCaption = L"OC Status error.";

}  // namespace

CDevApiInterface_Impl::ServerState CDevApiInterface_Impl::EnsureServerRunning(
    [[maybe_unused]] std::uint32_t pollDelayMs, std::optional<int> progressOnceProbed) noexcept {
    const Reply reply = Ask(*this, FormatCommand(command::kListProd));
    if (progressOnceProbed) {
        ReportProgress(*progressOnceProbed);
    }

    if (!reply.IsAnswer()) {
        // Once until Close: repeated attempts against a silent server must not bury the user under boxes.
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
    LogResultCode(*this, L"CDevApiInterface_Impl::Init", code);
    return ServerState::Running;
}
