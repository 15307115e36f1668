#include "transcript/Show.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/Answer.h"
#include "text/Columns.h"
#include "text/Duration.h"
#include "text/Number.h"
#include "text/Words.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

enum Column : std::size_t { kTime, kDelay, kCommand, kCode, kPayload, kRemark, kColumns };

constexpr std::array<Align, kColumns> kAligns{Align::Right, Align::Right, Align::Left,
                                              Align::Right, Align::Left,  Align::Left};

constexpr std::size_t kLongestCommand = 40;   // commands of the library are shorter
constexpr std::size_t kShortestPayload = 12;  // however narrow the screen is

using Row = std::vector<std::string>;

/// As text; nothing for nothing, where its column says what is missing.
std::string Printable(std::string_view bytes) { return bytes.empty() ? "" : Escape(bytes); }

std::string DelayText(const std::optional<double>& seconds) {
    constexpr int kMicroseconds = 3;
    return seconds ? FormatFixed(*seconds * 1000.0, kMicroseconds) : "-";
}

/// What is odd about a datagram, as the client of the command sees it.
std::string Oddity(const std::optional<std::string>& command, std::string_view datagram) {
    if (datagram.empty()) {
        return "empty";
    }
    if (!datagram.ends_with('\r')) {
        return "no carriage return";
    }
    if (std::ranges::count(datagram, '_') < 2) {
        return "no reply's form";
    }
    return !command || EchoesCommand(datagram, *command) ? "" : "echo of another command";
}

std::string Remark(const Exchange& exchange, std::size_t index) {
    std::vector<std::string> remarks;
    if (!exchange.command) {
        remarks.emplace_back("nobody asked");
    } else if (exchange.replies.size() > 1) {
        remarks.push_back(std::to_string(index + 1) + " of " + std::to_string(exchange.replies.size()) + " datagrams");
    }
    if (const std::string oddity = Oddity(exchange.command, exchange.replies[index].datagram); !oddity.empty()) {
        remarks.push_back(oddity);
    }
    return JoinWords(remarks, "and");
}

void AddRows(const Exchange& exchange, std::vector<Row>& rows) {
    constexpr int kMilliseconds = 3;
    const std::string time = FormatFixed(exchange.seconds, kMilliseconds);
    const std::string command = exchange.command ? Escape(*exchange.command) : "-";
    if (exchange.replies.empty()) {
        rows.push_back({time, "-", command, "-", "", "no answer"});
    }
    for (std::size_t i = 0; i < exchange.replies.size(); ++i) {
        const Reply& reply = exchange.replies[i];
        const auto parts = SplitReply(reply.datagram);
        rows.push_back({i == 0 ? time : "", DelayText(reply.delaySeconds), i == 0 ? command : "",
                        parts ? std::to_string(parts->answer.code) : "-",
                        Printable(parts ? parts->answer.payload : reply.datagram), Remark(exchange, i)});
    }
}

void Cut(std::string& text, std::size_t longest) {
    constexpr std::string_view kDots = "...";
    if (text.size() > longest) {
        text.resize(longest - kDots.size());
        text += kDots;
    }
}

/// Cuts commands and payloads so that the lines fit.
void Fit(std::vector<Row>& rows, std::size_t width) {
    constexpr std::size_t kBetween = 2;
    std::size_t others = 0;
    for (std::size_t column = 0; column < kColumns; ++column) {
        std::size_t widest = 0;
        for (Row& row : rows) {
            if (column == kCommand) {
                Cut(row[column], kLongestCommand);
            }
            widest = std::max(widest, row[column].size());
        }
        others += column == kPayload || widest == 0 ? 0 : widest + kBetween;
    }
    const std::size_t room = std::max(kShortestPayload, width > others ? width - others : 0);
    for (Row& row : rows) {
        Cut(row[kPayload], room);
    }
}

std::string CountLine(const std::vector<Exchange>& exchanges) {
    const auto unasked = static_cast<std::size_t>(
        std::ranges::count_if(exchanges, [](const Exchange& exchange) { return !exchange.command; }));
    const auto unanswered = std::ranges::count_if(exchanges, [](const Exchange& e) { return e.replies.empty(); });
    std::string line = Counted(exchanges.size() - unasked, "exchange", "exchanges") + ", " +
                       std::to_string(unanswered) + " without an answer";
    if (unasked > 0) {
        line += ", " + Counted(unasked, "datagram", "datagrams") + " that nobody asked for";
    }
    return line;
}

std::string CodeLine(const std::vector<Exchange>& exchanges) {
    std::map<std::string, std::size_t> counts;
    for (const Exchange& exchange : exchanges) {
        for (const Reply& reply : exchange.replies) {
            const auto parts = SplitReply(reply.datagram);
            ++counts[parts ? std::to_string(parts->answer.code) : "none"];
        }
    }
    std::vector<std::string> words;
    words.reserve(counts.size());
    for (const auto& [code, count] : counts) {
        words.push_back(code + " in " + Counted(count, "datagram", "datagrams"));
    }
    return words.empty() ? "" : "result codes: " + JoinWords(words, "and");
}

struct Delay {
    double seconds = 0.0;
    int line = 0;
};

std::string DelayLine(const std::vector<Exchange>& exchanges) {
    std::vector<Delay> delays;
    for (const Exchange& exchange : exchanges) {
        for (const Reply& reply : exchange.replies) {
            if (exchange.command && reply.delaySeconds) {
                delays.push_back({*reply.delaySeconds, exchange.line});
            }
        }
    }
    if (delays.empty()) {
        return "";
    }
    std::ranges::stable_sort(delays, {}, &Delay::seconds);
    // The smallest one that so many are not above.
    const auto text = [&](std::size_t percent) {
        return DelayText(delays[(delays.size() * percent + 99) / 100 - 1].seconds) + " ms";
    };
    return "delays: median " + text(50) + ", 99 % within " + text(99) + ", longest " + text(100) + " (line " +
           std::to_string(delays.back().line) + ")";
}

std::string PauseLine(const std::vector<Exchange>& exchanges) {
    double longest = -1.0;
    int line = 0;
    const Exchange* last = nullptr;
    for (const Exchange& exchange : exchanges) {
        if (!exchange.command) {
            continue;
        }
        if (last != nullptr && exchange.seconds - last->seconds > longest) {
            longest = exchange.seconds - last->seconds;
            line = exchange.line;
        }
        last = &exchange;
    }
    return longest < 0.0 ? ""
                         : "longest pause between two commands: " + FormatDuration(longest) + " (before line " +
                               std::to_string(line) + ")";
}

}  // namespace

std::string ShowTranscript(const std::vector<Exchange>& exchanges, std::size_t width) {
    std::vector<Row> rows{{"seconds", "delay ms", "command", "code", "payload", ""}};
    for (const Exchange& exchange : exchanges) {
        AddRows(exchange, rows);
    }
    if (width > 0) {
        Fit(rows, width);
    }
    std::string text;
    for (const std::string& line : FormatColumns(rows, {kAligns.begin(), kAligns.end()})) {
        text += line + "\n";
    }
    text += "\n";
    for (const std::string& line :
         {CountLine(exchanges), CodeLine(exchanges), DelayLine(exchanges), PauseLine(exchanges)}) {
        text += line.empty() ? "" : line + "\n";
    }
    return text;
}

}  // namespace emulator
