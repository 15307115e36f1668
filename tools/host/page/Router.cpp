#include "page/Router.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "keep/Keeper.h"
#include "model/ChannelInfo.h"
#include "page/Access.h"
#include "page/Assets.h"
#include "page/Request.h"
#include "page/Target.h"
#include "show/OpenMetrics.h"
#include "show/SnapshotJson.h"
#include "text/Json.h"

namespace {

constexpr const char* kJson = "application/json; charset=utf-8";

struct Context {
    const Request& request;
    const Target& target;
    const Keeper& keeper;
    const AccessRules& rules;
};

Reply JsonReply(std::string json) { return {200, kJson, std::move(json), {{"Cache-Control", "no-store"}}}; }

Reply NotOpenedYet() {
    Reply reply = ErrorReply(503, "the device is still being opened; try again in a second");
    reply.headers.emplace_back("Retry-After", "1");
    return reply;
}

Reply Refusal(Access access) {
    switch (access) {
        case Access::BadHost:
            return ErrorReply(403, "oko-host is not called by this name: use its address, or localhost");
        case Access::BadOrigin:
            return ErrorReply(403, "requests from other sites' pages are not answered");
        case Access::MustNotSet:
            return ErrorReply(403, "targets cannot be set: oko-host was started without --allow-set");
        case Access::NeedsToken:
        case Access::Granted:
            break;
    }
    Reply reply = ErrorReply(401,
                             "the token that oko-host showed when it was started is missing or wrong: open the "
                             "address with ?token=, or send Authorization: Bearer TOKEN");
    reply.headers.emplace_back("WWW-Authenticate", "Bearer realm=\"oko-host\"");
    return reply;
}

/// A whole number of the query, `otherwise` when it is left out, nothing when it is none.
std::optional<std::int64_t> Number(const Target& target, std::string_view name, std::int64_t otherwise) {
    const auto text = target.Query(name);
    return text ? ParseWhole(*text) : otherwise;
}

Outcome Page(const Context& context) {
    const Asset* const asset = FindAsset("page.html");
    if (const auto token = context.target.Query("token")) {
        if (!IsToken(*token, context.rules.token)) {
            return Refusal(Access::NeedsToken);
        }
        // The token must not stay in the address line, where everybody sees it.
        return Reply{303,
                     "text/plain; charset=utf-8",
                     "",
                     {{"Location", "/"}, {"Set-Cookie", TokenCookie(*token)}, {"Cache-Control", "no-store"}}};
    }
    return Reply{200, std::string(asset->contentType), std::string(asset->bytes), {{"Cache-Control", "no-cache"}}};
}

Outcome Channels(const Context& context) {
    const auto snapshot = context.keeper.Newest();
    return snapshot ? JsonReply(SnapshotJson(*snapshot, context.rules.allowSet)) : NotOpenedYet();
}

/// Where a stream or a list of events goes on.
std::optional<std::int64_t> EventsSince(const Context& context) {
    const std::string_view last = context.request.Header("Last-Event-ID");
    const auto since = last.empty() ? Number(context.target, "since", 0) : ParseWhole(last);
    return since && *since >= 0 ? since : std::nullopt;
}

Outcome Events(const Context& context) {
    const auto since = EventsSince(context);
    if (!since) {
        return ErrorReply(400, "since is the id of an event");
    }
    return JsonReply(EventsJson(context.keeper.EventsAfter(static_cast<std::uint64_t>(*since))));
}

Outcome Stream(const Context& context) {
    const auto since = EventsSince(context);
    if (!since) {
        return ErrorReply(400, "Last-Event-ID is the id of an event");
    }
    const bool isAll = context.target.Query("since") || !context.request.Header("Last-Event-ID").empty();
    // Who does not say what it knows wants what is new.
    return StreamWanted{isAll ? static_cast<std::uint64_t>(*since) : std::numeric_limits<std::uint64_t>::max()};
}

Outcome HistoryRows(const Context& context) {
    const auto since = Number(context.target, "since", 0);
    const auto until = Number(context.target, "until", std::numeric_limits<std::int64_t>::max());
    const auto points = Number(context.target, "points", kMaxHistoryRows);
    if (!since || !until || !points || *points < 1) {
        return ErrorReply(400, "since and until are milliseconds since 1970, points is a number from 1 on");
    }
    const Keeper::Part part = context.keeper.Rows(*since, *until);
    if (!part.snapshot) {
        return NotOpenedYet();
    }
    const auto rows = static_cast<std::size_t>(std::min(*points, kMaxHistoryRows));
    // An end that nobody named is the newest row's.
    const std::int64_t end = context.target.Query("until") ? *until : part.snapshot->when.utcMs + 1;
    return JsonReply(HistoryJson(part.rows.Thinned(rows), *part.snapshot, *since, end));
}

Outcome MetricsText(const Context& context) {
    const std::string_view accepted = context.request.Header("Accept");
    const auto isAccepted = [&](std::string_view type) { return accepted.find(type) != std::string_view::npos; };
    // Tools of before ask for plain text and name nothing newer.
    const bool isText = isAccepted("text/plain") && !isAccepted("application/openmetrics-text");
    const MetricsFormat format = isText ? MetricsFormat::Text : MetricsFormat::OpenMetrics;
    const auto snapshot = context.keeper.Newest();
    return Reply{200, MetricsContentType(format), Metrics(snapshot.get(), format), {{"Cache-Control", "no-store"}}};
}

std::optional<double> ValueOf(const std::string& body) {
    const nlohmann::json json = nlohmann::json::parse(body, nullptr, false);
    if (!json.is_object() || !json.contains("value") || !json["value"].is_number()) {
        return std::nullopt;
    }
    const auto value = json["value"].get<double>();
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

Outcome SetTarget(const Context& context) {
    const auto snapshot = context.keeper.Newest();
    if (!snapshot) {
        return NotOpenedYet();
    }
    const std::string& key = context.target.path[2];
    const auto channel = std::ranges::find(snapshot->channels, key, &ChannelInfo::key);
    if (channel == snapshot->channels.end()) {
        return ErrorReply(404, "there is no channel " + key + "; /api/channels lists them");
    }
    if (!channel->canSetTarget) {
        return ErrorReply(422, key + " is a sensor and has no target");
    }
    const auto value = ValueOf(context.request.body);
    if (!value) {
        return ErrorReply(422, "the body is no JSON object with a number as value: {\"value\": 38.5}");
    }
    return TargetWanted{key, *value};
}

enum class Method { Get, Put };

/// "*" stands for any one part.
struct RouteEntry {
    std::array<std::string_view, 4> path;
    std::size_t parts;
    Method method;
    Outcome (*answer)(const Context& context);
};
constexpr std::array kRoutes{
    RouteEntry{{""}, 1, Method::Get, Page},
    RouteEntry{{"metrics"}, 1, Method::Get, MetricsText},
    RouteEntry{{"api", "channels"}, 2, Method::Get, Channels},
    RouteEntry{{"api", "history"}, 2, Method::Get, HistoryRows},
    RouteEntry{{"api", "events"}, 2, Method::Get, Events},
    RouteEntry{{"api", "stream"}, 2, Method::Get, Stream},
    RouteEntry{{"api", "channels", "*", "target"}, 4, Method::Put, SetTarget},
};

bool Fits(const RouteEntry& route, const std::vector<std::string>& path) {
    if (path.size() != route.parts) {
        return false;
    }
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (route.path[i] != "*" && route.path[i] != path[i]) {
            return false;
        }
    }
    return true;
}

/// A file of the page, at the root as the page names it.
std::optional<Reply> AssetReply(const Target& target) {
    const Asset* const asset = target.path.size() == 1 ? FindAsset(target.path[0]) : nullptr;
    if (asset == nullptr) {
        return std::nullopt;
    }
    return Reply{200, std::string(asset->contentType), std::string(asset->bytes), {{"Cache-Control", "no-cache"}}};
}

Outcome WrongMethod(const char* allowed) {
    Reply reply = ErrorReply(405, std::string("the method must be one of ") + allowed);
    reply.headers.emplace_back("Allow", allowed);
    return reply;
}

/// The visit that brings the token cannot have it in the cookie yet; Page looks at it.
bool IsTokenVisit(const Target& target) {
    return target.path.size() == 1 && target.path[0].empty() && target.Query("token");
}

Outcome RouteTarget(const Context& context) {
    const bool isGet = context.request.method == "GET" || context.request.method == "HEAD";
    const auto route =
        std::ranges::find_if(kRoutes, [&](const RouteEntry& entry) { return Fits(entry, context.target.path); });
    const bool isPut = route != kRoutes.end() && route->method == Method::Put;
    const Access access = isPut ? MaySet(context.request, context.rules) : MayRead(context.request, context.rules);
    const bool isVisit = access == Access::NeedsToken && IsTokenVisit(context.target);
    if (access != Access::Granted && !isVisit) {
        return Refusal(access);
    }
    if (isPut) {
        return context.request.method == "PUT" ? route->answer(context) : WrongMethod("PUT");
    }
    if (route != kRoutes.end()) {
        return isGet ? route->answer(context) : WrongMethod("GET, HEAD");
    }
    const auto asset = AssetReply(context.target);
    if (!asset) {
        return ErrorReply(404, "there is nothing here; docs/http.md lists what there is");
    }
    return isGet ? Outcome(*asset) : WrongMethod("GET, HEAD");
}

}  // namespace

Outcome Route(const Request& request, const Keeper& keeper, const AccessRules& rules) {
    const auto target = ParseTarget(request.target);
    if (!target) {
        return ErrorReply(400, "the address is badly written");
    }
    return RouteTarget({request, *target, keeper, rules});
}

Reply TargetReply(const TargetWanted& wanted, const TargetResult& result) {
    if (!result.accepted) {
        return ErrorReply(504, "the device did not answer, or refused: its target may be what it was");
    }
    std::string json = "{\"channel\":" + JsonQuoted(wanted.key);
    AppendJson(json += ",\"asked\":", wanted.value);
    AppendJson(json += ",\"taken\":", result.taken);
    // What the device says has gone through its decimals.
    const bool isSame = std::abs(result.taken - wanted.value) < 1e-6;
    json += isSame ? ",\"clamped\":false}" : ",\"clamped\":true}";
    return JsonReply(std::move(json));
}

Reply ErrorReply(int status, const std::string& text) {
    return {status, kJson, "{\"error\":" + JsonQuoted(text) + "}", {{"Cache-Control", "no-store"}}};
}
