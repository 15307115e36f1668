#include "text/Text.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

bool IsHighSurrogate(char32_t code) { return code >= 0xD800 && code < 0xDC00; }
bool IsLowSurrogate(char32_t code) { return code >= 0xDC00 && code < 0xE000; }

void Append(std::string& utf8, char32_t code) {
    const auto tail = [&](unsigned shift) { utf8.push_back(static_cast<char>(0x80U | ((code >> shift) & 0x3FU))); };
    if (code < 0x80) {
        utf8.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        utf8.push_back(static_cast<char>(0xC0U | (code >> 6U)));
        tail(0);
    } else if (code < 0x10000) {
        utf8.push_back(static_cast<char>(0xE0U | (code >> 12U)));
        tail(6);
        tail(0);
    } else {
        utf8.push_back(static_cast<char>(0xF0U | (code >> 18U)));
        tail(12);
        tail(6);
        tail(0);
    }
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
    std::string utf8;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto code = static_cast<char32_t>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<char32_t>(text[i + 1]) : U'\0';
        if (IsHighSurrogate(code) && IsLowSurrogate(next)) {
            Append(utf8, 0x10000 + ((code - 0xD800) << 10U) + (next - 0xDC00));
            ++i;
        } else {
            const bool alone = IsHighSurrogate(code) || IsLowSurrogate(code) || code > 0x10FFFF;
            Append(utf8, alone ? U'?' : code);
        }
    }
    return utf8;
}

std::string PathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}
