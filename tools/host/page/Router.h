#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "keep/Keeper.h"
#include "page/Access.h"
#include "page/Request.h"

/// What is answered to a request. Knows no connection and waits for nothing: what takes longer than a look at what is
/// kept comes back as something to be done.

/// The connection becomes a stream of events, from the one after that id on.
struct StreamWanted {
    std::uint64_t after = 0;
};

/// The device is to be asked for this target.
struct TargetWanted {
    std::string key;
    double value = 0.0;
};

using Outcome = std::variant<Reply, StreamWanted, TargetWanted>;

Outcome Route(const Request& request, const Keeper& keeper, const AccessRules& rules);

/// What became of a target. `accepted` is false when the device did not answer or refused.
struct TargetResult {
    bool accepted = false;
    double taken = 0.0;
};
Reply TargetReply(const TargetWanted& wanted, const TargetResult& result);

/// A failure as JSON: {"error": "..."}.
Reply ErrorReply(int status, const std::string& text);

/// A history's reply never has more rows than this; more are thinned, whatever was asked.
inline constexpr std::int64_t kMaxHistoryRows = 20'000;
