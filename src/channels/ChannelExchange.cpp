#include "channels/ChannelExchange.h"

#include <cstdint>
#include <string_view>

#include "base/Text.h"
#include "channels/SharedValues.h"
#include "core/CDevApiInterface_Impl.h"
#include "core/CommandText.h"
#include "link/Exchange.h"
#include "link/Products.h"
#include "link/ResultCode.h"

namespace {

bool IsOneOf(std::string_view marks, char mark) noexcept {
    return mark != '\0' && marks.find(mark) != std::string_view::npos;
}

bool Passes(LogGate gate, bool channelLogs, int code) noexcept {
    switch (gate) {
        case LogGate::WhenChannelLogs:
            return channelLogs;
        case LogGate::ServerProblemWhenLogging:
            return channelLogs || code != kServerProblem;
        case LogGate::Always:
            break;
    }
    return true;
}

/// Logs a result code's line and turns the code into the host's result.
std::int32_t Judge(CDevApiInterface_Impl& device, std::wstring_view method, LogGate gate, bool channelLogs,
                   int code) noexcept {
    if (Passes(gate, channelLogs, code)) {
        LogResultCode(device, method, code);
    }
    // kept: docs/oddities.md#codes-above-3-succeed
    return code == kCommandNotExecuted ? oko::kFailure : oko::kSuccess;
}

void LogErrorReply(CDevApiInterface_Impl& device, std::wstring_view method, const Reply& reply) noexcept {
    device.Log(LogLine(method).Append(L" error: ").AppendBytes(reply.c_str()).c_str());
}

}  // namespace

CommandText FormatFor(std::string_view format, ChannelAddress address) noexcept {
    return FormatCommand(format, {address.m_iProduct, address.m_iChannel});
}

std::int32_t ReadChannelValue(const LinkOperation& operation, const ReadRules& rules, bool channelLogs,
                              const CommandText& command, SharedDouble& cache, double* value) noexcept {
    if (value != nullptr && rules.answersWhileBusy && operation.Device().m_bBusy) {
        *value = Get(cache);
        return oko::kSuccess;
    }
    return AskChannelValue(operation, rules, channelLogs, command, cache, value);
}

std::int32_t AskChannelValue(const LinkOperation& operation, const ReadRules& rules, bool channelLogs,
                             const CommandText& command, SharedDouble& cache, double* value) noexcept {
    if (value == nullptr) {
        return oko::kFailure;
    }
    CDevApiInterface_Impl& device = operation.Device();
    const Reply reply = Ask(operation, command);
    if (!reply.IsAnswer()) {
        return oko::kFailure;
    }
    const int code = ResultCodeOf(reply.bytes());
    // kept: docs/oddities.md#refusal-hides-its-text
    if (code < kCommandNotExecuted) {
        const ValueToken token = ParseValue(reply.bytes());
        if (IsOneOf(rules.errorMarks, token.mark)) {
            if (Passes(rules.gate, channelLogs, code)) {
                LogErrorReply(device, rules.method, reply);
            }
            return oko::kFailure;
        }
        if (IsOneOf(rules.silentMarks, token.mark)) {
            return oko::kFailure;
        }
        // kept: docs/oddities.md#reply-without-a-value-succeeds
        if (token.value) {
            *value = *token.value;
            Put(cache, *token.value);
        }
    }
    return Judge(device, rules.method, rules.gate, channelLogs, code);
}

std::int32_t WriteSetPoint(const LinkOperation& operation, const WriteRules& rules, bool channelLogs,
                           ChannelAddress address, double value) noexcept {
    // kept: docs/oddities.md#writes-while-busy
    const Reply reply = Ask(operation, FormatCommand(rules.format, {address.m_iProduct, address.m_iChannel, value}));
    if (!reply.IsAnswer()) {
        return oko::kFailure;
    }
    return Judge(operation.Device(), rules.method, rules.gate, channelLogs, ResultCodeOf(reply.bytes()));
}
