#include "Text.h"

std::string ToUtf8(std::wstring_view text) {
    std::string utf8;
    for (const wchar_t wide : text) {
        const auto code = static_cast<unsigned>(wide);
        if (code < 0x80) {
            utf8.push_back(static_cast<char>(code));
        } else if (code < 0x800) {
            utf8.push_back(static_cast<char>(0xC0U | (code >> 6U)));
            utf8.push_back(static_cast<char>(0x80U | (code & 0x3FU)));
        } else if (code < 0xD800 || (code >= 0xE000 && code < 0x10000)) {
            utf8.push_back(static_cast<char>(0xE0U | (code >> 12U)));
            utf8.push_back(static_cast<char>(0x80U | ((code >> 6U) & 0x3FU)));
            utf8.push_back(static_cast<char>(0x80U | (code & 0x3FU)));
        } else {
            utf8.push_back('?');
        }
    }
    return utf8;
}
