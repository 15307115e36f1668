#include "transcript/Transcript.h"

#include <charconv>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/Number.h"
#include "text/Parsed.h"
#include "text/Words.h"

namespace emulator {

namespace {

constexpr std::string_view kNothing = "-";  // no answer, or no command
constexpr std::string_view kEmpty = "\\0";

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

/// The byte of an escape such as "\x7F" that begins at `text`; takes it off.
char TakeEscape(std::string_view& text) {
    if (text.size() >= 2) {
        const char kind = text[1];
        const std::string_view simple = "rnt\\";
        const std::size_t found = simple.find(kind);
        if (found != std::string_view::npos) {
            text.remove_prefix(2);
            return "\r\n\t\\"[found];
        }
        unsigned value = 0;
        if (kind == 'x' && text.size() >= 4 &&
            std::from_chars(text.data() + 2, text.data() + 4, value, 16).ptr == text.data() + 4) {
            text.remove_prefix(4);
            return static_cast<char>(value);
        }
    }
    throw TranscriptError("\"" + std::string(text.substr(0, 4)) + "\" is no escape");
}

/// The seconds of the first column: when the command came, then the delays.
std::vector<double> ReadTimes(std::string_view column) {
    std::vector<double> times;
    for (const std::string_view word : Split(column, ' ')) {
        if (word.empty() && !times.empty()) {
            continue;  // several blanks
        }
        const Parsed<double> time = ParseNumber(word);
        if (!time) {
            throw TranscriptError("the time " + time.error);
        }
        if (*time < 0.0) {
            throw TranscriptError("the time \"" + std::string(word) + "\" is negative");
        }
        times.push_back(*time);
    }
    return times;
}

Exchange ReadLine(std::string_view line) {
    const std::vector<std::string_view> fields = Split(line, '\t');
    if (fields.size() < 3) {
        throw TranscriptError("time, command and reply are expected");
    }
    const std::vector<double> times = ReadTimes(fields[0]);
    // Without an answer there may be a time, too: how long nothing came.
    if (times.size() + 1 > fields.size()) {
        throw TranscriptError("there are more times than replies");
    }
    Exchange exchange;
    exchange.seconds = times.front();
    if (fields[1] != kNothing) {
        exchange.command = Unescape(fields[1]);
    }
    for (std::size_t i = 2; i < fields.size(); ++i) {
        if (fields[i] != kNothing) {
            exchange.replies.push_back(
                {Unescape(fields[i]), i - 1 < times.size() ? std::optional(times[i - 1]) : std::nullopt});
        }
    }
    return exchange;
}

}  // namespace

std::string Escape(std::string_view bytes) {
    if (bytes.empty()) {
        return std::string(kEmpty);
    }
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        if (byte == '\r') {
            text += "\\r";
        } else if (byte == '\n') {
            text += "\\n";
        } else if (byte == '\t') {
            text += "\\t";
        } else if (byte == '\\') {
            text += "\\\\";
        } else if (value < 0x20 || value > 0x7E || bytes == kNothing) {
            text += EscapedByte(byte);
        } else {
            text += byte;
        }
    }
    return text;
}

std::string Unescape(std::string_view text) {
    std::string bytes;
    if (text == kEmpty) {
        return bytes;
    }
    while (!text.empty()) {
        if (text.front() == '\\') {
            bytes += TakeEscape(text);
        } else {
            bytes += text.front();
            text.remove_prefix(1);
        }
    }
    return bytes;
}

std::string FormatTranscriptLine(const Exchange& exchange) {
    constexpr int kMilliseconds = 3;
    constexpr int kMicroseconds = 6;
    std::string line = FormatFixed(exchange.seconds, kMilliseconds);
    std::string replies;
    bool known = true;
    for (const Reply& reply : exchange.replies) {
        known = known && reply.delaySeconds.has_value();
        if (known) {
            line += " " + FormatFixed(*reply.delaySeconds, kMicroseconds);
        }
        replies += "\t" + Escape(reply.datagram);
    }
    line += "\t" + (exchange.command ? Escape(*exchange.command) : std::string(kNothing));
    return line + (replies.empty() ? "\t" + std::string(kNothing) : replies);
}

std::vector<Exchange> ReadTranscript(std::string_view text) {
    std::vector<Exchange> exchanges;
    int number = 0;
    for (std::string_view line : Split(text, '\n')) {
        ++number;
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.empty()) {
            continue;
        }
        try {
            exchanges.push_back(ReadLine(line));
        } catch (const TranscriptError& error) {
            throw TranscriptError("line " + std::to_string(number) + ": " + error.what());
        }
        exchanges.back().line = number;
    }
    return exchanges;
}

}  // namespace emulator
