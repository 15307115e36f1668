#include "transcript/Transcript.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace emulator {

namespace {

constexpr std::string_view kNoAnswer = "-";
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

char HexDigit(unsigned value) { return "0123456789ABCDEF"[value & 0xFU]; }

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
        } else if (value < 0x20 || value > 0x7E || bytes == kNoAnswer) {
            text += {'\\', 'x', HexDigit(value >> 4U), HexDigit(value)};
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

std::string FormatTranscriptLine(double seconds, std::string_view command, const std::vector<std::string>& replies) {
    std::array<char, 32> time;
    const auto end = std::to_chars(time.data(), time.data() + time.size(), seconds, std::chars_format::fixed, 3).ptr;
    std::string line(time.data(), end);
    line.append("\t").append(Escape(command));
    if (replies.empty()) {
        line.append("\t").append(kNoAnswer);
    }
    for (const std::string& reply : replies) {
        line.append("\t").append(Escape(reply));
    }
    return line;
}

Replay::Replay(std::string_view transcript) {
    int number = 0;
    for (std::string_view line : Split(transcript, '\n')) {
        ++number;
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.empty()) {
            continue;
        }
        const std::vector<std::string_view> fields = Split(line, '\t');
        if (fields.size() < 3) {
            throw TranscriptError("line " + std::to_string(number) + ": time, command and reply are expected");
        }
        try {
            std::vector<std::string> replies;
            for (std::size_t i = 2; i < fields.size(); ++i) {
                if (fields[i] != kNoAnswer) {
                    replies.push_back(Unescape(fields[i]));
                }
            }
            m_answers[Unescape(fields[1])].push_back(std::move(replies));
        } catch (const TranscriptError& error) {
            throw TranscriptError("line " + std::to_string(number) + ": " + error.what());
        }
    }
}

std::vector<std::string> Replay::Answer(const std::string& command) {
    const auto found = m_answers.find(command);
    if (found == m_answers.end()) {
        return {};
    }
    std::vector<std::string> replies = found->second.front();
    if (found->second.size() > 1) {
        found->second.pop_front();
    }
    return replies;
}

}  // namespace emulator
