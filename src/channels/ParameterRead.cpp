#include "channels/ParameterRead.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/Numbers.h"
#include "base/Text.h"
#include "catalogue/Catalogue.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"
#include "link/Products.h"
#include "link/ResultCode.h"

namespace {

// kept: docs/oddities.md#parameter-logs-as-temperature
constexpr std::wstring_view kMethod = L"CDevApiInterface_Temperature_Impl::GetCurrentTemperature";

Reply AskParameter(const LinkOperation& operation, std::uint32_t product, std::uint32_t parameter) noexcept {
    return Ask(operation, FormatCommand(command::kReadParam,
                                        {static_cast<std::int32_t>(product), static_cast<std::int32_t>(parameter)}));
}

/// The reply that the catalogue keeps, as if it had just come.
Reply CachedReply(const KeptReply& kept) noexcept {
    Reply reply;
    const std::string_view text(kept.data());
    CopyCut(text, {reply.data(), static_cast<std::size_t>(reply.capacity())});
    reply.m_nLength = static_cast<int>(text.size());
    return reply;
}

/// The companion's value; 0 when it has none, or none that is finite. Its reply is walked only as far as the first one
/// reaches, and an "e" of the FIRST reply at the place of the payload voids it.
// kept: docs/oddities.md#companion-of-an-error
double ReadCompanion(const LinkOperation& operation, std::uint32_t product, std::int32_t second,
                     const Reply& first) noexcept {
    const Reply companion = AskParameter(operation, product, static_cast<std::uint32_t>(second));
    if (!companion.IsAnswer() || ResultCodeOf(companion.bytes()) >= kCommandNotExecuted) {
        return 0.0;
    }
    // Behind its received bytes the companion's buffer holds zeros, so the walk may pass its end.
    const std::string_view walked(companion.c_str(), first.bytes().size());
    const auto position = PayloadPosition(walked);
    if (!position || walked[*position] == 'n' || first.bytes()[*position] == 'e') {
        return 0.0;
    }
    ParameterText value{};
    CopyCut(companion.bytes().substr(std::min(*position, companion.bytes().size())), value);
    return ParseDouble(DropLineEnd(value.data())).value_or(0.0);
}

/// What the payload of a reply is worth.
enum class Payload { Accepted, Rejected };

Payload TakePayload(std::string_view reply, std::uint32_t parameter, bool check, double companion,
                    char* value) noexcept {
    const auto position = PayloadPosition(reply);
    // kept: docs/oddities.md#parameter-without-a-value
    if (!position) {
        return Payload::Accepted;
    }
    const std::string_view payload = reply.substr(*position);
    if (payload.front() == 'e' || (check && payload.front() == 'n')) {
        return Payload::Rejected;
    }
    CopyCut(DropLineEnd(payload), {value, ParameterText{}.size()});
    if (!check) {
        return Payload::Accepted;
    }
    // kept: docs/oddities.md#zero-is-absent
    const auto number = ParseDouble(value);
    const bool missing =
        !number || (parameter != static_cast<std::uint32_t>(parameter::kAirMode) && *number - companion == 0.0);
    return missing ? Payload::Rejected : Payload::Accepted;
}

}  // namespace

bool ReadDeviceParameter(const LinkOperation& operation, std::uint32_t product, std::uint32_t parameter, char* value,
                         bool check, bool useCache, std::int32_t second) noexcept {
    CDevApiInterface_Impl& device = operation.Device();
    const auto productNumber = static_cast<std::int32_t>(product);
    const auto kept = FindKeptReply(device, productNumber, parameter);
    if (!kept) {
        return false;
    }

    Reply reply;
    double companion = 0.0;
    if (useCache && kept->front() != '\0') {
        reply = CachedReply(*kept);
    } else {
        reply = AskParameter(operation, product, parameter);
        // kept: docs/oddities.md#kept-errors
        // Looked up again: the catalogue may be another one since the server was asked.
        KeepReply(device, productNumber, parameter, reply.text());
        if (second >= 1 && check) {
            companion = ReadCompanion(operation, product, second, reply);
        }
    }
    if (!reply.IsAnswer()) {
        return false;
    }

    const int code = ResultCodeOf(reply.bytes());
    if (code < kCommandNotExecuted &&
        TakePayload(reply.bytes(), parameter, check, companion, value) == Payload::Rejected) {
        return false;
    }
    LogResultCode(device, kMethod, code);
    return code != kCommandNotExecuted;
}

std::optional<ParameterText> ReadAirModeState(const LinkOperation& operation, std::int32_t product) noexcept {
    ParameterText state{};
    const bool told = ReadDeviceParameter(operation, static_cast<std::uint32_t>(product), parameter::kAirMode,
                                          state.data(), true, false, kNoCompanion);
    return told ? std::optional(state) : std::nullopt;
}

bool IsDeviceParameterPresent(const LinkOperation& operation, std::uint32_t product, std::uint32_t parameter,
                              std::int32_t second) noexcept {
    ParameterText value{};
    return ReadDeviceParameter(operation, product, parameter, value.data(), true, false, second);
}

bool IsReplyValueNonZero(std::string_view reply) noexcept {
    if (reply.empty()) {
        return false;
    }
    // kept: docs/oddities.md#refused-is-present
    if (ResultCodeOf(reply) >= kCommandNotExecuted) {
        return true;
    }
    const auto position = PayloadPosition(reply);
    if (!position) {
        return true;
    }
    const std::string_view payload = reply.substr(*position);
    if (payload.front() == 'e' || payload.front() == 'n') {
        return false;
    }
    return ParseDouble(DropLineEnd(payload)).value_or(0.0) != 0.0;
}
