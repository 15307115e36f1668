#include "text/Words.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "text/Number.h"

std::string JoinWords(const std::vector<std::string>& words, std::string_view last) {
    std::string joined;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) {
            joined += i + 1 < words.size() ? ", " : " " + std::string(last) + " ";
        }
        joined += words[i];
    }
    return joined;
}

std::string EscapedByte(char byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    return {'\\', 'x', kDigits[value >> 4U], kDigits[value & 0xFU]};
}

std::string InQuotes(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= ' ' && c != '\x7F') {
            quoted += c;
        } else {
            quoted += EscapedByte(c);
        }
    }
    return quoted + "\"";
}

std::string_view TakeWord(std::string_view& text) {
    text = TrimBlanks(text);
    const std::string_view word = text.substr(0, text.find_first_of(" \t\r\n"));
    text = TrimBlanks(text.substr(word.size()));
    return word;
}

std::vector<std::string_view> SplitWords(std::string_view text) {
    std::vector<std::string_view> words;
    while (!TrimBlanks(text).empty()) {
        words.push_back(TakeWord(text));
    }
    return words;
}

std::string Counted(std::size_t count, const std::string& one, const std::string& several) {
    return std::to_string(count) + " " + (count == 1 ? one : several);
}
