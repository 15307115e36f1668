#include "judge/Exchanges.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "model/DeviceMessage.h"
#include "text/Number.h"
#include "transcript/Transcript.h"

namespace {

constexpr std::array<std::string_view, 2> kPrefixes{"OKO-Lab bold line CommandSend: ",
                                                    "OKO-Lab bold line CommandSendSim: "};
constexpr std::string_view kArrow = " -> ";

/// The bytes that UTF-8 for the characters up to U+00FF was made of. What cannot have been one is a question mark.
std::string BytesOf(std::string_view utf8) {
    std::string bytes;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto first = static_cast<unsigned char>(utf8[i]);
        const bool isPair = (first == 0xC2U || first == 0xC3U) && i + 1 < utf8.size();
        if (first < 0x80U) {
            bytes += utf8[i];
        } else if (isPair) {
            const auto second = static_cast<unsigned char>(utf8[++i]);
            bytes += static_cast<char>(((first & 0x03U) << 6U) | (second & 0x3FU));
        } else if ((first & 0xC0U) == 0xC0U) {
            bytes += '?';
        }
    }
    return bytes;
}

}  // namespace

std::optional<Exchange> ReadExchangeLine(std::string_view line) {
    for (const std::string_view prefix : kPrefixes) {
        if (!line.starts_with(prefix)) {
            continue;
        }
        line.remove_prefix(prefix.size());
        const std::size_t arrow = line.find(kArrow);  // no command holds one
        if (arrow == 0 || arrow == std::string_view::npos) {
            return std::nullopt;
        }
        Exchange exchange;
        exchange.command = BytesOf(line.substr(0, arrow));
        if (const std::string_view reply = line.substr(arrow + kArrow.size()); !reply.empty()) {
            exchange.reply = BytesOf(reply);
        }
        return exchange;
    }
    return std::nullopt;
}

std::optional<Exchange> ExchangeTimes::Take(const DeviceMessage& message) {
    const double now = message.when.seconds;
    if (std::holds_alternative<device_message::CallBegun>(message.what)) {
        m_dBegun = now;
        return std::nullopt;
    }
    const auto* const line = std::get_if<device_message::LogLine>(&message.what);
    if (line == nullptr) {
        return std::nullopt;
    }
    auto exchange = ReadExchangeLine(line->text);
    if (exchange) {
        exchange->beginSeconds = m_dBegun;
        exchange->durationSeconds = now - m_dBegun;
    }
    m_dBegun = now;
    return exchange;
}

std::string TranscriptLine(const Exchange& exchange) {
    constexpr int kMilliseconds = 3;
    constexpr int kMicroseconds = 6;
    return FormatFixed(exchange.beginSeconds, kMilliseconds) + " " +
           FormatFixed(exchange.durationSeconds, kMicroseconds) + "\t" + emulator::Escape(exchange.command) + "\t" +
           (exchange.reply ? emulator::Escape(*exchange.reply) : "-");
}
