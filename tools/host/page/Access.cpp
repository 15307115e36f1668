#include "page/Access.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "page/Request.h"

namespace {

constexpr std::string_view kCookie = "oko_token";

/// "localhost" of "localhost:8080", "[::1]" of "[::1]:8080"; empty for what is neither.
std::string_view HostName(std::string_view host) {
    const std::size_t end = host.starts_with('[') ? host.find(']') + 1 : std::min(host.find(':'), host.size());
    const std::string_view port = host.substr(end);
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const bool isPort = port.empty() || (port.starts_with(':') && std::ranges::all_of(port.substr(1), isDigit));
    return isPort ? host.substr(0, end) : std::string_view{};
}

/// A page that was loaded from an address comes from there: only names can be made to point elsewhere.
bool IsAddress(std::string_view name) {
    if (name.starts_with('[')) {
        return name.ends_with(']');
    }
    const auto isOfAddress = [](char c) { return (c >= '0' && c <= '9') || c == '.'; };
    return !name.empty() && std::ranges::all_of(name, isOfAddress) && std::ranges::count(name, '.') == 3;
}

bool IsOurHost(const Request& request, const AccessRules& rules) {
    const auto isHost = [](const auto& header) { return IsSameName(header.first, "Host"); };
    if (std::ranges::count_if(request.headers, isHost) != 1) {
        return false;
    }
    const std::string_view name = HostName(request.Header("Host"));
    return IsAddress(name) || IsSameName(name, "localhost") ||
           std::ranges::any_of(rules.hostNames, [&](const std::string& own) { return IsSameName(name, own); });
}

/// A program sends no origin; a browser says whose page sent the request, except where a person just opens an address.
bool IsOurOrigin(const Request& request) {
    const auto isOrigin = [](const auto& header) { return IsSameName(header.first, "Origin"); };
    const auto count = std::ranges::count_if(request.headers, isOrigin);
    if (count == 0) {
        return true;
    }
    const std::string host(request.Header("Host"));
    const std::string_view origin = request.Header("Origin");
    // "https" is what stands before a server that encrypts for this one.
    return count == 1 && (IsSameName(origin, "http://" + host) || IsSameName(origin, "https://" + host));
}

std::string_view Trim(std::string_view text) {
    while (text.starts_with(' ')) {
        text.remove_prefix(1);
    }
    while (text.ends_with(' ')) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view BearerToken(std::string_view authorization) {
    constexpr std::string_view kScheme = "Bearer ";
    return IsSameName(authorization.substr(0, kScheme.size()), kScheme) ? Trim(authorization.substr(kScheme.size()))
                                                                        : std::string_view{};
}

std::string_view CookieToken(std::string_view cookies) {
    while (!cookies.empty()) {
        const std::string_view pair = Trim(cookies.substr(0, cookies.find(';')));
        cookies.remove_prefix(std::min(
            cookies.size(), cookies.find(';') == std::string_view::npos ? cookies.size() : cookies.find(';') + 1));
        if (pair.starts_with(kCookie) && pair.substr(kCookie.size()).starts_with('=')) {
            return pair.substr(kCookie.size() + 1);
        }
    }
    return {};
}

bool HasToken(const Request& request, const AccessRules& rules) {
    const std::string_view bearer = BearerToken(request.Header("Authorization"));
    return IsToken(bearer.empty() ? CookieToken(request.Header("Cookie")) : bearer, rules.token);
}

Access IsOurs(const Request& request, const AccessRules& rules) {
    if (!IsOurHost(request, rules)) {
        return Access::BadHost;
    }
    return IsOurOrigin(request) ? Access::Granted : Access::BadOrigin;
}

}  // namespace

Access MayRead(const Request& request, const AccessRules& rules) {
    const Access access = IsOurs(request, rules);
    if (access != Access::Granted) {
        return access;
    }
    return rules.isLocal || HasToken(request, rules) ? Access::Granted : Access::NeedsToken;
}

Access MaySet(const Request& request, const AccessRules& rules) {
    const Access access = IsOurs(request, rules);
    if (access != Access::Granted) {
        return access;
    }
    if (!HasToken(request, rules)) {
        return Access::NeedsToken;
    }
    return rules.allowSet ? Access::Granted : Access::MustNotSet;
}

bool IsToken(std::string_view given, std::string_view token) {
    if (token.empty()) {
        return false;
    }
    // The longest token is far shorter than what a header may hold, so that the loop always runs over what was given.
    unsigned difference = given.size() == token.size() ? 0U : 1U;
    for (std::size_t i = 0; i < given.size(); ++i) {
        difference |= static_cast<unsigned char>(given[i]) ^
                      static_cast<unsigned>(static_cast<unsigned char>(token[i % token.size()]));
    }
    return difference == 0;
}

std::string TokenCookie(std::string_view token) {
    return std::string(kCookie) + "=" + std::string(token) + "; Path=/; HttpOnly; SameSite=Strict";
}
