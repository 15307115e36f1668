#include "channels/ChannelRoads.h"

#include <algorithm>
#include <mutex>

#include "base/Text.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"
#include "link/ResultCode.h"

namespace {

bool IsOneOf(std::string_view marks, char mark) noexcept {
    return mark != '\0' && marks.find(mark) != std::string_view::npos;
}

bool Passes(LogGate gate, bool bChannelLogs, int code) noexcept {
    switch (gate) {
        case LogGate::WhenChannelLogs:
            return bChannelLogs;
        case LogGate::ServerProblemWhenLogging:
            return bChannelLogs || code != kServerProblem;
        case LogGate::Always:
            break;
    }
    return true;
}

/// Logs a result code's line and turns the code into the host's result.
std::int32_t Judge(CDevApiInterface_Impl& device, std::wstring_view method, LogGate gate, bool bChannelLogs,
                   int code) noexcept {
    if (Passes(gate, bChannelLogs, code)) {
        LogResultCode(device, method, code);
    }
    return code == kCommandNotExecuted ? oko::kFailure : oko::kSuccess;
}

void LogErrorReply(CDevApiInterface_Impl& device, std::wstring_view method, const Reply& reply) noexcept {
    device.Log(LogLine(method).Append(L" error: ").AppendBytes(reply.c_str()).c_str());
}

}  // namespace

CommandText FormatFor(std::string_view format, ChannelAddress address) noexcept {
    return FormatCommand(format, {address.m_iProduct, address.m_iChannel});
}

std::int32_t ReadChannelValue(CDevApiInterface_Impl& device, const ReadRules& rules, bool bChannelLogs,
                              const CommandText& command, SharedDouble& cache, double* value) noexcept {
    if (value != nullptr && rules.answersWhileBusy && device.m_bBusy) {
        *value = Get(cache);
        return oko::kSuccess;
    }
    return AskChannelValue(device, rules, bChannelLogs, command, cache, value);
}

std::int32_t AskChannelValue(CDevApiInterface_Impl& device, const ReadRules& rules, bool bChannelLogs,
                             const CommandText& command, SharedDouble& cache, double* value) noexcept {
    if (value == nullptr) {
        return oko::kFailure;
    }
    const Reply reply = Ask(device, command);
    if (!reply.IsAnswer()) {
        return oko::kFailure;
    }
    const int code = ResultCodeOf(reply.bytes());
    if (code < kCommandNotExecuted) {
        const ValueToken token = ParseValue(reply.bytes());
        if (IsOneOf(rules.errorMarks, token.mark)) {
            if (Passes(rules.gate, bChannelLogs, code)) {
                LogErrorReply(device, rules.method, reply);
            }
            return oko::kFailure;
        }
        if (IsOneOf(rules.silentMarks, token.mark)) {
            return oko::kFailure;
        }
        if (token.value) {
            *value = *token.value;
            Put(cache, *token.value);
        }
    }
    return Judge(device, rules.method, rules.gate, bChannelLogs, code);
}

std::int32_t WriteSetPoint(CDevApiInterface_Impl& device, const WriteRules& rules, bool bChannelLogs,
                           ChannelAddress address, double value) noexcept {
    const Reply reply = Ask(device, FormatCommand(rules.format, {address.m_iProduct, address.m_iChannel, value}));
    if (!reply.IsAnswer()) {
        return oko::kFailure;
    }
    return Judge(device, rules.method, rules.gate, bChannelLogs, ResultCodeOf(reply.bytes()));
}

double ClampPercentTarget(double value, double min, double max) noexcept {
    constexpr double kMaxPercent = 99.99;
    const double percent = std::clamp(value, 0.0, kMaxPercent);
    // In this order of arguments a NaN gives way to `min`; the gas stays at its lowest rather than at its highest.
    const double atLeast = std::max(min, percent);
    return atLeast > max ? max : atLeast;
}

bool IsWithinBand(double current, double target, double below, double above) noexcept {
    return target + above >= current && current >= target - below;
}

std::int32_t JudgePercentState(double current, double target, double below, double above, SharedInt& kept,
                               std::uint32_t* state) noexcept {
    if (state == nullptr) {
        return oko::kFailure;
    }
    *state = IsWithinBand(current, target, below, above) ? oko::kWithinBand : oko::kOutsideBand;
    Put(kept, static_cast<std::int32_t>(*state));
    return oko::kSuccess;
}

void StoreTarget(CDevApiInterface_Impl& device, SharedDouble& target, double value) noexcept {
    const std::scoped_lock lock(device.m_csData);
    Put(target, value);
    PostValuesChanged(device.m_hNotifyWnd);
}

std::int32_t StoreTolerance(CDevApiInterface_Impl& device, double below, double above, SharedDouble& toleranceBelow,
                            SharedDouble& toleranceAbove) noexcept {
    const std::scoped_lock lock(device.m_csData);
    Put(toleranceBelow, below);
    Put(toleranceAbove, above);
    return oko::kSuccess;
}

std::int32_t LoadTolerance(CDevApiInterface_Impl& device, const SharedDouble& toleranceBelow,
                           const SharedDouble& toleranceAbove, double* below, double* above) noexcept {
    if (below == nullptr || above == nullptr) {
        return oko::kFailure;
    }
    const std::scoped_lock lock(device.m_csData);
    *below = Get(toleranceBelow);
    *above = Get(toleranceAbove);
    return oko::kSuccess;
}
