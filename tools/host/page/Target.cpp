#include "page/Target.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "text/Number.h"

namespace {

/// -1 for what is no digit.
int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

/// Takes the text up to `separator` off the front of `rest`.
std::string_view Take(std::string_view& rest, char separator) {
    const std::string_view part = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(rest.size(), part.size() + 1));
    return part;
}

bool ParsePath(std::string_view text, Target& target) {
    for (bool isMore = true; isMore;) {
        isMore = text.find('/') != std::string_view::npos;
        auto part = PercentDecode(Take(text, '/'));
        if (!part) {
            return false;
        }
        target.path.push_back(std::move(*part));
    }
    return true;
}

bool ParseQuery(std::string_view text, Target& target) {
    while (!text.empty()) {
        std::string_view pair = Take(text, '&');
        auto name = PercentDecode(Take(pair, '='));
        auto value = PercentDecode(pair);
        if (!name || !value) {
            return false;
        }
        if (!name->empty()) {
            target.query.emplace_back(std::move(*name), std::move(*value));
        }
    }
    return true;
}

}  // namespace

std::optional<std::string> Target::Query(std::string_view name) const {
    const auto found = std::ranges::find_if(query, [&](const auto& pair) { return pair.first == name; });
    return found == query.end() ? std::nullopt : std::optional(found->second);
}

std::optional<Target> ParseTarget(std::string_view text) {
    if (!text.starts_with('/')) {
        return std::nullopt;
    }
    text.remove_prefix(1);
    Target target;
    const std::string_view path = Take(text, '?');
    if (!ParsePath(path, target) || !ParseQuery(text, target)) {
        return std::nullopt;
    }
    return target;
}

std::optional<std::string> PercentDecode(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '%') {
            if (i + 2 >= text.size()) {
                return std::nullopt;
            }
            const int high = HexDigit(text[i + 1]);
            const int low = HexDigit(text[i + 2]);
            if (high < 0 || low < 0) {
                return std::nullopt;
            }
            c = static_cast<char>(high * 16 + low);
            i += 2;
        }
        if (IsControl(c)) {
            return std::nullopt;
        }
        decoded += c;
    }
    return decoded;
}

std::optional<std::int64_t> ParseWhole(std::string_view text) { return ReadExactly<std::int64_t>(text); }
