#pragma once

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "page/Request.h"

/// Who may see the page, and who may set targets with it.

struct AccessRules {
    /// Whether only this computer can reach the server; else reading needs the token, too.
    bool isLocal = true;
    std::string token;  // empty: there is none, and nobody has it
    bool allowSet = false;
    std::vector<std::string> hostNames;  // beside "localhost" and addresses, by which the server may be called
};

enum class Access {
    Granted,
    BadHost,     // called by a name that is not ours: a foreign page may have had that name point here
    BadOrigin,   // sent by another site's page
    NeedsToken,  // which is missing or wrong
    MustNotSet   // setting was not allowed when the program was started
};

Access MayRead(const Request& request, const AccessRules& rules);
Access MaySet(const Request& request, const AccessRules& rules);

/// Whether the two are the same, in a time that does not tell how much of them is.
bool IsToken(std::string_view given, std::string_view token);

/// What the browser keeps after a visit with the token in the address.
std::string TokenCookie(std::string_view token);

/// Goes with every reply: the page takes nothing from elsewhere, runs no script that stands in it, and is shown in no
/// other page.
inline constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kSecurityHeaders{{
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Frame-Options", "DENY"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
}};
