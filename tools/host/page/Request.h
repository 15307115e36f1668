#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A request and a reply as the rules of the page see them, whoever carries them.

using Headers = std::vector<std::pair<std::string, std::string>>;

/// Whether both are the same but for the case of ASCII letters.
inline bool IsSameName(std::string_view left, std::string_view right) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(left, right, {}, lower, lower);
}

struct Request {
    std::string method;
    std::string target;  // as it came: "/api/history?since=0"
    Headers headers;
    std::string body;

    /// The first header of that name; empty when there is none.
    std::string_view Header(std::string_view name) const {
        const auto found =
            std::ranges::find_if(headers, [&](const auto& header) { return IsSameName(header.first, name); });
        return found == headers.end() ? std::string_view{} : std::string_view{found->second};
    }
};

struct Reply {
    int status = 200;
    std::string contentType;
    std::string body;
    Headers headers;  // beside those that every reply has
};
