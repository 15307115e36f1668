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

std::string InQuotes(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= ' ' && c != '\x7F') {
            quoted += c;
        } else {
            quoted.append("\\x").append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xFU]);
        }
    }
    return quoted + "\"";
}

std::vector<std::string_view> SplitWords(std::string_view text) {
    std::vector<std::string_view> words;
    for (text = TrimBlanks(text); !text.empty(); text = TrimBlanks(text)) {
        words.push_back(text.substr(0, text.find_first_of(" \t\r\n")));
        text.remove_prefix(words.back().size());
    }
    return words;
}

std::string Counted(std::size_t count, const std::string& one, const std::string& several) {
    return std::to_string(count) + " " + (count == 1 ? one : several);
}
