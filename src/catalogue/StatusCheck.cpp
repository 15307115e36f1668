// Reading the server's status report, and taking what fails out of the catalogue.

#include "catalogue/StatusCheck.h"

#include <array>
#include <cstddef>
#include <functional>
#include <string_view>

#include "base/Numbers.h"
#include "base/Text.h"
#include "catalogue/Catalogue.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Reply.h"

namespace {

constexpr std::size_t kStatusPrefixLength = 9;  // "0_status_"; kept: docs/oddities.md#nine-characters-unread
constexpr std::size_t kMaxStatusDigits = 3;

void LogStatusError(CDevApiInterface_Impl& device, const StatusError& status) noexcept {
    LogLine line(L"OKO-Lab bold line status error: product ");
    line.AppendBytes(FormatInteger(status.product).view()).Append(L", device ");
    line.AppendBytes(FormatInteger(status.device).view()).Append(L", error: ");
    line.AppendBytes(FormatInteger(status.error).view());
    device.Log(line.c_str());
}

}  // namespace

StatusOutcome ParseStatus(std::string_view reply, const std::function<void(const StatusError&)>& take) {
    if (reply.size() <= kStatusPrefixLength) {
        return StatusOutcome::Complete;
    }
    std::array<int, 3> triple{};
    std::size_t numbers = 0;
    std::size_t begin = kStatusPrefixLength;
    // kept: docs/oddities.md#unfinished-triple
    for (std::size_t i = begin; i < reply.size() && reply[i] != kReplyEnd; ++i) {
        if (IsDigit(reply[i])) {
            if (i - begin >= kMaxStatusDigits) {
                return StatusOutcome::NumberTooLong;
            }
            continue;
        }
        // kept: docs/oddities.md#empty-numbers-in-a-status
        triple[numbers % triple.size()] = ParseInteger(reply.substr(begin, i - begin));
        ++numbers;
        begin = i + 1;
        if (numbers % triple.size() == 0) {
            take({triple[0], triple[1], triple[2]});
        }
    }
    return StatusOutcome::Complete;
}

void CDevApiInterface_Impl::CheckStatus(const char* reply, int replyLength) noexcept {
    const std::size_t length = replyLength > 0 ? static_cast<std::size_t>(replyLength) : 0;
    const auto outcome = ParseStatus({reply, length}, [&](const StatusError& status) {
        LogStatusError(*this, status);
        // kept: docs/oddities.md#error-0-is-an-error
        RemoveDevice(*this, status.product, status.device);
    });
    if (outcome == StatusOutcome::NumberTooLong) {
        // kept: docs/oddities.md#long-number-is-fatal
        FatalFault(L"OKO-Lab bold line CheckStatus: a number in the server's reply is too long.");
    }
}
